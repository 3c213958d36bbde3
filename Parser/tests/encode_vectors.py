#!/usr/bin/env python3
"""Encodes short clips with ffmpeg and prints their configurations as rows of the test tables.

What a row expects comes from ffprobe, never from the parsers under test.
Usage: encode_vectors.py h264 > h264/EncodedVectors.inc
       encode_vectors.py mpeg4 > mpeg4/EncodedVectors.inc
"""
import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

PROFILES = {"Constrained Baseline": 66, "Baseline": 66, "Main": 77, "High": 100, "High 10": 110, "High 10 Intra": 110,
            "High 4:2:2": 122, "High 4:2:2 Intra": 122, "High 4:4:4 Predictive": 244, "High 4:4:4 Intra": 244}

# name, size, rate, encoder arguments
H264 = [
    ("baseline", "176x144", "25", "-profile:v baseline"),
    ("baseline one macroblock", "16x16", "25", "-profile:v baseline"),
    ("main", "352x288", "25", "-profile:v main"),
    ("main, bottom field first", "720x576", "25", "-profile:v main -x264-params bff=1"),
    ("main, top field first, 1080i", "1920x1080", "25", "-profile:v main -x264-params tff=1"),
    ("main, progressive coded as fields", "640x480", "25", "-profile:v main -x264-params fake-interlaced=1"),
    ("high", "640x480", "30000/1001", "-profile:v high"),
    ("high, cropped 1080p", "1920x1080", "50", "-profile:v high"),
    ("high, cropped on all counts", "178x146", "25", "-profile:v high"),
    ("high, 4096x2304", "4096x2304", "25", "-profile:v high -preset ultrafast -x264-params 8x8dct=1"),
    ("high, CBR with NAL HRD", "720x576", "25",
     "-profile:v high -b:v 800k -maxrate 800k -bufsize 400k -x264-params nal-hrd=cbr:pic-struct=1"),
    ("high, VBR with NAL HRD, fields", "1920x1080", "25",
     "-profile:v high -b:v 4M -maxrate 6M -bufsize 4M -x264-params nal-hrd=vbr:tff=1"),
    ("high, all of the picture aspects", "320x240", "25",
     "-profile:v high -x264-params sar=37/35:overscan=crop:videoformat=pal:fullrange=on:colorprim=bt709:"
     "transfer=bt709:colormatrix=bt709:chromaloc=3"),
    ("high, own scaling lists", "320x240", "25",
     "-profile:v high -x264-params cqm4=17,18,19,20,21,22,23,24,25,26,27,28,29,30,31,32:cqm8="
     + ",".join(str(16 + lIdx) for lIdx in range(64))),
    ("high, scaling lists of the standard", "320x240", "25", "-profile:v high -x264-params cqm=jvt"),
    ("high, weighted prediction, 16 references", "160x120", "25",
     "-profile:v high -refs 16 -bf 3 -x264-params weightp=2:b-pyramid=normal"),
    ("high 10", "640x360", "25", "-pix_fmt yuv420p10le -profile:v high10"),
    ("high 10 intra", "640x360", "25", "-pix_fmt yuv420p10le -profile:v high10 -x264-params keyint=1"),
    ("high 4:2:2", "640x360", "25", "-pix_fmt yuv422p -profile:v high422"),
    ("high 4:2:2, 10 bits, fields", "1920x1080", "25", "-pix_fmt yuv422p10le -profile:v high422 -x264-params tff=1"),
    ("high 4:4:4", "640x360", "25", "-pix_fmt yuv444p -profile:v high444"),
    ("high 4:4:4, scaling lists of the standard", "320x240", "25",
     "-pix_fmt yuv444p -profile:v high444 -x264-params cqm=jvt"),
    ("high 4:4:4, lossless", "320x240", "25", "-pix_fmt yuv444p -profile:v high444 -qp 0"),
    ("high 4:4:4, 10 bits", "320x240", "25", "-pix_fmt yuv444p10le -profile:v high444"),
    ("monochrome", "320x240", "25", "-pix_fmt gray -profile:v high"),
]

MPEG4 = [
    ("simple", "176x144", "25", "-c:v mpeg4"),
    ("simple, 30000/1001", "352x288", "30000/1001", "-c:v mpeg4"),
    ("simple, 1 Hz", "640x480", "1", "-c:v mpeg4"),
    ("simple, 1080p", "1920x1080", "25", "-c:v mpeg4"),
    ("simple, odd sides", "177x143", "25", "-c:v mpeg4"),
    ("simple, 8176 wide", "8176x16", "25", "-c:v mpeg4"),
    ("simple, extended aspect", "320x240", "25", "-c:v mpeg4 -aspect 37:20"),
    ("simple, known aspect", "352x288", "25", "-c:v mpeg4 -aspect 16:9"),
    ("simple, buffer model", "320x240", "25", "-c:v mpeg4 -b:v 400k -maxrate 400k -bufsize 400k"),
    ("advanced simple, B-VOPs", "320x240", "25", "-c:v mpeg4 -bf 2"),
    ("advanced simple, quarter sample", "320x240", "25", "-c:v mpeg4 -flags +qpel"),
    ("simple, fields", "720x576", "25", "-c:v mpeg4 -flags +ildct+ilme"),
    ("simple, MPEG matrices", "320x240", "25", "-c:v mpeg4 -mpeg_quant 1"),
    ("another encoder", "320x240", "25", "-c:v libxvid"),
    ("another encoder, B-VOPs", "352x288", "30000/1001", "-c:v libxvid -bf 2"),
]


def run(*aArgs):
    return subprocess.run(aArgs, check=True, capture_output=True).stdout


def encode(aSize, aRate, aArgs, aFile, aFormat):
    run("ffmpeg", "-loglevel", "error", "-y", "-f", "lavfi", "-i", f"testsrc=size={aSize}:rate={aRate}",
        "-frames:v", "3", *([] if "-pix_fmt" in aArgs else ["-pix_fmt", "yuv420p"]), *aArgs.split(), "-f", aFormat,
        str(aFile))
    lProbe = json.loads(run("ffprobe", "-v", "error", "-show_streams", "-of", "json", str(aFile)))
    return aFile.read_bytes(), lProbe["streams"][0]


def up(aValue, aStep):
    return (aValue + aStep - 1) // aStep * aStep


def rows(aText):
    """A string literal of hexadecimal digits, cut to lines."""
    lLines = re.findall(".{1,96}", aText.hex())
    return "\n     ".join(f'"{lLine}"' for lLine in lLines)


def h264(aFile):
    for lName, lSize, lRate, lArgs in H264:
        lBytes, lStream = encode(lSize, lRate, "-c:v libx264 " + lArgs, aFile, "h264")
        lUnits = [lUnit.rstrip(b"\0") for lUnit in lBytes.split(b"\0\0\1")[1:]]
        lSps = next(lUnit for lUnit in lUnits if lUnit[0] & 31 == 7)
        lPps = next(lUnit for lUnit in lUnits if lUnit[0] & 31 == 8)
        # A map unit of a stream that may hold fields covers two rows of macroblocks.
        lFields = any(lWord in lArgs for lWord in ("tff", "bff", "fake-interlaced"))
        lHeight = up(lStream["height"], 32) // 2 if lFields else up(lStream["height"], 16)
        print(f'    // {lSize}: {lArgs}' if len(lArgs) < 90 else f'    // {lSize}')
        print(f'    {{"{lName}",\n     {rows(lSps)},\n     {rows(lPps)},\n     '
              f'{up(lStream["width"], 16)}, {lHeight}, {PROFILES[lStream["profile"]]}, {lStream["level"]}}},')


def mpeg4(aFile):
    for lName, lSize, lRate, lArgs in MPEG4:
        lBytes, lStream = encode(lSize, lRate, lArgs, aFile, "m4v")
        # The configuration is all in front of the first group or picture.
        lEnd = min(lPos for lPos in (lBytes.find(b"\0\0\1\xb3"), lBytes.find(b"\0\0\1\xb6")) if lPos >= 0)
        print(f'    // {lSize} at {lRate}: {lArgs}')
        print(f'    {{"{lName}",\n     {rows(lBytes[:lEnd])},\n     {lStream["width"]}, {lStream["height"]}}},')


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as lDir:
        {"h264": h264, "mpeg4": mpeg4}[sys.argv[1]](Path(lDir) / "clip")
