"""Plays a server that speaks TLS: what arrives is what it serves, and nothing does from a server that cannot be trusted."""

import concurrent.futures
import pathlib
import subprocess
import tempfile
import unittest

import element
import media

AT_ONCE = ("--config", "RTSP:TargetRTPBuffer=0")


class SecureTest(unittest.TestCase):
    def setUp(self):
        version = subprocess.run([media.VIRERTSP, "--version"], capture_output=True, text=True, timeout=media.PATIENCE)
        if "rtsps and passwords: yes" not in version.stdout:
            self.skipTest("built without GnuTLS")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.certificate = media.certificate()

    def play_with_tool(self, url):
        result = media.record(url, self.folder / "out", *AT_ONCE, "--config", f"RTSP:TLSAuthorities={self.certificate}")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        return media.start_code_units((self.folder / "out/track0.h264").read_bytes())

    def play_with_element(self, url):
        path = self.folder / "track0"
        element.Tools("1.0").launch(f"virertspsrc profile=modern rtp-buffer-size=0 tls-authorities={self.certificate} "
                                    f"location={url} ! filesink location={path}")
        return media.length_units(path.read_bytes())

    def test_what_is_served_arrives(self):
        clip = media.clip(1)
        served = media.units_of_mp4(clip)
        with media.server("--file", str(clip), "--certificate", self.certificate) as url:
            self.assertTrue(url.startswith("rtsps://"), url)
            refused = media.record(url, self.folder / "refused")
            with concurrent.futures.ThreadPoolExecutor() as both:
                for played in both.map(lambda play: play(url), (self.play_with_tool, self.play_with_element)):
                    self.assertEqual(served, played[-len(served):])
        self.assertNotEqual(0, refused.returncode, "the system's authorities do not vouch for it")
        self.assertIn("certificate", refused.stderr)
        self.assertFalse((self.folder / "refused").exists())


if __name__ == "__main__":
    unittest.main()
