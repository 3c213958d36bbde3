"""The programs of the documentation, playing real media to its end."""

import os
import pathlib
import subprocess
import tempfile
import unittest

import element
import media

VIDEO = ("videotestsrc num-buffers=50 ! video/x-raw,width=320,height=240,framerate=25/1 ! "
         "x264enc tune=zerolatency speed-preset=ultrafast ! rtph264pay name=pay0 pt=96 config-interval=0 ")
AUDIO = "audiotestsrc num-buffers=100 ! avenc_aac ! rtpmp4apay name=pay1 pt=97 "
NOT_PLAYED = "audiotestsrc num-buffers=10 ! rtpL16pay name=pay0 "


def run(example, *arguments):
    result = subprocess.run([os.environ[f"EXAMPLE_{example}"], *arguments], capture_output=True, text=True, timeout=60)
    assert (result.returncode, result.stderr) == (0, ""), (result.returncode, result.stderr)
    return result.stdout


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

    def test_tracks_to_files(self):
        with media.server("--launch", f"( {VIDEO + AUDIO} )") as url, tempfile.TemporaryDirectory() as folder:
            shown = run("TRACKS", url, folder)
            self.assertEqual([f"{folder}/track0: H264", f"{folder}/track1: MP4A-LATM"], shown.splitlines())
            times = [int(line) for line in pathlib.Path(folder, "track0.times").read_text().split()]
            units = media.length_units(pathlib.Path(folder, "track0").read_bytes())
            self.assertGreater(pathlib.Path(folder, "track1").stat().st_size, 1000)
        self.assertEqual(50, len(times))
        self.assertEqual(sorted(times), times)
        self.assertEqual(50, sum(unit[0] & 0x1F in (1, 5) and unit[1] >= 0x80 for unit in units), "first slices")

    def test_switching_channels(self):
        endless = VIDEO.replace("num-buffers=50 ", "is-live=true ")
        with media.server("--launch", f"( {endless} )") as first, media.server("--launch", f"( {endless} )") as second:
            shown = run("CHANNELS", first, second, first).splitlines()
        watched = [line for line in shown if line.endswith(" samples")]
        self.assertEqual([f"{url}: 10 samples" for url in (first, second, first)], watched)
        self.assertEqual(f"> DESCRIBE {first}", shown[0])
        self.assertEqual(3, sum(line.startswith("> TEARDOWN ") for line in shown))
        self.assertEqual(set(), {line for line in shown if line.startswith("<")} - {"< 200 OK"})

    def element(self, version):
        launcher = element.Tools(version)
        with media.server("--launch", f"( {VIDEO} )") as url:
            result = subprocess.run([os.environ[f"EXAMPLE_ELEMENT_{launcher.name}"], url], capture_output=True,
                                    text=True, timeout=60, env=launcher.environment)
        self.assertEqual((0, "50 buffers\n", ""), (result.returncode, result.stdout, result.stderr))

    def test_element_1_0(self):
        self.element("1.0")

    def test_element_0_10(self):
        self.element("0.10")


if __name__ == "__main__":
    unittest.main()
