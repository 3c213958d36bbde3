"""Plays known access units over a bad link and tells what became of them."""

import collections
import contextlib
import dataclasses
import itertools
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

import units
from programs import program

LINK = os.environ["LINK"]
RECEIVER = os.environ["RECEIVER"]
VIRERTSP = os.environ["VIRERTSP"]
HERE = pathlib.Path(__file__).parent

# The tests' own bound: nothing here may hang.
PATIENCE = 300
FORBIDDEN = 77

# Play times are cut to RTP's ticks and once more on their way.
TICK = 1.2 / units.CLOCK

# How access units are taken out of the library: each in its turn, as a player's screen does; all that is there, at
# once; by the program that records.
IN_TURN, AT_ONCE, RECORDED = "in turn", "at once", "recorded"


@dataclasses.dataclass
class Condition:
    """A row of the table: a stream and the link it has to pass."""
    name: str
    link: dict = dataclasses.field(default_factory=dict)
    transport: str = "UDP"
    taken: str = IN_TURN
    media: str = "H264"
    kbit_per_s: int = 1000
    seconds: float = 8
    buffer: int = 3  # seconds of media to gather before playing


@contextlib.contextmanager
def link(log, conditions):
    """Makes the link; gives how commands are started at the server's and at the client's end."""
    options = [f"{name}={value}" for name, value in conditions.items()]
    with program(LINK, str(log), *options, stderr=subprocess.PIPE) as (line, process):
        if not line:
            words = process.stderr.read().strip()
            if process.wait() == FORBIDDEN:
                raise unittest.SkipTest(f"this machine forbids what the tests need (root, namespaces, TUN): {words}")
            raise RuntimeError(words)
        yield [["nsenter", f"--net={path}"] for path in line.split()]


@contextlib.contextmanager
def served(condition, log):
    """Makes the link and serves the stream at its far end; gives the URL and how the client is started."""
    with link(log, condition.link) as (at_server, at_client):
        with program(*at_server, sys.executable, str(HERE / "sender.py"), condition.media, str(condition.kbit_per_s),
                     str(condition.seconds), stderr=subprocess.PIPE) as (url, process):
            if not url:
                raise RuntimeError(process.stderr.read())
            yield url, at_client


def overruns(at_client):
    """Datagrams that arrived and found the socket's buffer full."""
    table = subprocess.run([*at_client, "cat", "/proc/net/snmp"], check=True, capture_output=True, text=True).stdout
    names, values = (line.split() for line in table.splitlines() if line.startswith("Udp:"))
    return int(values[names.index("RcvbufErrors")])


@dataclasses.dataclass
class Sample:
    """What came out of the library as one access unit; times in seconds."""
    arrival: float
    play_time: float
    data: bytes


def read_samples(path):
    with path.open("rb") as file:
        while (line := file.readline()):
            arrival, play_time, size = line.split()
            yield Sample(int(arrival) / 1e9, int(play_time) / 1e9, file.read(int(size)))


def read_recording(path):
    """The access units in a file of the recording program, without times. The description's parameter sets come
    first."""
    nals = path.read_bytes().split(b"\0\0\0\1")[1 + units.H264.PARAMETER_SETS:]
    for _, group in itertools.groupby(nals, units.H264.number_of):
        yield Sample(None, None, b"".join(len(nal).to_bytes(4, "big") + nal for nal in group))


class Outcome:
    """What became of each access unit served."""

    def __init__(self, condition, samples, log, overrun):
        self.condition = condition
        self.overrun = overrun
        self.stream = units.FORMATS[condition.media](condition.kbit_per_s, condition.seconds)
        self.delivered = collections.defaultdict(list)
        self.order = []
        self.corrupt = self.mistimed = self.late = 0
        self.latest = 0.0
        for sample in samples:
            self.take(sample)
        self.read_log(log)
        whole = tuple(range(len(self.stream.parts(0))))
        self.complete = {number for number, samples in self.delivered.items() if samples == [whole]}
        self.lost = set(range(self.stream.count)) - self.delivered.keys()
        self.partial = {number for number, samples in self.delivered.items() if set(sum(samples, ())) < set(whole)}
        # Everything is there, some of it twice or in another order.
        self.repeated = self.delivered.keys() - self.complete - self.partial

    def take(self, sample):
        """A sample must be made of whole parts of one access unit, as they were served."""
        parts = list(self.stream.split(sample.data))
        number = self.stream.number_of(parts[0])
        served = self.stream.parts(number) if number in range(self.stream.count) else []
        if any(part not in served for part in parts):
            self.corrupt += 1
            return
        if not self.order:
            self.first, self.first_number = sample, number
        self.order.append(number)
        self.delivered[number].append(tuple(served.index(part) for part in parts))
        if sample.arrival is not None:
            self.measure(sample, number)

    def measure(self, sample, number):
        """A player shows the first unit when it comes; from then on each has its turn."""
        played = sample.play_time - self.first.play_time
        if abs(played - (number - self.first_number) / units.UNITS_PER_SECOND) > TICK:
            self.mistimed += 1
        lateness = sample.arrival - self.first.arrival - played
        self.latest = max(self.latest, lateness)
        # The receiver looks every few milliseconds; nobody sees a picture that is late by less than its time.
        self.late += lateness > 1 / units.UNITS_PER_SECOND

    def read_log(self, log):
        """What the link did to packets, and to which units."""
        self.fates = collections.Counter()
        self.touched = collections.defaultdict(set)
        for line in log.read_text().splitlines():
            fate, _, timestamp = line.split()
            self.fates[fate] += 1
            self.touched[fate].add(units.number_of_timestamp(int(timestamp)))

    @property
    def harmed(self):
        """The units that the link has spoilt: all others must be complete."""
        if self.condition.taken == AT_ONCE:
            # What has been handed out can't be put in order any more.
            return set().union(*self.touched.values())
        # While the first packet waits for play to begin, a copy of it counts as a packet of its own.
        return self.touched["lost"] | (self.touched["copied"] & {0})

    @property
    def packets(self):
        return self.stream.count * self.stream.packets

    HEADING = ("| link | media | over | taken | kbit/s | packets lost | units | complete | in part | repeated | lost "
               "| corrupt | late | latest, s |\n" + "|---" * 14 + "|")

    def row(self):
        condition = self.condition
        # What TCP lost came again.
        lost = f"{100 * self.fates['lost'] / self.packets:.1f} %" if condition.transport == "UDP" else "-"
        if self.overrun:
            lost += f" + {self.overrun} overrun"
        late = [self.late, f"{self.latest:.1f}"] if condition.taken != RECORDED else ["-", "-"]
        cells = [condition.name, condition.media, condition.transport, condition.taken, condition.kbit_per_s, lost,
                 self.stream.count, len(self.complete), len(self.partial), len(self.repeated), len(self.lost),
                 self.corrupt, *late]
        return f"| {' | '.join(map(str, cells))} |"


def client(condition, url, folder):
    """The command that takes the stream, and what reads the samples it has left."""
    buffer = f"RTSP:TargetRTPBuffer={condition.buffer}"
    if condition.taken == RECORDED:
        tcp = ["--tcp"] if condition.transport == "TCP" else []
        return ([VIRERTSP, "record", url, "--output", str(folder), *tcp, "--config", buffer],
                lambda: read_recording(folder / "track0.h264"))
    samples = folder / "samples"
    return ([RECEIVER, str(samples), "paced" if condition.taken == IN_TURN else "greedy", url, buffer,
             f"RTSP:UseInterleavedRTP={int(condition.transport == 'TCP')}"], lambda: read_samples(samples))


def play(condition):
    """Plays the condition's stream over its link to the end and gives the outcome."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        log = folder / "log"
        with served(condition, log) as (url, at_client):
            command, read = client(condition, url, folder)
            result = subprocess.run([*at_client, *command], capture_output=True, text=True, timeout=PATIENCE)
            overrun = overruns(at_client)
        if result.returncode:
            raise AssertionError(f"{condition.name}, {condition.transport}: {result.stderr}")
        return Outcome(condition, read(), log, overrun)
