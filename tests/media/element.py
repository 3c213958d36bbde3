"""What the tests of the element in a pipeline share: clips, how they are served, launchers, what they print."""

import os
import re
import subprocess
import unittest

import media

RATE = 25
SECONDS = 6
SAMPLES = 44100

# Sinks that print a line per decoded buffer, told apart by the length of its sum.
VIDEO_SINK = "checksumsink hash=md5 sync=false"
AUDIO_SINK = "checksumsink hash=sha1 sync=false"


def make_clip(name, *codecs):
    path = media.CLIPS / name
    if not path.exists():
        media.CLIPS.mkdir(parents=True, exist_ok=True)
        unfinished = path.with_suffix(f".{os.getpid()}.mp4")
        subprocess.run(
            ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i",
             f"testsrc2=size=320x240:rate={RATE}:duration={SECONDS}", "-f", "lavfi", "-i",
             f"sine=frequency=440:beep_factor=4:sample_rate={SAMPLES}:duration={SECONDS}", *codecs, str(unfinished)],
            check=True, timeout=media.PATIENCE)
        unfinished.rename(path)
    return path


def av_clip(b_frames=2):
    """H.264 with a key frame per second, and AAC in stereo."""
    return make_clip(f"av-{SECONDS}s-{b_frames}b.mp4", "-c:v", "libx264", "-preset", "veryfast", "-bf", str(b_frames),
                     "-g", str(RATE), "-pix_fmt", "yuv420p", "-c:a", "aac", "-ac", "2", "-b:a", "96k")


def visual_clip():
    """MPEG-4 visual, no sound."""
    return make_clip(f"mp4v-{SECONDS}s.mp4", "-map", "0:v", "-c:v", "mpeg4", "-g", str(RATE))


def speech_clip():
    """A second of AMR, 20 ms a frame."""
    path = media.CLIPS / "speech.amr"
    if not path.exists():
        media.CLIPS.mkdir(parents=True, exist_ok=True)
        unfinished = path.with_suffix(f".{os.getpid()}.amr")
        subprocess.run(
            ["gst-launch-1.0", "-q", "audiotestsrc", "num-buffers=50", "samplesperbuffer=160", "!",
             "audio/x-raw,rate=8000,channels=1", "!", "amrnbenc", "!", "filesink", f"location={unfinished}"],
            check=True, timeout=media.PATIENCE)
        # The encoder's frames are all that a file has behind its first line.
        unfinished.write_bytes(b"#!AMR\n" + unfinished.read_bytes().removeprefix(b"#!AMR\n"))
        unfinished.rename(path)
    return path


def make_clips():
    speech_clip()
    av_clip()
    av_clip(0)
    visual_clip()


PICTURE, SOUND = 96, 97  # Payload types of what is served.


def serve(clip, *options):
    """Serves both tracks of the clip."""
    return media.server(*options, "--launch", f"( filesrc location={clip} ! qtdemux name=demux "
                        "demux.video_0 ! queue ! rtph264pay name=pay0 pt=96 config-interval=0 "
                        "demux.audio_0 ! queue ! rtpmp4apay name=pay1 pt=97 )")


def sent(path):
    """What the server has written down of the packets that left: of each payload type the numbers, counted from the first, with
    whether they end an access unit."""
    packets = {PICTURE: [], SOUND: []}
    for line in path.read_text().splitlines():
        kind, number, mark = map(int, line.split())
        packets[kind].append((number, mark))
    return {kind: {(number - numbers[0][0]) % 65536: mark for number, mark in numbers} for kind, numbers in packets.items()}


def serve_generic(clip):
    """Serves the sound of the clip as mpeg4-generic."""
    return media.server("--launch", f"( filesrc location={clip} ! qtdemux name=demux "
                        "demux.audio_0 ! queue ! aacparse ! rtpmp4gpay name=pay0 pt=97 )")


def serve_speech(clip):
    return media.server("--launch", f"( filesrc location={clip} ! amrparse ! rtpamrpay name=pay0 pt=98 )")


def serve_visual(clip):
    return media.server("--launch", f"( filesrc location={clip} ! qtdemux ! mpeg4videoparse ! "
                        "rtpmp4vpay name=pay0 pt=96 )")


class Tools:
    """The launcher and the inspector of one GStreamer, with our plugin and a registry of their own."""

    def __init__(self, version):
        self.name = version.replace(".", "_")
        if f"PLUGIN_{self.name}" not in os.environ:
            raise unittest.SkipTest(f"GStreamer {version} is not there, or the plugin is built for a sanitizer")
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith(("GST_DEBUG", "GST_PLUGIN_PATH", "GST_REGISTRY"))}
        self.environment["GST_PLUGIN_PATH"] = os.environ[f"PLUGIN_{self.name}"]
        self.environment["GST_REGISTRY"] = f"{os.environ['GST_REGISTRIES']}/registry-{self.name}.bin"
        # The language of what is compared.
        self.environment["LC_ALL"] = "C"

    def attempt(self, tool, *arguments):
        result = subprocess.run([os.environ[f"GST_{tool}_{self.name}"], *arguments], capture_output=True, text=True,
                                env=self.environment, timeout=media.PATIENCE)
        return result.returncode, result.stdout, result.stderr

    def run(self, tool, *arguments):
        status, output, errors = self.attempt(tool, *arguments)
        assert (status, errors) == (0, ""), (status, errors, output[-2000:])
        return output

    def try_launch(self, line, *options):
        """Exit status, standard output, standard error."""
        return self.attempt("LAUNCH", *options, *line.split())

    def launch(self, line, *options):
        """Runs to the end of the stream; gives standard output. Nothing may appear on standard error."""
        output = self.run("LAUNCH", *options, *line.split())
        if "-q" not in options:
            assert "Got EOS from element" in output, output
        return output

    def inspect(self, element):
        return self.run("INSPECT", element)


def sums(output, digits):
    """(seconds, sum) of every line of a checksum sink, by the length of the sum."""
    found = re.findall(rf"^(\d+):(\d+):(\d+\.\d+) ([0-9a-f]{{{digits}}})$", output, re.MULTILINE)
    return [(int(hours) * 3600 + int(minutes) * 60 + float(seconds), text) for hours, minutes, seconds, text in found]


def pictures(output):
    return sums(output, 32)


def sounds(output):
    return sums(output, 40)


def play_steps(line, *steps):
    """Runs the steps; gives the lines printed, each split at blanks. Every step has to succeed."""
    environment = {name: value for name, value in os.environ.items() if name != "GST_DEBUG"}
    # No plugin of ours is needed, it is linked in; and none of those that it needs is scanned for anew.
    environment["GST_REGISTRY"] = f"{os.environ['GST_REGISTRIES']}/registry-play.bin"
    # The thread sanitizer knows a part of playbin's locks only, and finds disorder among those. Races it finds as before.
    if line.startswith("playbin"):
        environment["TSAN_OPTIONS"] = f"{environment.get('TSAN_OPTIONS', '')}:detect_deadlocks=0"
    result = subprocess.run([os.environ["ELEMENT_PLAY"], line, *steps], capture_output=True, text=True,
                            env=environment, timeout=media.PATIENCE)
    assert (result.returncode, result.stderr) == (0, ""), (result.returncode, result.stderr, result.stdout[-2000:])
    return [text.split() for text in result.stdout.splitlines()]
