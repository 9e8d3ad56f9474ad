"""Guides with commands: what they show is what the commands print and draw."""

import re
import subprocess
import unittest
from pathlib import Path

import numpy
from command_case import TOOL, CommandCase

ROOT = Path(__file__).resolve().parents[2]


def transcript(text):
    """Pairs of a command and what is printed below it."""
    return re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", text, re.MULTILINE)


class GuideTest(CommandCase):
    def check(self, name):
        """Runs the guide's commands; blocks that show commands alone leave out what these print."""
        guide = ROOT / "docs" / name
        done = subprocess.run([ROOT / "scripts" / "draw-docs", Path(TOOL).parent, guide, self.folder],
                              capture_output=True, text=True, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        printed = transcript(done.stdout)
        for block in re.findall(r"^```\n(\$ .*?)^```", guide.read_text(), re.MULTILINE | re.DOTALL):
            shown = transcript(block)
            ran, printed = printed[:len(shown)], printed[len(shown):]
            if all(text == "" for _, text in shown):
                ran = [(command, "") for command, _ in ran]
            self.assertEqual(ran, shown)
        self.assertEqual(printed, [])
        self.assertEqual([path.name for path in self.folder.iterdir()], ["images"])
        drawn = {f"images/{path.name}" for path in (self.folder / "images").iterdir()}
        self.assertTrue(drawn <= set(re.findall(r"\]\((images/[^)]*)\)", guide.read_text())), drawn)
        for picture in drawn:
            if picture.endswith(".png"):  # how samples are compressed is up to the system's library
                numpy.testing.assert_array_equal(self.read(picture)[0], self.read(guide.parent / picture)[0], picture)
            else:
                self.assertEqual((self.folder / picture).read_bytes(), (guide.parent / picture).read_bytes(), picture)
        return drawn

    def test_reference_is_what_the_command_prints(self):
        printed = subprocess.run([TOOL, "reference"], capture_output=True, text=True, check=True).stdout
        self.assertEqual((ROOT / "docs" / "command.md").read_text(), printed)

    def test_plans(self):
        self.assertEqual(len(self.check("how-it-works.md")), 6)

    def test_template_matching(self):
        self.assertEqual(len(self.check("template-matching.md")), 1)

    def test_fixed_point(self):
        self.assertEqual(len(self.check("fixed-point.md")), 2)


if __name__ == "__main__":
    unittest.main()
