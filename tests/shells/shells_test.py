"""The completions in real shells, and colours on a terminal."""

import os
import pathlib
import pty
import re
import select
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

PATIENCE = 60

# What is typed before the Tab, and the words that it becomes.
CASES = (
    ("virertsp rec", ["record"]),
    ("virertsp record --forc", ["record", "--force"]),
    ("virertsp record --transport t", ["record", "--transport", "tcp"]),
    ("virertsp record --transport=t", ["record", "--transport=tcp"]),
    ("virertsp probe --config RTSP:Prof", ["probe", "--config", "RTSP:Profile="]),
    ("virertsp probe -c RTSP:Prof", ["probe", "-c", "RTSP:Profile="]),
    ("virertsp record --output uniq", ["record", "--output", "unique.mp4"]),
    ("virertsp record --output=uniq", ["record", "--output=unique.mp4"]),
    ("virertsp stats rtsp:", ["stats", "rtsp://"]),
)


class Terminal:
    """A program on a terminal of its own."""

    def __init__(self, *command, **environment):
        child, self.master = pty.fork()
        if child == 0:
            os.execvpe(command[0], command, {**os.environ, "TERM": "xterm", "LC_ALL": "C.UTF-8", **environment})
        self.child = child
        self.text = ""

    def type(self, text):
        os.write(self.master, text.encode())

    def read(self):
        """False at the end."""
        ready, _, _ = select.select([self.master], [], [], PATIENCE)
        assert ready, f"nothing more came: {self.text}"
        try:
            more = os.read(self.master, 4096)
        except OSError:
            return False
        self.text += more.decode(errors="replace")
        return more != b""

    def wait_for(self, pattern):
        """Takes all up to it."""
        end = time.monotonic() + PATIENCE
        while not (found := re.search(pattern, self.text)):
            assert time.monotonic() < end and self.read(), f"{pattern} did not come: {self.text}"
        self.text = self.text[found.end():]
        return found

    def rest(self):
        while self.read():
            pass
        return self.text

    def __enter__(self):
        return self

    def __exit__(self, *_):
        os.kill(self.child, signal.SIGKILL)
        os.waitpid(self.child, 0)
        os.close(self.master)


class CompletionTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        subprocess.run(["cmake", "--install", os.environ["BUILD"], "--prefix", folder.name, "--component", "virertsp"],
                       stdout=subprocess.DEVNULL, check=True, timeout=PATIENCE)
        (self.folder / "unique.mp4").touch()

    def complete(self, shell, *options, prepare):
        """Types each case, Tab, and then has the line's words printed instead of run."""
        if shutil.which(shell) is None:
            self.skipTest(f"{shell} is not there")
        environment = {"PATH": f"{self.folder}/bin:{os.environ['PATH']}", "HOME": str(self.folder)}
        with Terminal(shell, *options, **environment) as terminal:
            terminal.type(f"cd {self.folder}; {prepare}; printf '<%s>' ready\n")
            terminal.wait_for("<ready>")
            for typed, words in CASES:
                terminal.type(f"{typed}\t\x01printf '<%s>' \x05 'end'\n")
                found = terminal.wait_for(r"<virertsp>((?:<[^>]*>)*)<end>")
                self.assertEqual(words, re.findall("<([^>]*)>", found.group(1)), (shell, typed))

    def test_bash(self):
        self.complete("bash", "--norc", "--noprofile", "-i",
                      prepare=f"source {self.folder}/share/bash-completion/completions/virertsp")

    def test_zsh(self):
        self.complete("zsh", "-f", "-i", prepare=f"fpath=({self.folder}/share/zsh/site-functions $fpath); "
                      "autoload -U compinit; compinit -D -u; bindkey -e")

    def test_fish(self):
        self.complete("fish", "--no-config", "-i", prepare="set fish_complete_path "
                      f"{self.folder}/share/fish/vendor_completions.d $fish_complete_path")


class ColourTest(unittest.TestCase):
    """The program's name before a message."""

    COMMAND = (f"{os.environ['BUILD']}/tools/virertsp/virertsp", "probe", "nowhere")

    def shown(self, **environment):
        with Terminal(*self.COMMAND, **environment) as terminal:
            return terminal.rest()

    def test_on_a_terminal(self):
        self.assertTrue(self.shown(NO_COLOR="").startswith("\033[1;31mvirertsp:\033[0m A location begins"))
        for environment in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            with self.subTest(environment):
                self.assertTrue(self.shown(**environment).startswith("virertsp: A location begins"))

    def test_elsewhere(self):
        result = subprocess.run(self.COMMAND, capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual(2, result.returncode)
        self.assertEqual("virertsp: A location begins with rtsp:// or rtsps://.\n", result.stderr)


if __name__ == "__main__":
    unittest.main()
