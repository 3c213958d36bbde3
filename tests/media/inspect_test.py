"""Runs "virertsp probe" and "virertsp stats" against a real server and reads their output as programs do."""

import json
import unittest

import media

LAUNCH = ("( videotestsrc num-buffers=75 ! video/x-raw,width=320,height=240,framerate=25/1 ! "
          "x264enc tune=zerolatency speed-preset=ultrafast ! rtph264pay name=pay0 pt=96 "
          "audiotestsrc num-buffers=130 samplesperbuffer=1024 ! audio/x-raw,rate=44100,channels=2 ! avenc_aac ! "
          "rtpmp4apay name=pay1 pt=97 )")

COUNTERS = {"packets", "lost", "reordered", "duplicates"}


class InspectTest(unittest.TestCase):
    def run_tool(self, command, *options, launch=LAUNCH):
        """Gives the URL, the finished process, and its output as JSON if that was asked for."""
        with media.server("--launch", launch) as url:
            result = media.run(command, url, *options)
        parsed = [json.loads(line) for line in result.stdout.splitlines()] if "--json" in options else None
        return url, result, parsed

    def test_probe_json(self):
        for transport in ([], ["--tcp"]):
            with self.subTest(transport):
                url, result, parsed = self.run_tool("probe", "--json", *transport)
                self.assertEqual((0, ""), (result.returncode, result.stderr))
                self.assertEqual(1, len(parsed))
                self.check_probe(url, parsed[0])

    def check_probe(self, url, probe):
        self.assertEqual((url, "GStreamer RTSP server", url + "/"), (probe["url"], probe["server"], probe["base"]))
        self.assertEqual({"begin_s": 0, "end_s": None}, probe["range"])
        self.assertEqual("Session streamed with GStreamer", probe["session"]["SessionName"])
        video, audio = probe["tracks"]
        self.assertEqual([0, 1], [video["track"], audio["track"]])
        self.assertEqual({"format": "H.264", "profile": "Constrained Baseline", "level": "2.1", "width": 320,
                          "height": 240, "extension": ".h264"}, video["becomes"])
        self.assertEqual({"format": "AAC LC", "rate": 44100, "channels": 2, "extension": ".aac"}, audio["becomes"])
        described = {"MediaType": "audio", "Transport": "RTP/AVP", "PayloadType": "97", "Format": "MP4A-LATM",
                     "TimeRes": "44100", "Id": "stream=1", "URL": url + "/stream=1"}
        self.assertEqual(described, {key: audio["properties"].get(key) for key in described})
        self.assertEqual([("DESCRIBE", url), ("SETUP", url + "/stream=0"), ("SETUP", url + "/stream=1"),
                          ("PLAY", url + "/"), ("TEARDOWN", url + "/")],
                         [(request["method"], request["url"]) for request in probe["requests"]])
        for request in probe["requests"]:
            self.assertEqual((200, "OK"), (request["status"], request["reason"]))
            self.assertTrue(0 < request["round_trip_ms"] < 1000 * media.PATIENCE, request)

    def test_probe_of_nothing_playable_tells_what_there_is(self):
        _, result, parsed = self.run_tool("probe", "--json", launch="( audiotestsrc ! rtpL16pay name=pay0 )")
        self.assertEqual(7, result.returncode)
        self.assertRegex(result.stderr, r"^virertsp: The presentation has no track [^\n]*\.\n$")
        self.assertEqual([None], [track["track"] for track in parsed[0]["tracks"]])
        self.assertEqual("L16", parsed[0]["tracks"][0]["becomes"]["format"])

    def test_probe_for_people(self):
        url, result, _ = self.run_tool("probe")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        lines = result.stdout.splitlines()
        self.assertEqual(url, lines[0])
        self.assertIn("  Server                 GStreamer RTSP server", lines)
        self.assertIn("track 0: H.264 Constrained Baseline, level 2.1, 320x240; .h264", lines)
        self.assertIn("track 1: AAC LC, 44100 Hz, 2 channels; .aac", lines)
        self.assertRegex(lines[-1], rf"^  TEARDOWN +\d+\.\d{{3}} ms  200 OK  {url}/$")

    def test_stats_json(self):
        _, result, parsed = self.run_tool("stats", "--json", "--tcp")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        rows = [line for line in parsed if line["type"] == "track"]
        summaries = [line for line in parsed if line["type"] == "summary"]
        self.assertEqual(len(parsed), len(rows) + len(summaries))
        self.assertEqual([(0, "H264"), (1, "MP4A-LATM")], [(line["track"], line["format"]) for line in summaries])
        # 3 s of media, both tracks at each full second.
        self.assertGreaterEqual(len(rows), 4)
        for index, row in enumerate(rows):
            self.assertEqual(index % 2, row["track"])
            self.assertEqual({"type", "time_s", "track", "format", "jitter_ms", "kbit_per_s", "buffered_s"} | COUNTERS,
                             row.keys())
            self.assertGreaterEqual(row["time_s"], index // 2 + 1)
        for summary in summaries:
            self.assertEqual(("bye", 0, 0), (summary["end"], summary["lost"], summary["duplicates"]))
            self.assertGreater(summary["bytes"], 12 * summary["packets"])
            self.assertGreater(summary["jitter_peak_ms"], 0)
        # One packet for each frame: the 130 that came in, and the one that the encoder held.
        self.assertEqual(131, summaries[1]["packets"])
        last = max(row["packets"] for row in rows if row["track"] == 1)
        self.assertLessEqual(last, 131)

    def test_stats_stops_after_seconds(self):
        _, result, parsed = self.run_tool("stats", "--json", "--seconds", "1.5")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        self.assertEqual(["track", "track", "summary", "summary"], [line["type"] for line in parsed])
        for summary in parsed[2:]:
            self.assertEqual("stopped", summary["end"])
            self.assertGreaterEqual(summary["time_s"], 1.5)
            self.assertLess(0, summary["packets"])

    def test_stats_for_people(self):
        _, result, _ = self.run_tool("stats", "--seconds", "1.2")
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        heading, first, second, *summaries = result.stdout.splitlines()
        self.assertRegex(heading, r"^ *time/s +track +format +packets +lost +reordered +duplicates +jitter/ms ")
        self.assertEqual(len(heading), len(first))
        self.assertRegex(first, r"^ +1\.\d +0  H264 +\d+ +0 +0 +0 +\d+\.\d{3} +\d+\.\d +\d+\.\d\d$")
        self.assertRegex(second, r"^ +1\.\d +1  MP4A-LATM ")
        self.assertEqual(2, len(summaries))
        self.assertRegex(summaries[0], r"^track 0: H264, 1\.\d s, \d+ packets, 0 lost, .*, stopped here$")


if __name__ == "__main__":
    unittest.main()
