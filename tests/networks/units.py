"""The access units that the tests serve. A unit is known by its number and the room there is for it, so that what
arrives can be compared byte by byte with what was served."""

import random

UNITS_PER_SECOND = 25
CLOCK = 90000
TICKS = CLOCK // UNITS_PER_SECOND

# Timestamps wrap within the first seconds.
FIRST_TIMESTAMP = 2**32 - 2 * CLOCK

HEADERS = 20 + 8 + 12  # IP, UDP, RTP
LARGEST_PAYLOAD = 1400 - 12
FEWEST_FRAGMENTS = 3

# No zeros: nothing in a unit looks like a start code.
POOL = random.Random(1).randbytes(1 << 20).replace(b"\0", b"\1")


def content(number, index, size):
    """So many bytes that tell what they are; most of them are found nowhere else."""
    name = b"%06d %d " % (number, index)
    rest = size - len(name)
    at = (number * 6151 + index * 1543) % (len(POOL) - rest)
    return name + POOL[at:at + rest]


def number_in(data, at):
    """The number in the content that begins there; -1 for anything else."""
    name = data[at:at + 6]
    return int(name) if name.isdigit() else -1


def number_of_timestamp(timestamp):
    return (timestamp - FIRST_TIMESTAMP) % 2**32 // TICKS


def cut(data, count):
    size = -(-len(data) // count)
    return [data[at:at + size] for at in range(0, len(data), size)]


class Stream:
    """Access units at a rate that includes all headers. Each has parts, which come whole or not at all."""

    def __init__(self, kbit_per_s, seconds):
        self.count = int(seconds * UNITS_PER_SECOND)
        self.room = kbit_per_s * 1000 // 8 // UNITS_PER_SECOND
        self.fragments = max(FEWEST_FRAGMENTS, -(-self.room // (LARGEST_PAYLOAD + HEADERS)))


class H264(Stream):
    """Units of a delimiter, information, a slice that takes most of the room, and a short slice."""

    ATTRIBUTES = ["rtpmap:96 H264/90000", "fmtp:96 packetization-mode=1;sprop-parameter-sets=Z0IACpZUBQHogA==,aM4xUg=="]
    PARAMETER_SETS = 2
    FIRST_SEQ = 65000  # wraps, too
    DELIMITER, INFORMATION, CLOSING_SLICE = 10, 20, 40

    def __init__(self, kbit_per_s, seconds):
        super().__init__(kbit_per_s, seconds)
        self.packets = self.fragments + 2
        self.slice = (self.room - self.packets * HEADERS - 2 * self.fragments - self.DELIMITER - self.INFORMATION - 5 -
                      self.CLOSING_SLICE)

    def parts(self, number):
        sizes = {9: self.DELIMITER, 6: self.INFORMATION, 5: self.slice, 1: self.CLOSING_SLICE}
        return [bytes([0x60 | kind]) + content(number, index, size - 1)
                for index, (kind, size) in enumerate(sizes.items())]

    def payloads(self, number):
        """One aggregate (STAP-A), the fragments (FU-A) of the long slice, and one single NAL unit."""
        delimiter, information, long_slice, closing = self.parts(number)
        yield b"\x78" + b"".join(len(unit).to_bytes(2, "big") + unit for unit in (delimiter, information))
        fragments = cut(long_slice[1:], self.fragments)
        for index, fragment in enumerate(fragments):
            flags = (0x80 if index == 0 else 0) | (0x40 if index == len(fragments) - 1 else 0)
            yield bytes([0x60 | 28, flags | long_slice[0] & 0x1F]) + fragment
        yield closing

    @staticmethod
    def split(sample):
        """The parts of what came out as one access unit: NAL units, each behind its length."""
        at = 0
        while at < len(sample):
            size = int.from_bytes(sample[at:at + 4], "big")
            yield sample[at + 4:at + 4 + size]
            at += 4 + size

    @staticmethod
    def number_of(part):
        return number_in(part, 1)


class MP4V(Stream):
    """Units of one frame each, which must come whole: MPEG-4 visual."""

    ATTRIBUTES = ["rtpmap:96 MP4V-ES/90000", "fmtp:96 profile-level-id=1"]
    FIRST_SEQ = 1000  # a frame across the wrap is always dropped
    START = b"\0\0\1\xB6"

    def __init__(self, kbit_per_s, seconds):
        super().__init__(kbit_per_s, seconds)
        self.packets = self.fragments
        self.frame = self.room - self.packets * HEADERS

    def parts(self, number):
        return [self.START + content(number, 0, self.frame - len(self.START))]

    def payloads(self, number):
        return cut(self.parts(number)[0], self.packets)

    @staticmethod
    def split(sample):
        yield sample

    @staticmethod
    def number_of(part):
        return number_in(part, 4)


FORMATS = {"H264": H264, "MP4V-ES": MP4V}
