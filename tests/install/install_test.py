"""Installs the library and builds the documentation's programs against it."""

import os
import pathlib
import re
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


if __name__ == "__main__":
    unittest.main()
