"""What the end-to-end tests share: clips, servers, recordings, and the NAL units in files."""

import contextlib
import json
import os
import pathlib
import subprocess

from programs import program

VIRERTSP = os.environ["VIRERTSP"]
RTSP_SERVER = os.environ["RTSP_SERVER"]
CLIPS = pathlib.Path(os.environ["CLIPS"])

# The tests' own bound: nothing here may hang.
PATIENCE = 90


def clip(seconds):
    """An MP4 file with B-frames and several pictures between key frames; made once and kept."""
    path = CLIPS / f"h264-720p-{seconds}s.mp4"
    if not path.exists():
        CLIPS.mkdir(parents=True, exist_ok=True)
        unfinished = path.with_suffix(f".{os.getpid()}.mp4")
        subprocess.run(
            ["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc2=size=1280x720:rate=25:duration={seconds}",
             "-c:v", "libx264", "-preset", "veryfast", "-bf", "2", "-g", "50", "-b:v", "3M", "-pix_fmt", "yuv420p",
             str(unfinished)], check=True, timeout=PATIENCE)
        unfinished.rename(path)
    return path


def visual_clip(frames):
    """An MP4 file of MPEG-4 visual. The encoder's own time stamps are of no use, so the container gets new ones."""
    path = CLIPS / f"visual-{frames}.mp4"
    if not path.exists():
        CLIPS.mkdir(parents=True, exist_ok=True)
        stream = path.with_suffix(f".{os.getpid()}.m4v")
        unfinished = path.with_suffix(f".{os.getpid()}.mp4")
        subprocess.run(
            ["gst-launch-1.0", "-q", "videotestsrc", f"num-buffers={frames}", "!",
             "video/x-raw,width=320,height=240,framerate=25/1", "!", "avenc_mpeg4", "!", "filesink",
             f"location={stream}"], check=True, timeout=PATIENCE)
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-r", "25", "-f", "m4v", "-i", str(stream), "-c", "copy",
                        str(unfinished)], check=True, timeout=PATIENCE)
        stream.unlink()
        unfinished.rename(path)
    return path


def certificate():
    """A file with a certificate of the loopback that vouches for itself, and its key; made once and kept."""
    path = CLIPS / "loopback.pem"
    if not path.exists():
        CLIPS.mkdir(parents=True, exist_ok=True)
        unfinished = path.with_suffix(f".{os.getpid()}")
        made = subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
             "-days", "3650", "-subj", "/CN=loopback", "-addext", "subjectAltName=IP:127.0.0.1,IP:::1", "-keyout", "-"],
            check=True, capture_output=True, timeout=PATIENCE)
        unfinished.write_bytes(made.stdout)
        unfinished.rename(path)
    return str(path)


@contextlib.contextmanager
def server(*options):
    """Runs the server program and gives its URL."""
    with program(RTSP_SERVER, *options) as (url, _):
        yield url


def run(command, url, *options):
    """Runs a command of virertsp and gives the finished process with what it printed."""
    return subprocess.run([VIRERTSP, command, url, *options], capture_output=True, text=True, timeout=PATIENCE)


def record(url, directory, *options):
    return run("record", url, "--output", str(directory), *options)


def start_code_units(data):
    """The NAL units of a byte stream (Annex B) in which every start code has four bytes."""
    assert data.startswith(b"\0\0\0\1")
    return data[4:].split(b"\0\0\0\1")


def units_of_stream(data):
    """The NAL units of a byte stream with start codes of three bytes and more."""
    units = data.replace(b"\0\0\0\1", b"\0\0\1").split(b"\0\0\1")
    assert not units[0]
    return [unit.rstrip(b"\0") for unit in units[1:]]


def length_units(data):
    """The NAL units of a run of samples in which each has its length in four bytes in front."""
    units = []
    at = 0
    while at < len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        units.append(data[at + 4:at + 4 + size])
        at += 4 + size
    assert at == len(data)
    return units


def units_of_mp4(path):
    """The NAL units of the file's samples, as they lie there."""
    data = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", str(path), "-map", "0:v", "-c", "copy", "-f", "data", "-"],
        check=True, capture_output=True, timeout=PATIENCE).stdout
    return length_units(data)


def parameter_sets_of_mp4(path):
    """SPS and PPS in the order of the file's decoder configuration."""
    data = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", str(path), "-map", "0:v", "-c", "copy", "-bsf:v", "h264_mp4toannexb",
         "-frames:v", "1", "-f", "h264", "-"], check=True, capture_output=True, timeout=PATIENCE).stdout
    units = [unit.rstrip(b"\0") for unit in data.replace(b"\0\0\0\1", b"\0\0\1").split(b"\0\0\1")]
    return [unit for unit in units if unit and unit[0] & 0x1F in (7, 8)]


def presentation_times(path):
    """Seconds, in decode order."""
    text = subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", "packet=pts_time", "-of", "json",
         str(path)], check=True, capture_output=True, timeout=PATIENCE).stdout
    return [float(packet["pts_time"]) for packet in json.loads(text)["packets"]]


def count_frames(path):
    """How many pictures a decoder finds in the file; anything it complains about is an error."""
    result = subprocess.run(
        ["ffprobe", "-v", "error", "-count_frames", "-select_streams", "v", "-show_entries", "stream=nb_read_frames",
         "-of", "csv=p=0", str(path)], check=True, capture_output=True, text=True, timeout=PATIENCE)
    assert not result.stderr, result.stderr
    return int(result.stdout)


def count_samples(path, rate, channels):
    """How many samples a decoder makes of each channel in the file, which must be of this kind."""
    kind = subprocess.run(
        ["ffprobe", "-v", "error", "-show_entries", "stream=sample_rate,channels", "-of", "csv=p=0", str(path)],
        check=True, capture_output=True, text=True, timeout=PATIENCE).stdout.strip()
    assert kind == f"{rate},{channels}", kind
    result = subprocess.run(["ffmpeg", "-v", "error", "-i", str(path), "-f", "s16le", "-"], check=True,
                            capture_output=True, timeout=PATIENCE)
    assert not result.stderr, result.stderr
    return len(result.stdout) // (2 * channels)
