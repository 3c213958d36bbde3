"""Installs the library and builds the documentation's programs against it."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

SOURCE = pathlib.Path(os.environ["SOURCE"])
PLAY = SOURCE / "examples" / "play"
PATIENCE = 200


def run(*command, **options):
    result = subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE, **options)
    assert result.returncode == 0, f"{command}: {result.stdout}{result.stderr}"
    return result.stdout


class InstallTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def install(self, name):
        prefix = self.folder / name
        for component in ("libplayer", "libplayer-dev"):
            run("cmake", "--install", os.environ["BUILD"], "--prefix", str(prefix), "--component", component)
        return prefix

    def library_folder(self, prefix):
        return next(prefix.rglob("Player.pc")).parent.parent

    def flags(self, prefix):
        environment = dict(os.environ, PKG_CONFIG_PATH=str(self.library_folder(prefix) / "pkgconfig"))
        return run("pkg-config", "--cflags", "--libs", "Player", env=environment).split()

    def assert_runs(self, program, prefix):
        """Without a server there, the program ends with a sentence."""
        environment = dict(os.environ, LD_LIBRARY_PATH=str(self.library_folder(prefix)))
        self.assertIn("Socket::Connect()", run(str(program), "rtsp://127.0.0.1:1/clip", env=environment))

    def build_by_pkg_config(self, prefix, source=PLAY / "play.cpp"):
        program = self.folder / f"{prefix.name}-play"
        run(os.environ["CXX"], "-std=c++17", str(source), *self.flags(prefix), "-o", str(program))
        self.assert_runs(program, prefix)

    def test_pkg_config(self):
        for name in ("first", "second/deeper"):
            prefix = self.install(name)
            flags = " ".join(self.flags(prefix))
            self.assertIn(f"-I{prefix}/", os.path.normpath(flags.split()[0]) + "/")
            self.build_by_pkg_config(prefix)

    def test_find_package(self):
        for name in ("first", "second"):
            prefix = self.install(name)
            build = self.folder / f"{name}-build"
            run("cmake", "-S", str(PLAY), "-B", str(build), f"-DCMAKE_PREFIX_PATH={prefix}",
                "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF")
            run("cmake", "--build", str(build))
            self.assertIn(f"Player_DIR:PATH={prefix}/", (build / "CMakeCache.txt").read_text())
            self.assert_runs(build / "play", prefix)

    def test_moved(self):
        self.build_by_pkg_config(self.install("first").rename(self.folder / "moved"))

    def test_readme(self):
        shown = re.search(r"```cpp\n(.*?)```", (SOURCE / "README.md").read_text(), re.S).group(1)
        self.assertEqual((PLAY / "play.cpp").read_text(), shown)

    def test_header(self):
        header = (SOURCE / "Player/include/Player/MediaPlayer.hpp").read_text()
        lines = re.findall(r"^///     (.*)$", header, re.M)
        self.assertIn("Player::MediaPlayer lPlayer;", lines)
        source = self.folder / "header.cpp"
        body = "\n".join(lines).replace('"rtsp://host/clip"', "aArgs[1]")
        source.write_text("#include <Player/Player.hpp>\n#include <cstdio>\nint main(int, char** aArgs) {\ntry {\n" + body +
                          "\n} catch (const Player::Exception& lException) { std::puts(lException.Message()); }\n}\n")
        self.build_by_pkg_config(self.install("first"), source)


@unittest.skipUnless(os.environ["PLUGIN"], "GStreamer 1.0 is not there")
class PluginTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def inspect(self, **environment):
        for name in ("GST_PLUGIN_PATH", "GST_PLUGIN_SYSTEM_PATH"):
            environment.setdefault(name, "")
        environment = dict(os.environ, GST_REGISTRY=str(self.folder / "registry.bin"), **environment)
        return run("gst-inspect-1.0", "virertspsrc", env=environment)

    def test_in_usr(self):
        """It lies where GStreamer looks."""
        build = self.folder / "build"
        run("cmake", "-S", str(SOURCE), "-B", str(build), "-DCMAKE_INSTALL_PREFIX=/usr",
            "-DCMAKE_INSTALL_LIBDIR=lib", "-DBUILD_TESTING=OFF", "-DVIRE_GST_LEGS=1.0",
            f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}")
        # What is built already need not be built again to see where it goes.
        plugin = pathlib.Path(os.environ["PLUGIN"])
        (build / "GStreamer/1.0").mkdir(exist_ok=True)
        shutil.copy(plugin, build / "GStreamer/1.0")
        stage = self.folder / "stage"
        run("cmake", "--install", str(build), "--component", "element-1.0", env=dict(os.environ, DESTDIR=str(stage)))
        looked_in = run("pkg-config", "--variable=pluginsdir", "gstreamer-1.0").strip()
        self.assertEqual([stage / looked_in.lstrip("/") / plugin.name],
                         [path for path in stage.rglob("*") if path.is_file()])
        self.assertIn("VireRtspSrc", self.inspect(GST_PLUGIN_SYSTEM_PATH=f"{stage}/{looked_in}"))

    def test_elsewhere(self):
        """The documentation's setting finds it."""
        prefix = self.folder / "prefix"
        run("cmake", "--install", os.environ["BUILD"], "--prefix", str(prefix), "--component", "element-1.0")
        documented = re.search(r"`GST_PLUGIN_PATH=PREFIX(/[^`]*)`", (SOURCE / "docs/element.md").read_text()).group(1)
        self.assertIn("VireRtspSrc", self.inspect(GST_PLUGIN_PATH=f"{prefix}{documented}"))


if __name__ == "__main__":
    unittest.main()
