#!/usr/bin/env python3
"""Compares what receiving costs: CPU time per packet and memory of whole processes, one after the other, against the
same local server in one run. Absolute times depend on the machine; the ratios are what counts.

    bench/compare.py [--build DIR] [--rates 8,40,100,400] [--seconds 5] [--plugin DIR]
"""
import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import time

PACKET_PAYLOAD = 1386  # bytes of the access unit in a packet of 1400
SETTLE = 2.0


def run_quietly(command):
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def make_clip(path):
    """One intra picture, coded with CABAC so that it may be filled up."""
    run_quietly(["ffmpeg", "-y", "-f", "lavfi", "-i", "testsrc2=size=640x360:rate=30", "-frames:v", "1", "-c:v",
                 "libx264", "-profile:v", "main", "-x264-params", "slices=1:threads=1", "-f", "h264", str(path)])


class Server:
    def __init__(self, build, clip, rate):
        self.process = subprocess.Popen([build / "bench/blast_server", clip, str(rate)], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        self.url = self.process.stdout.readline().strip()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait()


def cpu_seconds(pid):
    """All threads of the process, in nanoseconds as the scheduler counts them."""
    total = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        total += int((task / "schedstat").read_text().split()[0])
    return total / 1e9


def memory_kb(pid):
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Private_Dirty:"):
            return int(line.split()[1])
    return 0


def threads(pid):
    return len(list(pathlib.Path(f"/proc/{pid}/task").iterdir()))


def measure(command, seconds, environment=None):
    """CPU seconds per second of play, private memory in KB, threads; None when the client did not last."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               stdin=subprocess.DEVNULL, env=environment)
    try:
        time.sleep(SETTLE)
        before, start = cpu_seconds(process.pid), time.monotonic()
        time.sleep(seconds)
        after, end = cpu_seconds(process.pid), time.monotonic()
        result = (after - before) / (end - start), memory_kb(process.pid), threads(process.pid)
        return result if process.poll() is None else None
    except (FileNotFoundError, ProcessLookupError):
        return None
    finally:
        process.kill()
        process.wait()


def clients(build, url, tcp, plugin):
    record = [build / "tools/virertsp/virertsp", "record", url, "--output", "/dev/null", "--config",
              "RTSP:TargetRTPBuffer=0"]
    transport = "tcp" if tcp else "udp"
    yield "bare loop", [build / "bench/bare_client", transport, url], None
    yield "virertsp", record + (["--tcp"] if tcp else []), None
    if plugin and not tcp:
        environment = dict(os.environ, GST_PLUGIN_PATH=str(plugin))
        yield "virertspsrc", ["gst-launch-1.0", "-q", "virertspsrc", f"location={url}", "rtp-buffer-size=0", "!",
                              "fakesink", "sync=false"], environment
    yield "rtspsrc", ["gst-launch-1.0", "-q", "rtspsrc", f"location={url}", f"protocols={transport}", "!",
                      "rtph264depay", "!", "fakesink", "sync=false"], None
    yield "ffmpeg", ["ffmpeg", "-nostdin", "-rtsp_transport", transport, "-i", url, "-c", "copy", "-f", "null", "-"], None


def compare(build, clip, rate, tcp, seconds, plugin):
    print(f"\n{rate} Mbit/s over {'TCP' if tcp else 'UDP'}")
    print(f"  {'':12} {'us/packet':>10} {'x bare':>8} {'private KB':>11} {'threads':>8}")
    packets = rate * 1e6 / 8 / PACKET_PAYLOAD
    bare = None
    with Server(build, clip, rate) as server:
        for name, command, environment in clients(build, server.url, tcp, plugin):
            result = measure(command, seconds, environment)
            if result is None:
                print(f"  {name:12} did not last")
                continue
            cost = result[0] / packets * 1e6
            bare = bare or cost
            print(f"  {name:12} {cost:10.2f} {cost / bare:8.2f} {result[1]:11} {result[2]:8}")
            sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, default=pathlib.Path("build/release"))
    parser.add_argument("--rates", default="8,40,100,400")
    parser.add_argument("--seconds", type=float, default=5)
    parser.add_argument("--plugin", type=pathlib.Path, help="folder of the GStreamer plugin, to compare the element too")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        clip = pathlib.Path(folder) / "picture.h264"
        make_clip(clip)
        for tcp in (False, True):
            for rate in arguments.rates.split(","):
                compare(arguments.build, clip, int(rate), tcp, arguments.seconds, arguments.plugin)


if __name__ == "__main__":
    main()
