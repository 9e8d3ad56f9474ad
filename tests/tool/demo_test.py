"""The script that draws the demonstration."""

import html
import os
import re
import subprocess
import unittest
from pathlib import Path

from command_case import TOOL, CommandCase

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "draw-demo"


class DemoTest(CommandCase):
    def draw(self, *photo):
        return subprocess.run([SCRIPT, Path(TOOL).parent, "out", *photo], cwd=self.folder, capture_output=True,
                              text=True, check=False)

    def check_page(self, source):
        """The commands on the page, run anew in its order, must give the pictures that it shows."""
        page = (self.folder / "out" / "index.html").read_text()
        shown = re.findall(r'<img src="([^"]*)"', page)
        commands = [html.unescape(code) for code in re.findall("<code>(.*?)</code>", page)]
        self.assertEqual(shown, [source, "blurred.png", "denoised.png", "sharpened.png", "edges.png", "patch.png",
                                 "found.png"])
        self.assertEqual(re.findall(r'<image href="([^"]*)"', page), shown[:3])
        self.assertEqual(sorted(os.listdir(self.folder / "out")), sorted([*shown, "index.html"]))
        again = self.folder / "again"
        again.mkdir(exist_ok=True)
        path = f"{Path(TOOL).parent}:{os.environ['PATH']}"
        for name, command in zip(shown, commands, strict=True):
            subprocess.run(["bash", "-c", command], cwd=again, env={**os.environ, "PATH": path}, check=True)
            self.assertEqual((again / name).read_bytes(), (self.folder / "out" / name).read_bytes())

    def test_page_shows_the_commands_that_made_its_pictures(self):
        photo = self.folder / "a <b> & 'c' $d.png"
        self.write(photo.name, self.random_image(40, 30, 3, 16), 16)
        for source, arguments in (("photo.png", [photo]), ("chart.png", [])):
            done = self.draw(*arguments)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.check_page(source)
        self.assertIn("window    400,180 60x40", (self.folder / "out" / "index.html").read_text())

    def test_failure_leaves_the_earlier_pictures(self):
        (self.folder / "out").mkdir()
        (self.folder / "out" / "mine").touch()
        (self.folder / "photo.png").write_text("no picture")
        done = self.draw(self.folder / "photo.png")
        self.assertEqual(done.returncode, 2)
        self.assertRegex(done.stderr, r"^orvane: '.*/photo.png' is not a PNG, TIFF, JPEG or NPY file\n$")
        self.assertEqual(sorted(os.listdir(self.folder)), ["out", "photo.png"])
        self.assertEqual(os.listdir(self.folder / "out"), ["mine"])


if __name__ == "__main__":
    unittest.main()
