"""Writes a report of real media, and opens it in a browser if Chromium is there."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import element
import media


class ReportTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.page = self.folder / "page.html"

    def test_page(self):
        log = self.folder / "page.jsonl"
        with element.serve(element.av_clip()) as url:
            result = media.run("report", url, "--output", str(self.page), "--log", str(log))
        self.assertEqual((0, "", ""), (result.returncode, result.stdout, result.stderr))
        page = self.page.read_text()
        self.assertIn(f"<h1>{url}</h1>", page)
        self.assertEqual(6, page.count("<svg"))
        # A key frame each second, and every one of them is a picture.
        self.assertEqual(element.SECONDS, page.count('<img src="data:image/jpeg;base64,/9j/'))
        # Time stamps are cut to ticks of 1/90 ms.
        self.assertRegex(page, r'<span class="key c0">Track 0, H264: (999\.99 to )?1000(\.01|)( to 1000\.01)?</span>')
        lines = [json.loads(line) for line in log.read_text().splitlines()]
        units = [line for line in lines if line.get("type") == "unit" and line["track"] == 0]
        self.assertEqual(element.SECONDS * element.RATE, len(units))
        self.assertEqual(element.SECONDS, sum(line["key"] for line in units))
        # The page needs nothing but itself, and the log makes the same one.
        self.assertEqual([], re.findall(r"(?:src|href)=\"(?!data:)|url\(|@import", page))
        again = self.folder / "again.html"
        self.assertEqual(0, media.run("report", str(log), "--output", str(again)).returncode)
        self.assertEqual(page, again.read_text())
        self.browse(self.page)

    def test_pictures_by_gstreamer(self):
        launcher = shutil.which("gst-launch-1.0")
        if not launcher:
            self.skipTest("gst-launch-1.0 is not there")
        (self.folder / "gst-launch-1.0").symlink_to(launcher)
        with element.serve(element.av_clip()) as url:
            subprocess.run([media.VIRERTSP, "report", url, "--output", str(self.page)], check=True,
                           env=dict(os.environ, PATH=str(self.folder)), timeout=media.PATIENCE)
        self.assertEqual(element.SECONDS, self.page.read_text().count('<img src="data:image/jpeg;base64,/9j/'))

    def browse(self, page):
        """Requires that Chromium finds nothing to complain about, and that nothing is wider than a telephone."""
        chromium = shutil.which("chromium") or shutil.which("google-chrome")
        if not chromium:
            self.skipTest("Chromium is not there: the page was not opened in a browser")
        frame = self.folder / "frame.html"
        frame.write_text(
            f"<iframe id=page src={page.name} style='width:360px;height:2000px;border:0'></iframe><script>"
            "onload = () => { const root = page.contentDocument.documentElement;"
            "console.log('too wide by', root.scrollWidth - root.clientWidth, 'svg', root.querySelectorAll('svg').length); }</script>")
        for scheme in (0, 1):  # dark, light
            result = subprocess.run(
                [chromium, "--headless=new", "--no-sandbox", "--disable-gpu", f"--user-data-dir={self.folder}/profile",
                 f"--blink-settings=preferredColorScheme={scheme}", "--allow-file-access-from-files",
                 "--enable-logging=stderr", "--dump-dom", frame.as_uri()],
                capture_output=True, text=True, timeout=media.PATIENCE)
            said = [line.split("] ", 1)[1] for line in result.stderr.splitlines() if ":CONSOLE" in line]
            self.assertEqual(1, len(said), said)
            self.assertTrue(said[0].startswith('"too wide by 0 svg 6"'), said)


if __name__ == "__main__":
    unittest.main()
