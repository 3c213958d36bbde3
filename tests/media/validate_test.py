"""The scenarios of gst-validate, which seek and pause a playbin as players do and watch all that passes any pad."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

import element
import media

VALIDATE = shutil.which("gst-validate-1.0")

MODERN = """description, is-config=true
set-property, target-element-factory-name=virertspsrc, property-name=profile, property-value=modern, on-all-instances=true
set-property, target-element-factory-name=virertspsrc, property-name=rtp-buffer-size, property-value=1, on-all-instances=true
"""


@unittest.skipUnless(VALIDATE, "gst-validate-1.0 is not on the path: no package of Debian 12 has it")
class ValidateTest(unittest.TestCase):
    def setUp(self):
        self.tools = element.Tools("1.0")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def assert_passes(self, scenario):
        config = self.folder / "modern.scenario"
        config.write_text(MODERN)
        # The scenarios want more than seven seconds.
        clip = self.folder / "twice.mp4"
        subprocess.run(["ffmpeg", "-v", "error", "-stream_loop", "1", "-i", str(element.av_clip()), "-c", "copy", str(clip)],
                       check=True, timeout=media.PATIENCE)
        with element.serve(clip) as url:
            result = subprocess.run(
                [VALIDATE, "--set-scenario", f"{config}:{scenario}", "playbin", f"uri={url.replace('rtsp:', 'vire:')}",
                 "video-sink=fakesink sync=true", "audio-sink=fakesink sync=true"],
                capture_output=True, text=True, env=self.tools.environment, timeout=media.PATIENCE)
        self.assertEqual(0, result.returncode, result.stdout[-3000:] + result.stderr)
        self.assertIn("Executing `set-property` at modern.scenario", result.stdout)
        self.assertIn("Test PASSED", result.stdout)

    def test_seek_forward(self):
        self.assert_passes("seek_forward")

    def test_seek_backward(self):
        self.assert_passes("seek_backward")

    def test_pause_resume(self):
        self.assert_passes("pause_resume")


if __name__ == "__main__":
    unittest.main()
