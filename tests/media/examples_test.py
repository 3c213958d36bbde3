"""The programs of the documentation, playing real media to its end."""

import os
import subprocess
import unittest

import media

VIDEO = ("videotestsrc num-buffers=50 ! video/x-raw,width=320,height=240,framerate=25/1 ! "
         "x264enc tune=zerolatency speed-preset=ultrafast ! rtph264pay name=pay0 pt=96 config-interval=0 ")
AUDIO = "audiotestsrc num-buffers=100 ! avenc_aac ! rtpmp4apay name=pay1 pt=97 "
NOT_PLAYED = "audiotestsrc num-buffers=10 ! rtpL16pay name=pay0 "


class ExamplesTest(unittest.TestCase):
    def play(self, launch):
        with media.server("--launch", f"( {launch} )") as url:
            result = subprocess.run([os.environ["EXAMPLE_PLAY"], url], capture_output=True, text=True, timeout=60)
        self.assertEqual(0, result.returncode)
        return result.stdout

    def test_one_track(self):
        self.assertEqual(50, self.play(VIDEO).count("track 0: "))

    def test_two_tracks(self):
        shown = self.play(VIDEO + AUDIO)
        self.assertEqual(50, shown.count("track 0: "))
        self.assertGreater(shown.count("track 1: "), 100)

    def test_nothing_to_play(self):
        self.assertEqual("", self.play(NOT_PLAYED))


if __name__ == "__main__":
    unittest.main()
