#!/usr/bin/env python3
"""Checks that sources include only what lies in a layer below their own, as ARCHITECTURE.md has the layers."""

import os
import re
import subprocess
import sys

# A folder, and what its files may include beside the files of the same folder. The longest name that fits counts.
VALUES = ["Player/include/Player"]
INSIDE = VALUES + ["Player/src"]  # The library's own helpers: byte order, throwing.
ALLOWED = {
    "Player/include/Player": [],
    "Player/src": VALUES + ["Player/src/MediaSessions"],  # The handler makes the session.
    "Player/src/Crypto": INSIDE,
    "Player/src/SDP": INSIDE,
    "Player/src/Packets": INSIDE,
    "Player/src/Sockets": INSIDE,
    "Player/src/Processors": INSIDE + ["Player/src/Packets"],
    "Player/src/RTP": INSIDE + ["Player/src/Packets"],
    "Player/src/RTP/Transports": INSIDE + ["Player/src/RTP", "Player/src/Packets", "Player/src/Sockets"],
    "Player/src/MediaSessions/RTSP/Headers": INSIDE + ["Player/src/Crypto"],
    "Player/src/MediaSessions": INSIDE + ["Player/src/MediaSessions/RTSP/Headers", "Player/src/Crypto",
                                          "Player/src/SDP", "Player/src/Sockets", "Player/src/Processors",
                                          "Player/src/RTP", "Player/src/RTP/Transports"],
    "Parser/include": VALUES,
    "Parser": VALUES + ["Parser/include"],
    "GStreamer/gst1": [],
    "GStreamer/gst010": [],
    "GStreamer/src/debug": VALUES,
    "GStreamer/src/threads": VALUES + ["GStreamer/src/debug"],
    "GStreamer/src/settings": VALUES + ["GStreamer/src/threads"],
    "GStreamer/src/messages": VALUES + ["GStreamer/src/debug", "GStreamer/src/threads", "GStreamer/src/settings"],
    "GStreamer/src/streams": VALUES + ["Parser/include", "GStreamer/src/debug", "GStreamer/src/threads",
                                       "GStreamer/src/settings"],
    "GStreamer/src/source": VALUES + ["GStreamer/src/debug", "GStreamer/src/threads", "GStreamer/src/settings",
                                      "GStreamer/src/messages", "GStreamer/src/streams"],
    "GStreamer/src": ["GStreamer/src/threads", "GStreamer/src/settings", "GStreamer/src/source"],
    "tools/virertsp": VALUES + ["Parser/include"],
}
SEARCHED = ["Player/include", "Player/src", "Parser/include", "Parser/h264/src", "Parser/mpeg4/src", "GStreamer/src",
            "GStreamer/gst1/include", "GStreamer/gst010/include", "tools/virertsp"]
# Files of the root of Player/src that are helpers; the others there are the player, the top of the library.
HELPERS = ["Base64.hpp", "BigEndian.hpp", "Throw.hpp"]


def layer(path):
    return max((name for name in ALLOWED if path.startswith(name + "/")), key=len, default=None)


def found(name, includer, files):
    for folder in [os.path.dirname(includer), *SEARCHED]:
        path = os.path.normpath(os.path.join(folder, name))
        if path in files:
            return path
    return None


def complaint(includer, included):
    source, target = layer(includer), layer(included)
    if source == target:
        return None
    if target not in ALLOWED[source]:
        return f"{includer} includes {included}: {source} lies below {target}, or beside it"
    if target == "Player/src" and os.path.basename(included) not in HELPERS:
        return f"{includer} includes {included}, which is no helper"
    return None


def main():
    listed = subprocess.run(["git", "ls-files", "*.cpp", "*.hpp"], capture_output=True, text=True, check=True).stdout
    files = {path for path in listed.split() if "/tests/" not in path and os.path.exists(path)}
    complaints = []
    checked = 0
    for path in sorted(files):
        if layer(path) is None:
            continue
        with open(path, encoding="utf-8") as source:
            names = re.findall(r'^#include "([^"]+)"', source.read(), re.M)
        for name in names:
            included = found(name, path, files)
            if included is None:
                complaints.append(f"{path} includes {name}, which lies outside of all layers")
            elif layer(included) is not None:
                checked += 1
                complaints.append(complaint(path, included))
    complaints = [line for line in complaints if line]
    print("\n".join(complaints) if complaints else f"{checked} includes point downwards.")
    return 1 if complaints or not checked else 0


if __name__ == "__main__":
    os.chdir(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    sys.exit(main())
