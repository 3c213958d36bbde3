"""Holds the manual page against the program's own help."""

import pathlib
import re
import shutil
import subprocess
import unittest

import media

PAGE = pathlib.Path(__file__).parents[2] / "docs" / "virertsp.1"


def help_of(*command):
    return subprocess.run([media.VIRERTSP, *command, "--help"], check=True, capture_output=True, text=True,
                          timeout=media.PATIENCE).stdout


class ManualTest(unittest.TestCase):
    def setUp(self):
        self.page = PAGE.read_text().replace("\\-", "-")

    def test_formatter_has_no_complaint(self):
        if not shutil.which("groff"):
            self.skipTest("groff is not there")
        result = subprocess.run(["groff", "-man", "-ww", "-z", "-Tutf8", str(PAGE)], capture_output=True, text=True,
                                timeout=media.PATIENCE)
        self.assertEqual((0, "", ""), (result.returncode, result.stdout, result.stderr))

    def test_commands_and_options(self):
        commands = re.findall(r"^  ([a-z]+)  +[A-Z]", help_of(), re.MULTILINE)
        self.assertEqual(["record", "probe", "stats", "report", "watch"], commands)
        for command in commands:
            self.assertIn(f".SS {command}\n", self.page)
            options = re.findall(r"^  (?:-\w, )?(--[a-z]+)", help_of(command), re.MULTILINE)
            self.assertGreaterEqual(len(options), 5)
            for option in options:
                self.assertRegex(self.page, rf"(?m)^\.BR? (?:-\w \", \" )?{option}\b", f"{command} {option}")

    def test_exit_codes(self):
        for text in (help_of(), help_of("record"), help_of("probe"), help_of("stats"), help_of("report"),
                     help_of("watch")):
            codes = re.findall(r"^  (\d)  (.*)$", text, re.MULTILINE)
            self.assertEqual([str(code) for code in range(9)], [code for code, _ in codes])
            for code, meaning in codes:
                self.assertIn(f".TP\n.B {code}\n{meaning}\n", self.page)


if __name__ == "__main__":
    unittest.main()
