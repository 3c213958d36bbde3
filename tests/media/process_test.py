"""What only whole processes show: interrupts while a server is silent, and the ports that each process asks for."""

import contextlib
import os
import re
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

import media

DESCRIPTION = "v=0\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=control:video\r\n"
ANSWERS = {
    "DESCRIBE": f"Content-Type: application/sdp\r\nContent-Length: {len(DESCRIPTION)}\r\n\r\n{DESCRIPTION}",
    "SETUP": "Session: 1\r\nTransport: RTP/AVP;unicast;server_port=9-10\r\n\r\n",
    "PLAY": "RTP-Info: url=video;seq=1;rtptime=0\r\n\r\n",
    "TEARDOWN": "\r\n",
}


class Server:
    """Answers the methods that it is given and keeps silent on others; never sends media."""

    def __init__(self, *methods):
        self.methods = methods
        self.requests = []
        self.seen = threading.Condition()
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.url = f"rtsp://127.0.0.1:{self.listener.getsockname()[1]}/clip"
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        with contextlib.suppress(OSError):
            while True:
                client, _ = self.listener.accept()
                with client, client.makefile("rw", newline="") as stream:
                    self.serve_client(stream)

    def serve_client(self, stream):
        while line := stream.readline():
            lines = [line.rstrip()]
            while len(line := stream.readline()) > 2:
                lines.append(line.rstrip())
            method = lines[0].split()[0]
            with self.seen:
                self.requests.append(lines)
                self.seen.notify_all()
            cseq = next(line for line in lines if line.startswith("CSeq"))
            if method in self.methods:
                stream.write(f"RTSP/1.0 200 OK\r\n{cseq}\r\n{ANSWERS[method]}")
                stream.flush()

    def names(self):
        return [lines[0].split()[0] for lines in self.requests]

    def wait_for(self, method):
        with self.seen:
            assert self.seen.wait_for(lambda: method in self.names(), media.PATIENCE), self.names()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.listener.close()


class InterruptTest(unittest.TestCase):
    def interrupt(self, command, method, *answered):
        """Interrupts the tool once the server has the request; gives the server, the exit code and the seconds."""
        with Server(*answered) as server, tempfile.TemporaryDirectory() as folder:
            options = ["--output", folder] if command == "record" else []
            process = subprocess.Popen([media.VIRERTSP, command, server.url, *options], stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            server.wait_for(method)
            if method == "PLAY":
                time.sleep(0.3)  # lets it have the answer
            start = time.monotonic()
            process.send_signal(signal.SIGINT)
            code = process.wait(media.PATIENCE)
            return server, code, time.monotonic() - start

    def test_while_nothing_is_answered(self):
        for command in ("record", "probe", "stats"):
            with self.subTest(command):
                _, code, seconds = self.interrupt(command, "DESCRIBE")
                self.assertEqual(4, code)
                self.assertLess(seconds, 1)

    def test_while_the_teardown_is_not_answered(self):
        for command in ("record", "stats"):
            with self.subTest(command):
                server, code, seconds = self.interrupt(command, "PLAY", "DESCRIBE", "SETUP", "PLAY")
                self.assertEqual(0, code)
                self.assertLess(seconds, 1)
                self.assertEqual("TEARDOWN", server.names()[-1])


class CommandsTest(unittest.TestCase):
    def run_tool(self, *words):
        result = subprocess.run([media.VIRERTSP, *words], capture_output=True, text=True, timeout=media.PATIENCE,
                                stdin=subprocess.DEVNULL)
        return result.returncode, result.stdout, result.stderr

    def test_help_and_mistakes(self):
        everything = self.run_tool("--help")
        self.assertEqual((0, ""), (everything[0], everything[2]))
        self.assertIn("  virertsp --version\n", everything[1])
        for words in (["-h"], ["help"], ["help", "nothing"]):
            self.assertEqual(everything, self.run_tool(*words), words)
        self.assertEqual((2, "", everything[1]), self.run_tool())
        self.assertEqual(self.run_tool("record", "--help"), self.run_tool("help", "record"))
        self.assertEqual((2, "", 'virertsp: There is no command "recrod"; virertsp --help lists them.\n'),
                         self.run_tool("recrod", "--output", "clip", "rtsp://127.0.0.1:9/clip"))
        self.assertEqual((2, "", "virertsp: --user needs a password, in the environment's VIRERTSP_PASSWORD or typed on "
                          "a terminal.\n"), self.run_tool("probe", "--user", "me", "rtsp://127.0.0.1:9/clip"))


class PortsTest(unittest.TestCase):
    def ports(self, run):
        """What each of three processes asks for."""
        with Server("DESCRIBE") as server:
            for count in range(1, 4):
                process = run(server.url)
                with server.seen:
                    server.seen.wait_for(lambda: server.names().count("SETUP") == count, media.PATIENCE)
                process.kill()
                process.communicate()
        texts = ["".join(lines) for lines in server.requests]
        return [re.search(r"client_port=(\d+)", text).group(1) for text in texts if text.startswith("SETUP")]

    def test_of_the_tool(self):
        ports = self.ports(lambda url: subprocess.Popen([media.VIRERTSP, "probe", url], stdout=subprocess.PIPE,
                                                        stderr=subprocess.PIPE))
        self.assertEqual(3, len(ports))
        self.assertGreater(len(set(ports)), 1, ports)

    @unittest.skipUnless("GST_LAUNCH_1_0" in os.environ, "no launcher")
    def test_of_the_element(self):
        environment = dict(os.environ, GST_PLUGIN_PATH=os.environ["PLUGIN_1_0"],
                           GST_REGISTRY=os.path.join(os.environ["GST_REGISTRIES"], "ports.bin"))
        ports = self.ports(lambda url: subprocess.Popen(
            [os.environ["GST_LAUNCH_1_0"], "virertspsrc", f"location={url}", "!", "fakesink"], env=environment,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE))
        self.assertEqual(3, len(ports))
        self.assertGreater(len(set(ports)), 1, ports)


if __name__ == "__main__":
    unittest.main()
