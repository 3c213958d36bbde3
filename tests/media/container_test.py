"""Records picture and sound into one file and reads it back with ffprobe."""

import json
import os
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


def bytes_of(path, kind):
    """All that the packets of the first track of that kind hold."""
    return subprocess.run(["ffmpeg", "-v", "error", "-i", str(path), "-map", f"0:{kind}:0", "-c", "copy", "-f", "data",
                           "-"], check=True, capture_output=True, timeout=media.PATIENCE).stdout


def whole_boxes(data):
    """The types of the boxes of an MP4 file, none if the last one is not complete."""
    types = []
    while data:
        size = int.from_bytes(data[:4], "big")
        if size < 8 or size > len(data):
            return []
        types.append(data[4:8])
        data = data[size:]
    return types


def stopped_after_a_fragment(process, path):
    """Stops a recorder that is not in the midst of a write and has written a fragment."""
    if not path.exists():
        return False
    process.send_signal(signal.SIGSTOP)
    os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
    if b"mdat" in whole_boxes(path.read_bytes()):
        return True
    process.send_signal(signal.SIGCONT)
    return False


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
        with element.serve(element.av_clip()) as url:
            process = subprocess.Popen([media.VIRERTSP, "record", url, "--output", str(path), "--config",
                                        "RTSP:TargetRTPBuffer=0"], stdout=subprocess.DEVNULL)
            deadline = time.monotonic() + media.PATIENCE
            while not stopped_after_a_fragment(process, path) and time.monotonic() < deadline:
                time.sleep(0.05)
            process.send_signal(signal.SIGKILL)
            process.wait()
        self.assertGreater(media.count_frames(path), 20)

    def split(self, name, *options):
        with element.serve(element.av_clip()) as url:
            result = media.record(url, self.folder / name, "--split", *options)
        self.assertEqual((0, ""), (result.returncode, result.stderr))

    def check_split(self, name, limit):
        self.split(name, limit)
        parts = sorted(self.folder.iterdir())
        stem, ending = name.split(".")
        self.assertEqual([f"{stem}-{part:04}.{ending}" for part in range(1, len(parts) + 1)],
                         [part.name for part in parts])
        self.assertGreaterEqual(len(parts), 2)
        for kind in "va":
            served = bytes_of(element.av_clip(), kind)
            read = b"".join(bytes_of(part, kind) for part in parts)
            # The last sound is what the encoder had left: the server does not send it.
            left = 0 if kind == "v" else packets(element.av_clip(), kind)[-1][1]
            self.assertIn(len(served) - len(read), [0, left], kind)
            self.assertTrue(served.startswith(read), kind)
        for part in parts:
            self.check_part(part)

    def test_split_mp4(self):
        self.check_split("clip.mp4", "2s")

    def test_split_matroska(self):
        self.check_split("clip.mkv", "0.1MB")

    def check_part(self, path):
        first = json.loads(subprocess.run(
            ["ffprobe", "-v", "error", "-select_streams", "v:0", "-read_intervals", "%+#1", "-show_entries",
             "packet=flags", "-of", "json", str(path)], check=True, capture_output=True).stdout)["packets"][0]
        self.assertTrue(first["flags"].startswith("K"), first)
        self.assertEqual(len(packets(path, "v")), media.count_frames(path))
        # Every part plays from its own beginning, and sound is cut with the pictures.
        begin, end = [[at(time for time, _ in packets(path, kind)) for kind in "va"] for at in (min, max)]
        self.assertLess(max(abs(time) for time in begin), 0.1, begin)
        self.assertLess(abs(end[0] - end[1]), 0.1, end)

    def test_split_tracks(self):
        self.split("parts", "2s", "--tracks", "0,1")
        video, audio = [sorted((self.folder / "parts").glob(f"track{track}-*")) for track in (0, 1)]
        self.assertEqual([f"track0-{part:04}.h264" for part in range(1, len(video) + 1)], [path.name for path in video])
        self.assertGreaterEqual(len(video), 2)
        self.assertEqual([path.name.replace("1-", "0-").replace("aac", "h264") for path in audio],
                         [path.name for path in video])
        sets = media.parameter_sets_of_mp4(element.av_clip())
        units = []
        for path in video:
            part = media.start_code_units(path.read_bytes())
            self.assertEqual(sets, part[:len(sets)])
            # A picture that begins a group, or what an encoder says in front of it.
            self.assertIn(part[len(sets)][0] & 0x1F, (5, 6))
            units += part[len(sets):]
        self.assertEqual(media.units_of_mp4(element.av_clip()), units)
        header = 7
        sizes = [size - header for path in audio for _, size in packets(path, "a")]
        served = [size for _, size in packets(element.av_clip(), "a")]
        self.assertIn(len(served) - len(sizes), (0, 1))
        self.assertEqual(served[:len(sizes)], sizes)


if __name__ == "__main__":
    unittest.main()
