"""Every byte that the classic profile sends to a real server, as it always has."""

import contextlib
import pathlib
import re
import socket
import tempfile
import threading
import unittest

import element
import media

REQUESTS = pathlib.Path(__file__).with_name("classic_requests.txt")


class Recorder:
    """Stands between a client and a server, and keeps what the client says."""

    def __init__(self, url):
        _, self.host, path = re.match(r"(rtsp)://([^/]+)(.*)", url).groups()
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.url = f"rtsp://127.0.0.1:{self.listener.getsockname()[1]}{path}"
        self.sent = b""
        self.thread = threading.Thread(target=self.relay)
        self.thread.start()

    def relay(self):
        client, _ = self.listener.accept()
        server = socket.create_connection(("127.0.0.1", int(self.host.split(":")[1])))
        back = threading.Thread(target=self.copy, args=(server, client, lambda data: None))
        back.start()
        self.copy(client, server, self.keep)
        back.join()
        client.close()
        server.close()

    def keep(self, data):
        self.sent += data

    @staticmethod
    def copy(source, sink, note):
        with contextlib.suppress(OSError):
            while data := source.recv(65536):
                note(data)
                sink.sendall(data)
        with contextlib.suppress(OSError):
            sink.shutdown(socket.SHUT_WR)

    def requests(self):
        """What was said, without interleaved reports, and with names in the place of what differs each time."""
        self.thread.join(media.PATIENCE)
        self.listener.close()
        data = self.sent
        text = b""
        while data:
            if data[:1] == b"$":
                data = data[4 + int.from_bytes(data[2:4], "big"):]
            else:
                end = data.index(b"\r\n\r\n") + 4
                text += data[:end]
                data = data[end:]
        text = text.decode().replace(self.url.split("/")[2], "HOST")
        text = re.sub(r"client_port=(\d+)-(\d+)", lambda ports: f"client_port=P-P+{int(ports[2]) - int(ports[1])}", text)
        return re.sub(r"Session: \S+", "Session: S", text)


class ClassicRequestsTest(unittest.TestCase):
    maxDiff = None

    def assert_said(self, name, play, *served):
        with media.server("--file", str(media.clip(1)), *served) as url, tempfile.TemporaryDirectory() as folder:
            recorder = Recorder(url)
            play(recorder.url, pathlib.Path(folder) / "out")
            said = recorder.requests()
        kept = re.search(rf"^== {name}\n(.*?)(?=^== |\Z)", REQUESTS.read_text(), re.DOTALL | re.MULTILINE)[1]
        self.assertNotIn("\n", said.replace("\r\n", ""))
        self.assertEqual(kept, said.replace("\r\n", "\n"))

    def record(self, *options):
        def play(url, folder):
            result = media.record(url, folder, "--classic", *options)
            self.assertEqual((0, ""), (result.returncode, result.stderr))
        return play

    def test_udp(self):
        self.assert_said("udp", self.record())

    def test_tcp(self):
        self.assert_said("tcp", self.record("--tcp"), "--tcp-only")

    def test_two_videos(self):
        self.assert_said("two videos", self.record(), "--twice")

    def test_settings(self):
        settings = [f"--config=RTSP:{setting}" for setting in (
            "SendNetworkType=umts", "SendReferrer=http://a/b", "SendWAPProfile=\"http://c/d\"",
            "UseUserAgentNameStr=Name", "UseUserAgentVersionStr=1.2", "UseDeviceStr=Thing")]
        self.assert_said("settings", self.record(*settings))

    def test_element(self):
        tools = element.Tools("1.0")
        self.assert_said("element", lambda url, _: tools.launch(f"virertspsrc location={url} ! fakesink"))


if __name__ == "__main__":
    unittest.main()
