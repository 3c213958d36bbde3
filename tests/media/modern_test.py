"""The element with the profile "modern" in pipelines that know nothing of it: ordinary sinks, playbin, muxers."""

import concurrent.futures
import os
import pathlib
import signal
import subprocess
import tempfile
import time
import unittest

import element
import media

SINK = "fakesink sync=true signal-handoffs=true"


def messages(lines):
    return [line for line in lines if line[0] == "message"]


def positions(lines):
    """Of the pipeline, and how long it had been on its way there, in seconds."""
    return [(int(line[1]) / 1e9, int(line[2]) / 1e9) for line in lines if line[0] == "position"]


@unittest.skipUnless("ELEMENT_PLAY" in os.environ, "GStreamer 1.0 is not there")
class ModernStepsTest(unittest.TestCase):
    """Pauses and seeks"""

    def line(self, url):
        return (f"virertspsrc profile=modern rtp-buffer-size=1 location={url} name=source "
                f"source.src0 ! queue ! h264parse ! avdec_h264 ! {SINK} name=v "
                f"source.src1 ! queue ! aacparse ! avdec_aac ! {SINK} name=a")

    def sums(self, lines, name):
        return [line[2] for line in lines if line[0] == name]

    def played(self, *steps):
        """The lines of a play, and the packets that its server has sent."""
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "sent"
            with element.serve(element.av_clip(0), "--sent", str(path)) as url:
                lines = element.play_steps(self.line(url), "play", *steps, "eos", "null")
            return lines, element.sent(path)

    def unsent(self, all_packets, packets):
        """Which access units the server did not send whole."""
        return {sum(all_packets[before] for before in range(number)) for number in all_packets if number not in packets}

    def test_pauses_cost_nothing(self):
        pauses = [step for second in (0.4, 0.5, 1.2, 1.3, 2.5) for step in (f"until:v:{second}", "pause", "play")]
        with concurrent.futures.ThreadPoolExecutor() as both:
            (served, every), (lines, packets) = both.map(
                lambda steps: self.played(*steps), ((), (*pauses, "pause", "wait:0.5", "play")))
        self.assertEqual([], messages(lines))
        lost = 0
        for name, kind in (("src0", element.PICTURE), ("src1", element.SOUND)):
            sums = self.sums(served, name)
            self.assertEqual(list(range(len(every[kind]))), sorted(every[kind]), name)
            self.assertEqual(len(sums), sum(every[kind].values()), name)
            # The server itself never sends the packet that it has in hand when PAUSE comes and its processors are busy.
            unsent = self.unsent(every[kind], packets[kind])
            lost += len(unsent)
            self.assertLess(len(unsent), 7, "one for each pause")
            whole = [text for unit, text in enumerate(sums) if unit not in unsent]
            # Of such an access unit the rest may have come.
            came = [text for text in self.sums(lines, name) if not unsent or text in set(sums)]
            self.assertEqual(whole, came, (name, unsent))
        if not lost:
            self.assertEqual(self.sums(served, "v"), self.sums(lines, "v"))

    def assert_plays(self, line):
        steps = ("play", "at:0.5", "simple:3.4", "at:3.4", "pause", "play", "at:4", "pause", "simple:1",
                 "play", "at:1.2", "simple:5.5", "eos", "null")
        lines = element.play_steps(line, *steps)
        self.assertEqual([], messages(lines))
        places = positions(lines)
        self.assertEqual(4, len(places))
        for wanted, (place, since) in zip((0.5, 3.4, 4, 1.2), places):
            # Where decoders are slow to start the first picture is late, and the clock has gone on meanwhile.
            self.assertLess(place - wanted, max(1, since), places)

    def test_playbin(self):
        with element.serve(element.av_clip()) as url:
            self.assert_plays(f"playbin uri={url.replace('rtsp:', 'vire:')} video-sink=fakesink\\ sync=true "
                              "audio-sink=fakesink\\ sync=true")

    def test_playbin3(self):
        with element.serve(element.av_clip()) as url:
            self.assert_plays(f"playbin3 uri={url.replace('rtsp:', 'vire:')} video-sink=fakesink\\ sync=true "
                              "audio-sink=fakesink\\ sync=true")

    def test_a_seek_on_a_pipeline_of_ones_own(self):
        with element.serve(element.av_clip()) as url:
            self.assert_plays(self.line(url))


class ModernLaunchTest(unittest.TestCase):
    """gst-launch-1.0"""

    def setUp(self):
        self.tools = element.Tools("1.0")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def assert_decodes(self, source, url, decoder):
        """The access units are those of the file, last as long, and each is decoded."""
        served = element.sounds(self.tools.launch(f"{source} ! {element.AUDIO_SINK}"))
        output = self.tools.launch(f"virertspsrc profile=modern rtp-buffer-size=1 location={url} ! tee name=both ! queue ! "
                                   f"{element.AUDIO_SINK} both. ! queue ! {decoder} ! {element.VIDEO_SINK}")
        played = element.sounds(output)
        self.assertGreater(len(served), 40)
        self.assertEqual([text for _, text in served], [text for _, text in played])
        self.assertAlmostEqual(served[-1][0] - served[0][0], played[-1][0] - played[0][0], delta=0.01)
        self.assertLessEqual(len(served) - 1, len(element.pictures(output)))

    def test_generic_sound(self):
        clip = element.av_clip()
        with element.serve_generic(clip) as url:
            self.assert_decodes(f"filesrc location={clip} ! qtdemux name=demux demux.audio_0 ! queue", url,
                                "aacparse ! avdec_aac")

    def test_speech(self):
        clip = element.speech_clip()
        for decoder in ("avdec_amrnb", "amrnbdec"):
            with element.serve_speech(clip) as url:
                self.assert_decodes(f"filesrc location={clip} ! amrparse", url, decoder)

    def test_an_interrupted_recording_can_be_played(self):
        path = self.folder / "clip.mp4"
        with element.serve(element.av_clip()) as url:
            process = subprocess.Popen(
                [os.environ["GST_LAUNCH_1_0"], "-e", "virertspsrc", "profile=modern", "rtp-buffer-size=1",
                 f"location={url}", "name=source",
                 *"source.src0 ! queue ! h264parse ! mp4mux name=mux".split(), "!", "filesink", "buffer-mode=unbuffered", f"location={path}",
                 *"source.src1 ! queue ! aacparse ! mux.".split()],
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, env=self.tools.environment)
            deadline = time.monotonic() + media.PATIENCE
            while (not path.exists() or path.stat().st_size < 20000) and time.monotonic() < deadline:
                time.sleep(0.05)
            process.send_signal(signal.SIGINT)
            output, _ = process.communicate(timeout=media.PATIENCE)
        self.assertEqual(0, process.returncode, output)
        probed = subprocess.run(
            ["ffprobe", "-v", "error", "-count_packets", "-show_entries", "stream=codec_name,nb_read_packets",
             "-of", "csv=p=0", str(path)], capture_output=True, text=True, timeout=media.PATIENCE)
        self.assertEqual((0, ""), (probed.returncode, probed.stderr), output)
        counts = dict(line.split(",") for line in probed.stdout.split())
        self.assertEqual({"h264", "aac"}, set(counts))
        for codec, count in counts.items():
            self.assertGreater(int(count), 10, codec)
            self.assertLess(int(count), element.SECONDS * 43, codec)

    def packets(self, path):
        """The seconds at which those of each stream are shown, in order."""
        probed = subprocess.run(
            ["ffprobe", "-v", "error", "-show_entries", "packet=stream_index,pts_time", "-of", "csv=p=0", str(path)],
            capture_output=True, text=True, timeout=media.PATIENCE)
        self.assertEqual((0, ""), (probed.returncode, probed.stderr))
        times = {}
        for line in probed.stdout.split():
            stream, seconds = line.split(",")[:2]
            times.setdefault(stream, []).append(float(seconds))
        return [sorted(times[stream]) for stream in sorted(times)]

    def test_two_cameras_in_one_file(self):
        clip = self.folder / "short.mp4"
        subprocess.run(["ffmpeg", "-v", "error", "-i", str(element.av_clip(0)), "-t", "2", "-map", "0:v", "-c", "copy",
                        str(clip)], check=True, timeout=media.PATIENCE)
        serve = ("--launch", f"( filesrc location={clip} ! qtdemux ! rtph264pay name=pay0 pt=96 config-interval=0 )")
        for profile, muxer in (("modern", "mp4mux"), ("classic", "matroskamux")):
            path = self.folder / f"both.{muxer}"
            with media.server(*serve) as one, media.server(*serve) as other:
                cameras = [f"virertspsrc profile={profile} rtp-buffer-size=1 location={url} ! queue ! h264parse ! mux."
                           for url in (one, other)]
                self.tools.launch(f"{muxer} name=mux ! filesink location={path} {' '.join(cameras)}")
            tracks = self.packets(path)
            self.assertEqual([50, 50], [len(times) for times in tracks], profile)
            for times in tracks:
                self.assertAlmostEqual(49 / element.RATE, times[-1] - times[0], delta=0.01, msg=profile)


if __name__ == "__main__":
    unittest.main()
