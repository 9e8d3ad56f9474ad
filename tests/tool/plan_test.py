"""The plan in words and in pictures."""

import re
import unittest
import xml.etree.ElementTree
from pathlib import Path

from command_case import CommandCase

ROOT = Path(__file__).resolve().parents[2]
KINDS = ("inside", "boundary", "outside")


def boxes(picture, kinds):
    """Left, top, right and bottom of the rectangles of each of the classes, legend included."""
    found = {kind: [] for kind in kinds}
    for shape in xml.etree.ElementTree.fromstring(picture).iter("{http://www.w3.org/2000/svg}rect"):
        x, y, width, height = (int(shape.get(name, 0)) for name in ("x", "y", "width", "height"))
        if shape.get("class") in found:
            found[shape.get("class")].append((x, y, x + width, y + height))
    return found


class PlanTest(CommandCase):
    def test_files_that_the_guide_names_are_there(self):
        guide = (ROOT / "docs" / "how-it-works.md").read_text()
        for name in re.findall(r"`((?:orvane|scripts)/[^`]+)`", guide):
            self.assertTrue((ROOT / name).exists(), name)

    def test_coloured_cells_tile_the_outputs_that_the_table_counts(self):
        for arguments, inside, boundary, outside in (
            ("--input 10x10 --window 3x3 --mode same", 64, 36, 0),
            ("--input 9x7 --window 4x2 --mode full", 6 * 6, 12 * 8 - 36, 0),
            ("--input 9x7 --window 4x2 --mode valid", 36, 0, 0),
            ("--input 9x7 --window 4x2 --mode same --reach 0", 36, 0, 0),
            ("--input 4x3 --window 7x1 --mode same", 0, 12, 0),
            ("--input 8 --window 3 --mode full", 6, 4, 0),
            ("--input 8 --window 3 --mode full --roi 0,3", 2, 1, 0),
            ("--input 10x8 --window 3x3 --mode same --roi 8,-5,9x7", 1, 3, 0),
            ("--input 6x6 --window 3x3 --roi -2,-2,10x10 --reach 2 --pad constant", 16, 64 - 16, 36),
            ("--input 6x6 --window 3x3 --roi -3,2,4x1 --reach 2 --pad constant", 0, 2, 2),
            ("--input 6x6 --window 3x3 --roi -3,-1,4x1 --reach 2 --pad constant", 0, 2, 2),
            ("--input 6x6 --window 3x3 --roi -3,-1,4x1 --reach 2 --pad circular", 0, 4, 0),
        ):
            with self.subTest(arguments=arguments):
                text = self.run_tool("plan", *arguments.split(), "--svg", "p.svg").stdout
                counts = dict.fromkeys(KINDS, 0)
                for kind, outputs in re.findall(r"^ +\d+  (inside|boundary|outside) +(\d+)", text, re.MULTILINE):
                    counts[kind] += int(outputs)
                self.assertEqual(tuple(counts.values()), (inside, boundary, outside))

                picture = boxes((self.folder / "p.svg").read_text(), (*KINDS, "frame"))
                side = int(re.search(r'class="ring"[^>]* r="(\d+)"', (self.folder / "p.svg").read_text())[1]) * 2 + 4
                left, _, right, _ = picture["frame"][0]
                self.assertEqual(right - left, side * int(re.search(r"--input (\d+)", arguments)[1]))
                covered = set()
                for kind in KINDS:
                    cells = [(x, y) for x0, y0, x1, y1 in picture[kind][:-1]
                             for x in range(x0, x1, side) for y in range(y0, y1, side)]
                    self.assertEqual(len(cells), counts[kind], kind)
                    self.assertTrue(covered.isdisjoint(cells))
                    covered.update(cells)

    def test_extents_of_all_sizes_make_a_picture_of_moderate_size(self):
        for extents, window in (("100000x20000", "901x3"), ("268435456", "268435456"), ("1x1", "1x1")):
            self.succeed("plan", "--input", extents, "--window", window, "--mode", "full", "--svg", "p.svg")
            root = xml.etree.ElementTree.fromstring((self.folder / "p.svg").read_text())
            self.assertLess(int(root.get("width")), 3000)
            self.assertLess((self.folder / "p.svg").stat().st_size, 20000)

    def test_more_than_two_dimensions_and_no_outputs_are_told(self):
        text = self.run_tool("plan", "--input", "9", "--window", "9", "--mode", "valid", "--pad", "constant:5", "--svg", "p.svg").stdout
        self.assertIn("mode    valid, pad constant:5, reach 0\n", text)
        self.assertIn("\n1 sector with 1 of 1 output\n", text)
        self.assertIn("one value, constant:5", (self.folder / "p.svg").read_text())
        self.succeed("plan", "--input", "4", "--window", "5", "--roi", "0,4", "--reach", "2")
        text = self.run_tool("plan", "--input", "5x5x5", "--window", "3x3x3", "--mode", "same").stdout
        self.assertIn("\n27 sectors with 125 of 125 outputs\n", text)
        text = self.run_tool("plan", "--input", "5x5", "--window", "3x3", "--roi", "70,0,2x2", "--svg", "p.svg").stdout
        self.assertIn("\noutput  none\n", text)
        self.assertIn("no outputs", (self.folder / "p.svg").read_text())


if __name__ == "__main__":
    unittest.main()
