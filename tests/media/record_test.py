"""Records real media with the program and compares what comes out with what was served."""

import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time
import unittest

import media

LONG = 20
SHORT = 4

# RTP counts in 1/90000 s, and the play time is cut once more on its way.
TICK = 1.2 / 90000


class RecordTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.output = pathlib.Path(folder.name) / "out"

    def record_clip(self, seconds, server_options=(), options=()):
        """Records the whole clip and requires that it is all there."""
        clip = media.clip(seconds)
        with media.server("--file", str(clip), *server_options) as url:
            result = media.record(url, self.output, "--times", *options)
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.assertRegex(result.stdout, rf"^track 0: H264, {25 * seconds} samples, .* 0 lost, ")
        self.assert_same_units(clip)
        self.assert_same_times(clip)

    def assert_same_units(self, clip):
        recorded = media.start_code_units((self.output / "track0.h264").read_bytes())
        served = media.parameter_sets_of_mp4(clip) + media.units_of_mp4(clip)
        self.assertEqual(len(served), len(recorded))
        for index, (ours, theirs) in enumerate(zip(recorded, served)):
            self.assertEqual(theirs, ours, f"NAL unit {index}")

    def assert_same_times(self, clip):
        recorded = [int(line) / 1e9 for line in (self.output / "track0.times").read_text().split()]
        served = media.presentation_times(clip)
        self.assertEqual(len(served), len(recorded))
        for index, (ours, theirs) in enumerate(zip(recorded, served)):
            self.assertAlmostEqual(theirs - served[0], ours - recorded[0], delta=TICK, msg=f"sample {index}")
            if index > 0 and theirs >= served[index - 1]:
                self.assertGreaterEqual(ours, recorded[index - 1])

    def test_udp(self):
        self.record_clip(LONG, ["--udp-only"])

    def test_tcp(self):
        self.record_clip(SHORT, ["--tcp-only"], ["--tcp"])

    def test_tcp_where_udp_is_refused(self):
        self.record_clip(SHORT, ["--tcp-only"])

    def test_digest(self):
        self.record_clip(SHORT, ["--user", "me:secret"],
                         ["--config", "RTSP:UserName=me", "--config", "RTSP:Password=secret"])

    def test_basic(self):
        self.record_clip(SHORT, ["--user", "me:secret", "--basic"],
                         ["--config", "RTSP:UserName=me", "--config", "RTSP:Password=secret"])

    def test_aggregated(self):
        self.record_clip(SHORT, ["--aggregate", "max-stap"])

    def test_small_packets(self):
        self.record_clip(SHORT, ["--mtu", "300"], ["--tcp"])

    def test_large_packets(self):
        self.record_clip(SHORT, ["--mtu", "1500"], ["--tcp"])

    def test_decodes(self):
        clip = media.clip(SHORT)
        with media.server("--file", str(clip)) as url:
            media.record(url, self.output)
        self.assertEqual(25 * SHORT, media.count_frames(self.output / "track0.h264"))

    def test_video_beside_audio(self):
        launch = ("( videotestsrc num-buffers=50 ! video/x-raw,width=320,height=240,framerate=25/1 ! "
                  "x264enc tune=zerolatency speed-preset=ultrafast ! rtph264pay name=pay0 pt=96 config-interval=0 "
                  "audiotestsrc num-buffers=100 ! avenc_aac ! rtpmp4apay name=pay1 pt=97 )")
        for transport in ([], ["--tcp"]):
            with self.subTest(transport), media.server("--launch", launch) as url:
                result = media.record(url, self.output, "--force", *transport)
                self.assertEqual(0, result.returncode, result.stderr)
                self.assertEqual(50, media.count_frames(self.output / "track0.h264"))

    def test_stops_after_seconds(self):
        with media.server("--file", str(media.clip(LONG))) as url:
            result = media.record(url, self.output, "--seconds", "1", "--config", "RTSP:TargetRTPBuffer=0", "--times")
        self.assertEqual(0, result.returncode, result.stderr)
        times = [int(line) for line in (self.output / "track0.times").read_text().split()]
        self.assertTrue(1.0 <= (max(times) - min(times)) / 1e9 < 1.5, times)

    def test_drops_into_a_device(self):
        with media.server("--file", str(media.clip(SHORT))) as url:
            result = media.record(url, "/dev/null", "--times")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.assertIn(f"{25 * SHORT} samples", result.stdout)

    def test_progress_on_a_terminal(self):
        master, slave = os.openpty()
        with media.server("--file", str(media.clip(SHORT))) as url:
            result = subprocess.run([media.VIRERTSP, "record", url, "--output", str(self.output)], stderr=slave,
                                    stdout=subprocess.PIPE, timeout=media.PATIENCE)
        os.close(slave)
        shown = os.read(master, 65536).decode()
        os.close(master)
        self.assertEqual(0, result.returncode)
        lines = shown.split("\r\033[K")
        self.assertGreater(len(lines), SHORT)
        self.assertTrue(lines[1].startswith("buffering"), lines[1])
        for line in lines[1:-1]:
            self.assertRegex(line, r"^(buffering|\d\d:\d\d\.\d)  \d+ packets, 0 lost, \d+ kbit/s, \d+\.\d s buffered$")
        # The line is empty again at the end.
        self.assertEqual(["", ""], [lines[0], lines[-1]])

    def test_an_interrupt_ends_cleanly(self):
        with media.server("--file", str(media.clip(LONG))) as url:
            process = subprocess.Popen(
                [media.VIRERTSP, "record", url, "--output", str(self.output), "--config", "RTSP:TargetRTPBuffer=0"],
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            file = self.output / "track0.h264"
            deadline = time.monotonic() + media.PATIENCE
            while not (file.exists() and file.stat().st_size > 50000) and time.monotonic() < deadline:
                time.sleep(0.05)
            process.send_signal(signal.SIGINT)
            output, errors = process.communicate(timeout=media.PATIENCE)
        self.assertEqual((0, ""), (process.returncode, errors))
        self.assertRegex(output, r"^track 0: H264, \d+ samples, .*stopped here")
        samples = int(re.search(r"(\d+) samples", output).group(1))
        self.assertEqual(samples, media.count_frames(file))

    def test_transport_that_the_server_refuses(self):
        with media.server("--file", str(media.clip(SHORT)), "--tcp-only") as url:
            result = media.record(url, self.output, "--transport", "udp")
        self.assertEqual(5, result.returncode)
        self.assertRegex(result.stderr, r"^virertsp: The server .* refuses: SETUP failed: 461 Unsupported transport\. "
                         r"Try it with --tcp\.\n$")

    def test_location_that_is_not_there(self):
        with media.server("--file", str(media.clip(SHORT))) as url:
            result = media.record(url + "/other", self.output)
        self.assertEqual(5, result.returncode)
        self.assertRegex(result.stderr, r"^virertsp: The server .* refuses: DESCRIBE failed: 404 Not Found\.\n$")

    def test_nothing_that_can_be_played(self):
        with media.server("--launch", "( audiotestsrc ! rtpL16pay name=pay0 )") as url:
            result = media.record(url, self.output)
        self.assertEqual(7, result.returncode)
        self.assertRegex(result.stderr, r"^virertsp: The presentation has no track [^\n]*\.\n$")


if __name__ == "__main__":
    unittest.main()
