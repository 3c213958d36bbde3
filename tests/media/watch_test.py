"""Watches several locations at once: on a terminal, as lines and as JSON, up to the interrupt that ends it."""

import json
import os
import select
import signal
import socket
import subprocess
import time
import unittest

import media
from process_test import Server


def nothing():
    """A location where nothing listens."""
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return f"rtsp://127.0.0.1:{listener.getsockname()[1]}/clip"


def start(*arguments, **options):
    return subprocess.Popen([media.VIRERTSP, "watch", *arguments], stderr=subprocess.PIPE, text=True, **options)


class WatchTest(unittest.TestCase):
    def test_an_interrupt_leaves_all_servers(self):
        """Also where one does not answer any more, one is being called, and one is waited for."""
        everything = ("DESCRIBE", "SETUP", "PLAY", "TEARDOWN")
        with Server(*everything) as first, Server(*everything[:3]) as second, Server() as third:
            process = start(first.url, second.url, third.url, nothing(), stdout=subprocess.DEVNULL)
            for server, method in ((first, "PLAY"), (second, "PLAY"), (third, "DESCRIBE")):
                server.wait_for(method)
            time.sleep(0.3)  # lets it have the answers
            begin = time.monotonic()
            process.send_signal(signal.SIGINT)
            _, errors = process.communicate(timeout=media.PATIENCE)
            self.assertLess(time.monotonic() - begin, 1)
            self.assertEqual((0, ""), (process.returncode, errors))
            for server in (first, second):
                server.wait_for("TEARDOWN")
            self.assertEqual(["DESCRIBE"], third.names())

    def test_json(self):
        absent = nothing()
        with media.server("--file", str(media.clip(20))) as url:
            process = start(url, absent, "--json", "--seconds", "5.5", stdout=subprocess.PIPE)
            output, errors = process.communicate(timeout=media.PATIENCE)
        self.assertEqual((0, ""), (process.returncode, errors))
        lines = [json.loads(line) for line in output.splitlines()]
        self.assertIn(len(lines), (5, 6))
        there, gone = zip(*[line["locations"] for line in lines])
        self.assertEqual({url}, {location["url"] for location in there})
        self.assertEqual("playing", there[-1]["state"])
        self.assertGreater(there[-1]["kbit_per_s"], 100)
        self.assertEqual((0, None, 1), tuple(there[-1][key] for key in ("lost", "failure", "session")))
        self.assertEqual("waiting", gone[-1]["state"])
        self.assertRegex(gone[-1]["failure"], r"^The server 127\.0\.0\.1:\d+ refuses connections\.$")
        self.assertAlmostEqual(time.time(), gone[-1]["failed_at"], delta=60)
        # At once, after one second, and after two more; the next would come after seven.
        self.assertEqual(3, gone[-1]["session"])

    def test_a_location_that_ends_is_played_again(self):
        with media.server("--launch", "( videotestsrc num-buffers=10 ! video/x-raw,width=64,height=64,framerate=25/1 ! "
                          "x264enc tune=zerolatency ! rtph264pay name=pay0 pt=96 )") as url:
            process = start(url, "--json", stdout=subprocess.PIPE)
            for line in process.stdout:
                location = json.loads(line)["locations"][0]
                if location["session"] > 1:
                    break
            process.send_signal(signal.SIGINT)
            process.communicate(timeout=media.PATIENCE)
        self.assertIn(location["failure"], ("The server ended it.", "Media stopped coming."))

    def test_lines(self):
        first, second = nothing(), nothing()
        process = start(first.replace("//", "//me:secret@"), second, "--seconds", "0.9", stdout=subprocess.PIPE)
        output, errors = process.communicate(timeout=media.PATIENCE)
        self.assertEqual((0, ""), (process.returncode, errors))
        self.assertNotIn("secret", output)
        lines = output.splitlines()
        self.assertEqual(2, len(lines), lines)
        for url, line in zip((first, second), lines):
            self.assertRegex(line, rf"^\d{{4}}-\d\d-\d\dT\d\d:\d\d:\d\d  {url}  (connecting    $|waiting \d s   \d\d:\d\d:\d\d refuses connections\.$)")

    def test_terminal(self):
        absent = nothing()
        master, slave = os.openpty()
        with media.server("--file", str(media.clip(20))) as url:
            process = start(url, absent, stdout=slave)
            os.close(slave)
            shown = ""
            deadline = time.monotonic() + media.PATIENCE
            while shown.count("location ") < 4 and time.monotonic() < deadline:
                if select.select([master], [], [], 1)[0]:
                    shown += os.read(master, 65536).decode()
            process.send_signal(signal.SIGTERM)
            _, errors = process.communicate(timeout=media.PATIENCE)
        os.close(master)
        self.assertEqual((0, ""), (process.returncode, errors))
        # Each look at it writes over the one before: a heading and a line for each location.
        looks = shown.split("\033[3A")
        self.assertGreaterEqual(len(looks), 4)
        for look in looks[:-1]:
            self.assertTrue(look.endswith("\033[J"), look)
            heading, *lines = [line.lstrip("\r") for line in look.split("\033[K\r\n")[:-1]]
            self.assertTrue(heading.startswith("location "), heading)
            self.assertEqual([url[:8], absent[:8]], [line[:8] for line in lines])
            self.assertTrue(all(len(line) == 79 for line in (heading, *lines)), lines)
        self.assertIn("refuses connections.", looks[-2])

    def test_mistakes(self):
        for arguments in ([], ["http://127.0.0.1/clip"], ["rtsp://127.0.0.1/clip", "file"],
                          ["rtsp://127.0.0.1/clip", "-c", "RTSP:TimeOutAfter=0"]):
            process = start(*arguments, stdout=subprocess.DEVNULL)
            process.communicate(timeout=media.PATIENCE)
            self.assertEqual(2, process.returncode, arguments)


if __name__ == "__main__":
    unittest.main()
