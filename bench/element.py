#!/usr/bin/env python3
"""What the element costs when there are many in one process, and how soon its first buffer comes.

    bench/element.py [--build DIR] [--elements 1,10,50] [--rate 1] [--seconds 5] [--starts 10]
"""
import argparse
import os
import pathlib
import re
import statistics
import subprocess
import tempfile

import compare

def environment(build, **more):
    return dict(os.environ, GST_PLUGIN_PATH=str(build / "GStreamer/1.0"), **more)


def pipeline(url, elements):
    one = ["virertspsrc", f"location={url}", "rtp-buffer-size=0", "!", "fakesink", "sync=false", "async=false"]
    return ["gst-launch-1.0", "-q"] + one * elements


def many(server, build, elements, seconds):
    result = compare.measure(server, pipeline(server.url, elements), seconds, environment(build))
    if result is None:
        print(f"  {elements:8}  did not last")
        return
    cost, lost, memory, threads = result
    print(f"  {elements:8} {cost:10.2f} {lost:8.2f} {memory / elements:15.0f} {threads / elements:18.2f}")


def milliseconds(line):
    hours, minutes, seconds = re.match(r"(\d+):(\d+):([\d.]+)", line).groups()
    return (int(hours) * 3600 + int(minutes) * 60 + float(seconds)) * 1000


def start(build, url):
    """Milliseconds from the answer to PLAY to each step of one start."""
    log = environment(build, GST_DEBUG="virertsp*:6,basesink:6", GST_DEBUG_NO_COLOR="1")
    process = subprocess.Popen(pipeline(url, 1), env=log, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    times = {}
    answers = 0
    for line in process.stderr:
        if "Got RTSP response" in line:
            answers += 1
            if answers == 3:  # DESCRIBE, SETUP, PLAY
                times["play"] = milliseconds(line)
        elif "Paused -> Playing" in line:
            times["playing"] = milliseconds(line)
        elif "gst_base_sink_chain" in line or "got times start" in line:
            times["buffer"] = milliseconds(line)
            break
    process.kill()
    process.wait()
    return times["playing"] - times["play"], times["buffer"] - times["play"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", type=pathlib.Path, default=pathlib.Path("build/release"))
    parser.add_argument("--elements", default="1,10,50")
    parser.add_argument("--rate", type=float, default=1, help="Mbit/s of each element")
    parser.add_argument("--seconds", type=float, default=5)
    parser.add_argument("--starts", type=int, default=10)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        clip = pathlib.Path(folder) / "picture.h264"
        compare.make_clip(clip)
        with compare.Server(arguments.build, clip, arguments.rate) as server:
            print(f"{arguments.rate} Mbit/s over UDP for each element, all in one process")
            print(f"  {'elements':>8} {'us/packet':>10} {'lost %':>8} {'private KB each':>15} {'threads each':>18}")
            for elements in arguments.elements.split(","):
                many(server, arguments.build, int(elements), arguments.seconds)
            starts = [start(arguments.build, server.url) for _ in range(arguments.starts)]
            playing, buffer = (statistics.median(column) for column in zip(*starts))
            print(f"\nFrom the answer to PLAY, median of {arguments.starts}: PLAYING is asked for after {playing:.1f} ms, "
                  f"the first buffer is in the sink after {buffer:.1f} ms.")


if __name__ == "__main__":
    main()
