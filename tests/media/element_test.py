"""Real media from a real server through the element, decoded, and compared with what decoding the file gives."""

import os
import pathlib
import tempfile
import unittest

import element
import media

# Time stamps are cut to RTP's ticks and once more on their way.
TICK = {"video": 1.2 / 90000, "audio": 1.2 / element.SAMPLES}

# What a pause costs a track: the first packet behind it, which takes the number of the last one before it and counts as
# its copy while that one is still queued; and a buffer that is being pushed when the pads are told to flush, if any.
COST_OF_A_PAUSE = 2


class LaunchTest(unittest.TestCase):
    """gst-launch-1.0"""

    def setUp(self):
        self.tools = element.Tools("1.0")

    def assert_same(self, kind, served, played):
        """The same buffers in the same order, at the same times but for one difference that all share."""
        self.assertGreater(len(served), element.SECONDS * element.RATE - 1)
        self.assertEqual([text for _, text in served], [text for _, text in played])
        # The first sound precedes the presentation's start, which no time stamp can say.
        late = served[1][0] - played[1][0]
        for index, ((ours, _), (theirs, _)) in enumerate(zip(played[1:], served[1:]), 1):
            self.assertAlmostEqual(theirs - late, ours, delta=2 * TICK[kind], msg=f"{kind} {index}")
        self.assertAlmostEqual(element.SECONDS, played[-1][0] - played[0][0], delta=0.1)

    def decode_file(self, clip):
        return self.tools.launch(
            f"filesrc location={clip} ! qtdemux name=demux "
            f"demux.video_0 ! queue ! h264parse ! avdec_h264 ! {element.VIDEO_SINK} "
            f"demux.audio_0 ! queue ! aacparse ! avdec_aac ! {element.AUDIO_SINK}")

    def assert_plays(self, make_line, sound_as_served=True):
        clip = element.av_clip()
        served = self.decode_file(clip)
        with element.serve(clip) as url:
            played = self.tools.launch(make_line(url))
        self.assert_same("video", element.pictures(served), element.pictures(played))
        if sound_as_served:
            self.assert_same("audio", element.sounds(served), element.sounds(played))
        self.assertEqual(len(element.sounds(served)), len(element.sounds(played)))

    def test_picture_and_sound(self):
        self.assert_plays(lambda url: f"virertspsrc location={url} name=source "
                          f"source.src0 ! queue ! h264parse ! avdec_h264 ! {element.VIDEO_SINK} "
                          f"source.src1 ! queue ! aacparse ! avdec_aac ! {element.AUDIO_SINK}")

    def test_decodebin(self):
        self.assert_plays(lambda url: f"virertspsrc location={url} name=source "
                          f"source.src0 ! decodebin ! {element.VIDEO_SINK} "
                          f"source.src1 ! decodebin ! {element.AUDIO_SINK}")

    def test_playbin(self):
        # It converts the sound to what its sink likes best.
        sinks = [f"video-sink={element.VIDEO_SINK}", f"audio-sink={element.AUDIO_SINK}"]
        clip = element.av_clip()
        served = self.decode_file(clip)
        with element.serve(clip) as url:
            played = self.tools.run("LAUNCH", "playbin", url.replace("rtsp:", "uri=vire:"), *sinks)
        self.assertIn("Got EOS from element", played)
        self.assert_same("video", element.pictures(served), element.pictures(played))
        self.assertEqual(len(element.sounds(served)), len(element.sounds(played)))

    def test_mpeg4_visual_alone(self):
        clip = element.visual_clip()
        served = self.tools.launch(
            f"filesrc location={clip} ! qtdemux ! mpeg4videoparse ! avdec_mpeg4 ! {element.VIDEO_SINK}")
        with element.serve_visual(clip) as url:
            played = self.tools.launch(
                f"virertspsrc location={url} ! mpeg4videoparse ! avdec_mpeg4 ! {element.VIDEO_SINK}")
        self.assert_same("video", element.pictures(served), element.pictures(played))

    def test_a_refusal_is_told_in_words(self):
        # This launcher does not look at the bus when the start fails: it shows no message, the log has the words.
        with element.serve(element.av_clip()) as url:
            status, _, errors = self.tools.try_launch(f"virertspsrc location={url}/other ! fakesink",
                                                      "--gst-debug-level=1", "--gst-debug-no-color")
        self.assertNotEqual(0, status)
        self.assertIn("DESCRIBE failed: 404 Not Found", errors)

    def test_inspect(self):
        output = self.tools.inspect("virertspsrc")
        for text in ("VireRtspSrc", "Source/Network", "'src%d'", "vire", "rtp-buffer-size", "1.6.0.6415"):
            self.assertIn(text, output)


class ServersTest(unittest.TestCase):
    """What servers ask for before they play, in a pipeline."""

    def assert_units(self, served, source, tracks=1):
        """Each track has the NAL units of the clip."""
        clip = media.clip(1)
        with tempfile.TemporaryDirectory() as folder:
            files = [pathlib.Path(folder) / f"track{track}" for track in range(tracks)]
            with media.server("--file", str(clip), *served) as url:
                element.Tools("1.0").launch(
                    f"virertspsrc name=source location={url} rtp-buffer-size=0 {source} " +
                    " ".join(f"source.src{track} ! queue ! filesink location={file}"
                             for track, file in enumerate(files)))
            for file in files:
                self.assertEqual(media.units_of_mp4(clip), media.length_units(file.read_bytes()), file.name)

    def test_basic(self):
        self.assert_units(["--user", "me:secret", "--basic"], "user-id=me user-pw=secret")

    def test_digest(self):
        self.assert_units(["--user", "me:secret"], "user-id=me user-pw=secret profile=modern")

    def test_tcp_only(self):
        self.assert_units(["--tcp-only"], "transports=tcp")

    def test_tcp_where_udp_is_refused(self):
        self.assert_units(["--tcp-only"], "profile=modern")

    def test_two_videos(self):
        self.assert_units(["--twice"], "profile=modern", tracks=2)

    def test_a_wrong_password(self):
        with media.server("--file", str(media.clip(1)), "--user", "me:secret") as url:
            status, _, errors = element.Tools("1.0").try_launch(
                f"virertspsrc location={url} user-id=me user-pw=other profile=modern ! fakesink",
                "--gst-debug-level=1", "--gst-debug-no-color")
        self.assertNotEqual(0, status)
        self.assertIn("401 Unauthorized", errors)
        self.assertNotIn("other", errors)


class OldLaunchTest(unittest.TestCase):
    """gst-launch-0.10"""

    def setUp(self):
        self.tools = element.Tools("0.10")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_inspect(self):
        output = self.tools.inspect("virertspsrc")
        for text in ("VireRtspSrc", "Source/Network", "'src%d'", "vire", "rtp-buffer-size", "1.6.0.6415"):
            self.assertIn(text, output)

    def test_a_refusal_is_told_in_words(self):
        with element.serve(element.av_clip()) as url:
            status, output, _ = self.tools.try_launch(f"virertspsrc location={url}/other ! fakesink")
        self.assertNotEqual(0, status)
        self.assertIn(f"Playing {url}/other failed: the server has no such presentation (404); check the path.", output)

    def save(self, tools, url, name):
        files = [self.folder / f"{name}{track}" for track in range(2)]
        tools.launch(f"virertspsrc location={url} name=source source.src0 ! filesink location={files[0]} "
                     f"source.src1 ! filesink location={files[1]}")
        return [file.read_bytes() for file in files]

    def test_the_same_bytes(self):
        clip = element.av_clip()
        with element.serve(clip) as url:
            old = self.save(self.tools, url, "old")
            new = self.save(element.Tools("1.0"), url, "new")
        self.assertEqual(new, old)
        self.assertEqual(media.units_of_mp4(clip), media.length_units(old[0]))

    def test_visual(self):
        with element.serve_visual(element.visual_clip()) as url:
            output = self.tools.launch(f"virertspsrc location={url} ! fakesink silent=false", "-v")
        self.assertEqual(element.SECONDS * element.RATE, output.count("chain   *"))


@unittest.skipUnless("ELEMENT_PLAY" in os.environ, "GStreamer 1.0 is not there")
class StepsTest(unittest.TestCase):
    """What a program does with the element that gst-launch does not."""

    def line(self, url):
        return (f"virertspsrc location={url} name=source "
                "source.src0 ! queue ! h264parse ! avdec_h264 ! fakesink name=v sync=true async=false "
                "signal-handoffs=true source.src1 ! queue ! aacparse ! avdec_aac ! "
                "fakesink name=a sync=true async=false signal-handoffs=true")

    def buffers(self, lines, name):
        return [(int(line[1]), line[2]) for line in lines if line[0] == name]

    def sums(self, lines, name):
        return [text for _, text in self.buffers(lines, name)]

    def after(self, lines, *step):
        return lines[lines.index(["step", *step]) + 1:]

    # gst-launch-1.0 -v is no help: pads that get their caps at the same moment may have one written twice, the other never.
    def assert_caps(self, pattern, lines, name):
        self.assertEqual([], [line for line in lines if line[0] == "message"])
        found = [" ".join(line[2:]) for line in lines if line[:2] == ["caps", name]]
        self.assertEqual(1, len(found), lines[-3:])
        self.assertRegex(found[0], f"^{pattern}$")

    def test_caps_of_the_pads(self):
        with element.serve(element.av_clip()) as url:
            lines = element.play_steps(f"virertspsrc location={url} name=source source.src0 ! fakesink name=first "
                                       "source.src1 ! fakesink name=second",
                                       "play", "eos", "caps:first", "caps:second", "null")
        self.assert_caps(r"video/x-h264, encoding-name=\(string\)H264, width=\(int\)320, height=\(int\)240, "
                         r"codec_data=\(buffer\)01[0-9a-f]+, stream-format=\(string\)avc, alignment=\(string\)au",
                         lines, "first")
        self.assert_caps(r"audio/mpeg, mpegversion=\(int\)4, encoding-name=\(string\)MP4A-LATM, "
                         rf"framed=\(boolean\)false, channels=\(int\)\d, rate=\(int\){element.SAMPLES}, "
                         r"codec_data=\(buffer\)[0-9a-f]+, stream-format=\(string\)raw",
                         lines, "second")

    def test_visual_caps(self):
        with element.serve_visual(element.visual_clip()) as url:
            lines = element.play_steps(f"virertspsrc location={url} name=source source.src0 ! fakesink name=only",
                                       "play", "eos", "caps:only", "null")
        self.assert_caps(r"video/mpeg, mpegversion=\(int\)4, encoding-name=\(string\)MP4V-ES, "
                         r"systemstream=\(boolean\)false, width=\(int\)320, height=\(int\)240, "
                         r"codec_data=\(buffer\)[0-9a-f]+", lines, "only")

    def test_a_seek_lands_within_a_second(self):
        target = element.SECONDS / 2 + 0.4
        with element.serve(element.av_clip()) as url:
            lines = element.play_steps(self.line(url), "play", "until:v:0.5", f"seek:{target}", "eos", "null")
        self.assertEqual([], [line for line in lines if line[0] == "message"])
        late = self.after(lines, f"seek:{target}")
        for name in ("src0", "src1", "v", "a"):
            # What a sink was showing comes before the seek's own.
            first = next(time for time, _ in self.buffers(late, name) if time > 1.5e9)
            self.assertAlmostEqual(target, first / 1e9, delta=1, msg=name)
            self.assertGreater(self.buffers(late, name)[-1][0], (element.SECONDS - 0.2) * 1e9, name)

    def test_a_pause_loses_no_more_than_at_its_seams(self):
        # A server tells the next packet's time when it goes on. Pictures that are shown before it, although they are
        # sent later, count as old then: a clip without them.
        with element.serve(element.av_clip(0)) as url:
            served = element.play_steps(self.line(url), "play", "eos", "null")
            lines = element.play_steps(self.line(url), "play", "until:v:1.5", "pause", "wait:3", "play", "eos", "null")
        self.assertEqual([], [line for line in lines if line[0] == "message"])
        for name in ("src0", "src1"):
            self.assert_lost_at_most(self.sums(served, name), self.sums(lines, name), COST_OF_A_PAUSE, name)
            times = [time for time, _ in self.buffers(lines, name)]
            self.assertEqual(sorted(times), times, name)
            # The pause is no part of the presentation.
            self.assertAlmostEqual(element.SECONDS, (times[-1] - times[0]) / 1e9, delta=0.2, msg=name)
        self.assertEqual(element.SECONDS * element.RATE, len(self.sums(served, "v")))
        self.assertTrue(self.buffers(self.after(lines, "wait:3"), "v"))

    def assert_lost_at_most(self, served, played, most, name):
        """Everything played was served, in this order, and of what was served no more than `most` is missing."""
        rest = iter(served)
        self.assertTrue(all(text in rest for text in played), name)
        self.assertLessEqual(len(served) - len(played), most, name)

    def test_another_location_while_playing(self):
        with element.serve(element.av_clip()) as url, element.serve_visual(element.visual_clip()) as other:
            line = f"virertspsrc location={url} name=source source.src0 ! fakesink name=v async=false"
            lines = element.play_steps(line, "play", "until:src0:0.5", f"location:{other}", "wait:5", "null")
        # What the first one plays until it is stopped comes before the other's beginning; nothing of it comes later.
        times = [time for time, _ in self.buffers(self.after(lines, f"location:{other}"), "src0")]
        first = times.index(min(times))
        self.assertLess(first, element.RATE)
        self.assertLess(times[first], 0.1e9)
        self.assertEqual(sorted(times[first:]), times[first:])
        self.assertGreater(len(times) - first, element.RATE)
        self.assertEqual([], [line for line in lines if line[0] == "message"])


if __name__ == "__main__":
    unittest.main()
