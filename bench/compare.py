#!/usr/bin/env python3
"""Compares what receiving costs: CPU time per packet, loss and memory of whole processes in their steady state, against
the same local server. The clients take turns, as many rounds as asked for; what is shown is the median of the rounds.
Absolute times depend on the machine; the ratios within one run are what counts.

    bench/compare.py [--build DIR] [--rates 8,40,100,400] [--transports udp,tcp] [--seconds 4] [--rounds 3]
                     [--clients NAME,...] [--add NAME=COMMAND...] [--realtime]

With --realtime, as root, server and clients get their processor before all other programs: what is lost then is lost by
the client, not by the machine's other work.

{url}, {transport}, {build} and {gathered} (the megabytes of 3 s) in a command are replaced. OPENRTSP names the program
openRTSP, which is left out otherwise.
"""
import argparse
import os
import pathlib
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PACKET = 1400  # bytes
GATHERED = 3  # seconds, before players play
WARM_UP = 4.5  # seconds

CLIENTS = {
    "bare loop": "{build}/bench/bare_client {transport} {url}",
    "copying loop": "{build}/bench/bare_client {transport} {url} {gathered}",
    "virertsp": "{build}/tools/virertsp/virertsp record {url} --output /dev/null --transport {transport}",
    "virertspsrc": "gst-launch-1.0 -q --gst-plugin-path={build}/GStreamer/1.0 virertspsrc location={url} "
                   "transports={transport} ! fakesink sync=false",
    "rtspsrc": "gst-launch-1.0 -q rtspsrc location={url} protocols={transport} ! rtph264depay ! fakesink sync=false",
    "ffmpeg": "ffmpeg -nostdin -v quiet -rtsp_transport {transport} -i {url} -c copy -f null -",
    "openRTSP": os.environ.get("OPENRTSP", "openRTSP") + " -V -v -b 2000000 {interleaved} {url}",
}


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

    def packets(self):
        """So many it has sent."""
        self.process.stdin.write("\n")
        self.process.stdin.flush()
        return int(self.process.stdout.readline())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait()


def cpu_seconds(pid):
    """Of all threads of the process."""
    return time.clock_gettime((~pid << 3) | 2)


def dropped():
    """Datagrams that found no room in the buffer of a socket, on the whole machine."""
    names, values = (line.split() for line in pathlib.Path("/proc/net/snmp").read_text().splitlines()
                     if line.startswith("Udp:"))
    return int(values[names.index("RcvbufErrors")])


def memory_kb(pid):
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Private_Dirty:"):
            return int(line.split()[1])
    return 0


def threads(pid):
    return len(list(pathlib.Path(f"/proc/{pid}/task").iterdir()))


def measure(server, command, seconds, environment=None):
    """CPU microseconds per packet that was not dropped, the share that was, from the start on, private memory in KB and
    threads; None when the client did not last."""
    start, lost = server.packets(), dropped()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                               stdin=subprocess.DEVNULL, env=environment)
    try:
        time.sleep(WARM_UP)
        before, warm, warm_lost = cpu_seconds(process.pid), server.packets(), dropped()
        time.sleep(seconds)
        after, end, end_lost = cpu_seconds(process.pid), server.packets(), dropped()
        received = end - warm - (end_lost - warm_lost)
        if process.poll() is not None or received <= 0:
            return None
        return ((after - before) / received * 1e6, 100 * (end_lost - lost) / (end - start), memory_kb(process.pid),
                threads(process.pid))
    except (FileNotFoundError, ProcessLookupError, OSError):
        return None
    finally:
        process.kill()
        process.wait()


def filled(command, **values):
    values["interleaved"] = "-t" if values["transport"] == "tcp" else ""
    return shlex.split(command.format(**values))


def compare(arguments, clients, clip, rate, transport):
    print(f"\n{rate} Mbit/s over {transport.upper()}")
    print(f"  {'':12} {'us/packet':>10} {'x bare':>8} {'lost %':>8} {'private KB':>11} {'threads':>8}")
    runs = {name: [] for name in clients}
    with Server(arguments.build, clip, rate) as server:
        for _ in range(arguments.rounds):
            for name, command in clients.items():
                command = filled(command, url=server.url, transport=transport, build=arguments.build,
                                 gathered=round(rate * GATHERED / 8))
                if shutil.which(command[0]):
                    runs[name].append(measure(server, command, arguments.seconds))
    bare = None
    for name, results in runs.items():
        results = [result for result in results if result]
        if not results:
            print(f"  {name:12} did not last, or is not there")
            continue
        cost, lost, memory, count = (statistics.median(column) for column in zip(*results))
        bare = bare or cost
        print(f"  {name:12} {cost:10.2f} {cost / bare:8.2f} {lost:8.2f} {memory:11.0f} {count:8.0f}")
    sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, default=pathlib.Path("build/release"))
    parser.add_argument("--rates", default="8,40,100,400")
    parser.add_argument("--transports", default="udp,tcp")
    parser.add_argument("--seconds", type=float, default=4)
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--clients", default=",".join(CLIENTS))
    parser.add_argument("--add", action="append", default=[], metavar="NAME=COMMAND")
    parser.add_argument("--realtime", action="store_true")
    arguments = parser.parse_args()
    if arguments.realtime:
        os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(10))
    clients = {name: CLIENTS[name] for name in arguments.clients.split(",")}
    clients.update(addition.split("=", 1) for addition in arguments.add)
    with tempfile.TemporaryDirectory() as folder:
        clip = pathlib.Path(folder) / "picture.h264"
        make_clip(clip)
        for transport in arguments.transports.split(","):
            for rate in arguments.rates.split(","):
                compare(arguments, clients, clip, float(rate), transport)


if __name__ == "__main__":
    main()
