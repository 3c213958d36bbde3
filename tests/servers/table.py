"""Plays servers of many makes with the tool and the element, and prints what came of it as a table.

scripts/servers.sh installs what this needs and starts it in a network of its own, so that the ports of servers that
want fixed ones collide with nothing. Ends with 1 when something that should play does not.
"""

import argparse
import concurrent.futures
import contextlib
import itertools
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

import media
from programs import program

SECONDS = 2
# What live servers send over and over: some pause where it begins anew.
LIVE_SECONDS = 20
# Of a live server, so many pictures; the first ones may wait for a key frame.
LIVE_PICTURES = 40
PATIENCE = 40
TRANSPORTS = ("udp", "tcp", "udp,tcp")
PROFILES = ("classic", "modern")
USER = ("me", "secret")
# Seconds of media to gather before playing: the least, so that nothing waits for it.
BUFFER = ["--config", "RTSP:TargetRTPBuffer=0"]
# Seconds to wait for an answer: some servers give none to a URL that they do not know.
ANSWER = ["--config", "RTSP:TimeOutAfter=3"]


class Server:
    """A server by name, how it is started, and what should play there."""

    def __init__(self, name, start, transports=TRANSPORTS, classic=TRANSPORTS, live=False, user=False, tracks=1):
        self.name = name
        self.start = start
        self.should = {"modern": transports, "classic": classic}
        self.live = live
        self.user = user
        self.tracks = tracks

# ---------------------------------------------------------------- starting servers

def free_port():
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


def described(port, path):
    """The status of a DESCRIBE; 0 without an answer."""
    with contextlib.suppress(OSError):
        with socket.create_connection(("127.0.0.1", port), timeout=5) as client:
            client.settimeout(5)
            client.sendall(f"DESCRIBE rtsp://127.0.0.1:{port}/{path} RTSP/1.0\r\nCSeq: 1\r\n"
                           "Accept: application/sdp\r\n\r\n".encode())
            words = client.recv(4096).split()
            return int(words[1]) if len(words) > 1 else 0
    return 0


def wait_for(port, path, process):
    end = time.monotonic() + PATIENCE
    while described(port, path) not in (200, 401):
        if process.poll() is not None or time.monotonic() > end:
            raise RuntimeError("does not start")
        time.sleep(0.1)


@contextlib.contextmanager
def running(*command, **options):
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, **options)
    try:
        yield process
    finally:
        process.terminate()
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def gst(*options):
    """Our server program, which serves the clip whole to each client."""
    @contextlib.contextmanager
    def start(clip):
        with program(media.RTSP_SERVER, "--file", str(clip), *options) as (url, _):
            yield url
    return start


@contextlib.contextmanager
def published(port, path, clip, target, transport="tcp"):
    """The clip, over and over, from a publisher to that port; `path` is then at the server's port `target`."""
    with running("ffmpeg", "-v", "error", "-re", "-stream_loop", "-1", "-i", str(clip), "-c", "copy", "-an",
                 "-rtsp_transport", transport, "-f", "rtsp", f"rtsp://127.0.0.1:{port}/{path}") as publisher:
        wait_for(target, path, publisher)
        yield f"rtsp://127.0.0.1:{target}/{path}"


def wait_to_listen(process, *ports):
    end = time.monotonic() + PATIENCE
    for port in ports:
        while True:
            with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), timeout=5):
                break
            if process.poll() is not None or time.monotonic() > end:
                raise RuntimeError("does not start")
            time.sleep(0.1)


@contextlib.contextmanager
def vlc(clip):
    port = free_port()
    # It refuses to run as root.
    user = {"user": "nobody", "group": "nogroup", "extra_groups": []} if os.geteuid() == 0 else {}
    with tempfile.TemporaryDirectory() as home:
        os.chmod(home, 0o777)
        served = shutil.copy(clip, home)
        os.chmod(served, 0o644)
        with running("cvlc", "-q", "--no-audio", "--loop", served, "--sout",
                     f"#rtp{{sdp=rtsp://127.0.0.1:{port}/clip}}", "--sout-keep",
                     env=dict(os.environ, HOME=home), **user) as process:
            wait_for(port, "clip", process)
            yield f"rtsp://127.0.0.1:{port}/clip"


@contextlib.contextmanager
def perl(clip):
    clients, sources = free_port(), free_port()
    with running("rtsp-server-perl", "--clientport", str(clients), "--serverport", str(sources),
                 "--client_listen_address", "127.0.0.1", "--source_listen_address", "127.0.0.1", "--loglevel", "0",
                 "--rtp_start_port", str(free_port() // 2 * 2)) as process:
        wait_to_listen(process, clients, sources)
        with published(sources, "clip", clip, clients, "udp") as url:
            yield url


def node(script, one_port=False, publish_over="udp"):
    """A server of the npm registry: its script gets the ports for publishers, for clients, and the first for media."""
    @contextlib.contextmanager
    def start(clip):
        sources, clients, media_ports = free_port(), free_port(), free_port() // 2 * 2
        sources = clients if one_port else sources
        with running("node", "-e", script, str(sources), str(clients), str(media_ports),
                     cwd=os.environ["NODE_SERVERS"]) as process:
            wait_to_listen(process, clients, sources)
            with published(sources, "live/clip", clip, clients, publish_over) as url:
                yield url
    return start


STREAMING_SERVER = """
const Server = require('rtsp-streaming-server').default;
const [sources, clients, media] = process.argv.slice(1).map(Number);
new Server({serverPort: sources, clientPort: clients, rtpPortStart: media, rtpPortCount: 200}).start();
"""

HYBRID_SERVER = """
const config = require('node-rtsp-rtmp-server/config.js');
const [, clients, media] = process.argv.slice(1).map(Number);
Object.assign(config, {serverPort: clients, rtmpServerPort: 0, receiverType: 'tcp', receiverListenHost: '127.0.0.1',
    videoControlReceiverPort: 0, audioControlReceiverPort: 0, videoDataReceiverPort: 0, audioDataReceiverPort: 0,
    audioRTPServerPort: media, audioRTCPServerPort: media + 1, videoRTPServerPort: media + 2,
    videoRTCPServerPort: media + 3, rtspVideoDataUDPListenPort: media + 4, rtspVideoControlUDPListenPort: media + 5,
    rtspAudioDataUDPListenPort: media + 6, rtspAudioControlUDPListenPort: media + 7});
const Server = require('node-rtsp-rtmp-server');
new Server().start();
"""


def servers():
    name = ["--user", ":".join(USER)]
    return [
        Server("gst-rtsp-server", gst()),
        Server("gst-rtsp-server, Basic", gst(*name, "--basic"), user=True),
        Server("gst-rtsp-server, Digest", gst(*name), user=True),
        Server("gst-rtsp-server, TCP only", gst("--tcp-only"), ("tcp", "udp,tcp"), ("tcp", "udp,tcp")),
        Server("gst-rtsp-server, UDP only", gst("--udp-only"), ("udp", "udp,tcp"), ("udp", "udp,tcp")),
        # In classic the first description of a type speaks for all tracks of that type.
        Server("gst-rtsp-server, two videos", gst("--twice"), classic=(), tracks=2),
        Server("gst-rtsp-server, TLS", gst("--certificate", media.certificate()), classic=()),
        Server("gst-rtsp-server, IPv6", gst("--address", "::1"), classic=()),
        Server("VLC", vlc, ("udp", "udp,tcp"), (), live=True),
        # It answers nothing to a track at a URL that it does not know.
        Server("rtsp-server-perl", perl, ("udp", "udp,tcp"), (), live=True),
        # It describes a track relative to a URL without a slash at its end, and dies of what RFC 3986 makes of that:
        # modern asks for it below that URL first.
        Server("rtsp-streaming-server (npm)", node(STREAMING_SERVER), ("udp", "udp,tcp"), (), live=True),
        Server("node-rtsp-rtmp-server (npm)", node(HYBRID_SERVER, one_port=True, publish_over="tcp"), live=True),
    ]


# ---------------------------------------------------------------- playing

class Failed(Exception):
    pass


def end_of(text):
    lines = [line for line in text.strip().splitlines() if line.strip()]
    return lines[-1] if lines else "no word"


def pictures(units):
    """The coded slices: servers put parameter sets, delimiters and messages between them as they like."""
    return [unit.rstrip(b"\0") for unit in units if unit and 1 <= unit[0] & 0x1F <= 5]


def play_with_tool(server, url, transport, profile, folder, _):
    command = [media.VIRERTSP, "record", url, "--output", str(folder), "--transport", transport, *ANSWER]
    command += ["--classic"] if profile == "classic" else []
    command += ["--seconds", str(LIVE_PICTURES / 25), *BUFFER] if server.live else BUFFER
    command += ["--user", USER[0]] if server.user else []
    if url.startswith("rtsps:"):
        command += ["--config", f"RTSP:TLSAuthorities={media.certificate()}"]
    result = subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE,
                            env=dict(os.environ, VIRERTSP_PASSWORD=USER[1]))
    if result.returncode != 0:
        raise Failed(end_of(result.stderr).removeprefix("virertsp: "))
    files = sorted(folder.glob("*.h264"))
    return [media.units_of_stream(file.read_bytes()) for file in files]


def interrupt_with(process, files, enough):
    """Ends a play that would go on for ever, once so many bytes of each track are there."""
    end = time.monotonic() + PATIENCE
    while process.poll() is None and time.monotonic() < end:
        if all(file.exists() and file.stat().st_size > enough for file in files):
            break
        time.sleep(0.05)
    process.send_signal(signal.SIGINT)


def play_with_element(server, url, transport, profile, folder, enough):
    files = [folder / f"track{track}" for track in range(server.tracks)]
    line = ["-q", "virertspsrc", "name=source", f"location={url}", f"profile={profile}",
            f"transports={transport.replace(',', '+')}", "rtp-buffer-size=0",
            "timeout-rtsp-after=3"]
    line += [f"user-id={USER[0]}", f"user-pw={USER[1]}"] if server.user else []
    line += [f"tls-authorities={media.certificate()}"] if url.startswith("rtsps:") else []
    for track, file in enumerate(files):
        line += [f"source.src{track}", "!"]
        line += ["queue", "!", "filesink", "buffer-mode=unbuffered", f"location={file}"]
    process = subprocess.Popen([os.environ["GST_LAUNCH"], *line], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                               text=True)
    try:
        if server.live:
            interrupt_with(process, files, enough)
        _, errors = process.communicate(timeout=PATIENCE)
    except subprocess.TimeoutExpired as late:
        process.kill()
        process.communicate()
        raise Failed("no end") from late
    # An interrupt is no failure, yet some versions of the launcher tell it as one.
    if not all(file.exists() for file in files) or (process.returncode != 0 and not server.live):
        raise Failed(end_of(errors))
    if not all(file.stat().st_size for file in files):
        raise Failed(end_of(errors))
    return [media.length_units(file.read_bytes()) for file in files]


def is_part(played, served):
    """Whether this is a run of what is served over and over. The first picture is where the presentation begins: what
    follows it but would be shown before it, one or two pictures of this clip, is left out."""
    around = served * (len(played) // len(served) + 2)
    for begin, unit in enumerate(served):
        if unit == played[0]:
            run = around[begin:begin + len(played) + 2]
            if any(run[:1] + run[1 + left:len(played) + left] == played for left in range(3)):
                return True
    return False


def compare(server, served, tracks):
    """What to say when all is equal; else an exception."""
    if len(tracks) != server.tracks:
        raise Failed(f"{len(tracks)} tracks")
    for units in tracks:
        played = pictures(units)
        if not server.live:
            if played != served:
                raise Failed(f"{len(played)} of {len(served)} pictures, not as served")
            continue
        if len(played) < LIVE_PICTURES // 2 or not is_part(played, served):
            raise Failed(f"{len(played)} pictures, not as served")
    return f"{sum(len(pictures(units)) for units in tracks)} equal"


def play(server, url, served, transport, profile, how):
    enough = sum(map(len, served)) * LIVE_PICTURES // len(served)
    with tempfile.TemporaryDirectory() as folder:
        try:
            return True, compare(server, served, how(server, url, transport, profile, pathlib.Path(folder), enough))
        except Failed as failure:
            return False, str(failure)
        except subprocess.TimeoutExpired:
            return False, "no end"


def play_all(server, clip, served):
    """{(profile, transport, who): (plays, words)}"""
    ways = {"tool": play_with_tool, "element": play_with_element}
    found = {}
    for profile, transport, who in itertools.product(PROFILES, TRANSPORTS, ways):
        # A fresh server each time: some die of what they are asked.
        try:
            with server.start(clip) as url:
                outcome = play(server, url, served, transport, profile, ways[who])
        except (RuntimeError, OSError) as failure:
            outcome = False, str(failure)
        found[profile, transport, who] = outcome
    return found


# ---------------------------------------------------------------- telling

def row(server, transport, found):
    cells = [server.name, transport.replace(",", "+")]
    for profile in PROFILES:
        for who in ("tool", "element"):
            plays, words = found[profile, transport, who]
            should = transport in server.should[profile]
            cells.append(words if plays or not should else f"**{words}**")
    return "| " + " | ".join(cell.replace("|", "/") for cell in cells) + " |"


def surprises(server, found):
    return [f"{server.name}, {transport}, {profile}, {who}: {words}"
            for (profile, transport, who), (plays, words) in found.items()
            if transport in server.should[profile] and not plays]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", default="", help="servers with this in their name")
    parser.add_argument("--jobs", type=int, default=3, help="servers at a time (3)")
    options = parser.parse_args()
    clips = {live: media.clip(LIVE_SECONDS if live else SECONDS) for live in (False, True)}
    served = {live: pictures(media.units_of_mp4(clip)) for live, clip in clips.items()}
    chosen = [server for server in servers() if options.only in server.name]
    print("| server | transports | classic, tool | classic, element | modern, tool | modern, element |")
    print("|---|---|---|---|---|---|", flush=True)
    failures = []
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for server, found in zip(chosen, pool.map(lambda one: play_all(one, clips[one.live], served[one.live]), chosen)):
            for transport in TRANSPORTS:
                print(row(server, transport, found), flush=True)
            failures += surprises(server, found)
    for failure in failures:
        print("should play: " + failure, file=sys.stderr)
    return 1 if failures or not chosen else 0


if __name__ == "__main__":
    sys.exit(main())
