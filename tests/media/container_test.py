"""Records picture and sound into one file and reads it back with ffprobe."""

import json
import pathlib
import signal
import subprocess
import tempfile
import time
import unittest

import element
import media


def packets(path, kind):
    """Play time in seconds and size of each packet of the first track of that kind."""
    text = subprocess.run(["ffprobe", "-v", "error", "-select_streams", f"{kind}:0", "-show_entries",
                           "packet=pts_time,size", "-of", "json", str(path)],
                          check=True, capture_output=True, text=True, timeout=media.PATIENCE)
    assert not text.stderr, text.stderr
    return [(float(packet["pts_time"]), int(packet["size"])) for packet in json.loads(text.stdout)["packets"]]


class ContainerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def record(self, name):
        with element.serve(element.av_clip()) as url:
            result = media.record(url, self.folder / name, "--times")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        return result

    def check(self, name, tick):
        path = self.folder / name
        self.record(name)
        offsets = []
        for track, kind in enumerate("va"):
            read = packets(path, kind)
            times = [int(line) / 1e9 for line in (self.folder / f"{name}.track{track}.times").read_text().split()]
            served = packets(element.av_clip(), kind)
            # The last sound is what the encoder had left: the server does not send it.
            self.assertIn(len(served) - len(read), [0] if kind == "v" else [0, 1], kind)
            served = served[:len(read)]
            self.assertEqual([size for _, size in served], [size for _, size in read], kind)
            self.assertEqual(len(times), len(read), kind)
            # The first sound precedes the presentation's start, which no time stamp can say: it counts as part of one
            # packet with the next.
            for index, (ours, (theirs, _)) in enumerate(zip(times[2:], read[2:]), 2):
                self.assertAlmostEqual(ours - times[2], theirs - read[2][0], delta=tick, msg=f"{kind} {index}")
            offsets.append(read[2][0] - times[2])
        self.assertAlmostEqual(offsets[0], offsets[1], delta=2 * tick, msg="picture and sound")
        self.assertEqual(len(packets(path, "v")), media.count_frames(path))

    def test_mp4(self):
        self.check("clip.mp4", 0.0001)

    def test_matroska(self):
        self.check("clip.mkv", 0.0021)

    def test_seeks(self):
        self.record("clip.mp4")
        shown = subprocess.run(["ffmpeg", "-v", "error", "-ss", "1.5", "-i", str(self.folder / "clip.mp4"), "-frames:v",
                                "1", "-f", "null", "-"], capture_output=True, text=True, timeout=media.PATIENCE)
        self.assertEqual((0, ""), (shown.returncode, shown.stderr))

    def test_a_killed_process_leaves_a_good_file(self):
        path = self.folder / "clip.mp4"
        with media.server("--file", str(media.clip(20))) as url:
            process = subprocess.Popen([media.VIRERTSP, "record", url, "--output", str(path), "--config",
                                        "RTSP:TargetRTPBuffer=0"], stdout=subprocess.DEVNULL)
            deadline = time.monotonic() + media.PATIENCE
            while not (path.exists() and path.stat().st_size > 500000) and time.monotonic() < deadline:
                time.sleep(0.05)
            process.send_signal(signal.SIGKILL)
            process.wait()
        self.assertGreater(media.count_frames(path), 20)


if __name__ == "__main__":
    unittest.main()
