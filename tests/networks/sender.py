"""An RTSP server with one live video track made of known access units.

    sender.py FORMAT KBIT_PER_S SECONDS      prints its URL; ends when its standard input does

The rate includes the headers of IP, UDP and RTP. The packets of an access unit are spread over its time; what could
not be sent in time follows as fast as it goes.
"""

import os
import socket
import struct
import sys
import threading
import time

import units

ADDRESS = ("10.0.0.1", 554)
SSRC = 0x1A2B3C4D
NTP_EPOCH = 2208988800
GOODBYES = 5  # over UDP each of them may be lost

DESCRIPTION = """v=0\r
o=- 1 1 IN IP4 10.0.0.1\r
s=Known units\r
c=IN IP4 0.0.0.0\r
t=0 0\r
a=range:npt=0-\r
m=video 0 RTP/AVP 96\r
a=control:track\r
"""


class Datagrams:
    """Media over a pair of UDP ports."""

    goodbyes = GOODBYES

    def __init__(self, address, port):
        self.rtp, self.rtcp = (socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(2))
        self.rtp.connect((address, port))
        self.rtcp.connect((address, port + 1))

    def send(self, packet):
        self.rtp.send(packet)

    def send_report(self, packet):
        self.rtcp.send(packet)


class Frames:
    """Media within the RTSP connection."""

    goodbyes = 1

    def __init__(self, client):
        self.client = client

    def send(self, packet, channel=0):
        self.client.send(struct.pack(">cBH", b"$", channel, len(packet)) + packet)

    def send_report(self, packet):
        self.send(packet, 1)


class Play(threading.Thread):
    """Sends the stream once."""

    def __init__(self, stream, sink):
        super().__init__(daemon=True)
        self.stream = stream
        self.sink = sink
        self.seq = stream.FIRST_SEQ
        self.timestamp = units.FIRST_TIMESTAMP
        self.sent = 0

    def run(self):
        try:
            self.send_units()
            for _ in range(self.sink.goodbyes):
                self.sink.send_report(self.report() + struct.pack(">BBHI", 0x81, 203, 1, SSRC))
                time.sleep(0.1)
        except OSError:
            pass  # the client has left

    def send_units(self):
        start = time.monotonic()
        for number in range(self.stream.count):
            self.timestamp = (units.FIRST_TIMESTAMP + number * units.TICKS) % 2**32
            if number % units.UNITS_PER_SECOND == 0:
                self.sink.send_report(self.report())
            for index, payload in enumerate(self.stream.payloads(number)):
                due = start + (number + index / self.stream.packets) / units.UNITS_PER_SECOND
                wait = due - time.monotonic()
                # Short ones are not worth their cost.
                if wait > 0.001:
                    time.sleep(wait)
                self.sink.send(self.packet(payload, index == self.stream.packets - 1))

    def packet(self, payload, is_last):
        header = struct.pack(">BBHII", 0x80, 96 | (0x80 if is_last else 0), self.seq, self.timestamp, SSRC)
        self.seq = (self.seq + 1) % 2**16
        self.sent += 1
        return header + payload

    def report(self):
        seconds, fraction = divmod(time.time() + NTP_EPOCH, 1)
        return struct.pack(">BBHIIIIII", 0x80, 200, 6, SSRC, int(seconds), int(fraction * 2**32), self.timestamp,
                           self.sent, 0)


class Client(threading.Thread):
    def __init__(self, connection, address, stream):
        super().__init__(daemon=True)
        self.connection = connection
        self.connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.address = address
        self.stream = stream
        self.lock = threading.Lock()
        self.sink = None

    def send(self, data):
        """Called by the thread that plays, too."""
        with self.lock:
            self.connection.sendall(data)

    def run(self):
        try:
            with self.connection, self.connection.makefile("rb") as source:
                while self.serve(source):
                    pass
        except OSError:
            pass  # the client has left

    def serve(self, source):
        """A request, or a receiver report between requests."""
        line = source.readline() if source.peek(1)[:1] != b"$" else self.skip_frame(source)
        if not line:
            return False
        if line.endswith(b"\r\n"):
            headers = {}
            while (field := source.readline().strip()):
                name, _, value = field.decode().partition(":")
                headers[name.strip().lower()] = value.strip()
            self.answer(line.decode().split()[0], headers)
        return True

    def skip_frame(self, source):
        size = struct.unpack(">cBH", source.read(4))[2]
        return source.read(size)

    def answer(self, method, headers):
        fields, body = ["Session: 1"], ""
        if method == "DESCRIBE":
            fields, body = ["Content-Type: application/sdp", "Content-Base: rtsp://10.0.0.1/known/"], self.description()
        elif method == "SETUP":
            fields.append("Transport: " + self.set_up(headers["transport"]))
        elif method == "PLAY":
            fields += ["Range: npt=0-", f"RTP-Info: url=rtsp://10.0.0.1/known/track;seq={self.stream.FIRST_SEQ};"
                       f"rtptime={units.FIRST_TIMESTAMP}"]
        if body:
            fields.append(f"Content-Length: {len(body)}")
        self.send("\r\n".join(["RTSP/1.0 200 OK", f"CSeq: {headers['cseq']}", *fields, "", body]).encode())
        if method == "PLAY":
            Play(self.stream, self.sink).start()

    def description(self):
        return DESCRIPTION + "".join(f"a={attribute}\r\n" for attribute in self.stream.ATTRIBUTES)

    def set_up(self, transport):
        if "TCP" in transport:
            self.sink = Frames(self)
            return "RTP/AVP/TCP;unicast;interleaved=0-1"
        port = int(transport.partition("client_port=")[2].partition("-")[0])
        self.sink = Datagrams(self.address, port)
        server_port = self.sink.rtp.getsockname()[1]
        return f"{transport};server_port={server_port}-{server_port + 1};ssrc={SSRC:08X}"


def accept_all(listener, stream):
    while True:
        connection, (address, _) = listener.accept()
        Client(connection, address, stream).start()


def main():
    stream = units.FORMATS[sys.argv[1]](int(sys.argv[2]), float(sys.argv[3]))
    listener = socket.create_server(ADDRESS)
    threading.Thread(target=accept_all, args=(listener, stream), daemon=True).start()
    print("rtsp://10.0.0.1/known", flush=True)
    sys.stdin.read()
    os._exit(0)  # whatever the threads are waiting for


if __name__ == "__main__":
    main()
