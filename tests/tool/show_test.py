"""Pictures for people: the contact sheet of a kernel, and the overlay of a comparison."""

import base64
import io
import re
import unittest

import numpy
from command_case import CommandCase
from PIL import Image
from tiff_case import tiff


class ShowTest(CommandCase):
    def test_sheet_of_a_kernel(self):
        image = self.random_image(60, 40, 3)
        self.write("in <1>.png", image)
        kernel = numpy.array([[1, 2, 1], [0, 3, 0]]) / 10
        self.succeed("show", "in <1>.png", "sheet.html", "-k", ".1,.2,.1;0,.3,0", "-p", "mirror", "--offset", "3")
        page = (self.folder / "sheet.html").read_text()
        self.assertIn("does to in &lt;1&gt;.png", page)
        pictures = [numpy.array(Image.open(io.BytesIO(base64.b64decode(text)))).astype(int)
                    for text in re.findall(r"base64,([^\"]+)", page)]
        self.assertEqual([picture.shape[:2] for picture in pictures], [(2, 3), (129, 129), (40, 60), (40, 60)])
        numpy.testing.assert_array_equal(pictures[2], image)
        self.succeed("convolve", "in <1>.png", "out.png", "-k", ".1,.2,.1;0,.3,0", "-p", "mirror", "--offset", "3")
        numpy.testing.assert_array_equal(pictures[3], self.read("out.png")[0])
        # Brightness of the heat map rises with the magnitude of the transform.
        turns = numpy.arange(-64, 65) / 128
        waves = [numpy.exp(-2j * numpy.pi * numpy.outer(turns, numpy.arange(side))) for side in (2, 3)]
        magnitude = abs(waves[0] @ kernel @ waves[1].T)
        order = numpy.argsort(magnitude, axis=None)
        brightness = pictures[1].sum(2).ravel()[order]
        self.assertGreater(numpy.diff(brightness).min(), -3)  # each channel is rounded
        self.assertEqual(pictures[1][64, 64].tolist(), [255, 250, 190])

    def test_sheet_of_numbers_and_of_stacks(self):
        numpy.save(self.folder / "in.npy", numpy.array([[-1.5, 2.5, numpy.nan], [0.5, numpy.inf, -numpy.inf]]))
        (self.folder / "in.tif").write_bytes(tiff(numpy.full((3, 4, 1), 7, "u1"), numpy.full((3, 4, 1), 9, "u1")))
        for name, note, samples in (("in.npy", "from -1.5 to 2.5", [[0, 255, 0], [128, 255, 0]]),
                                    ("in.tif", "first of 2 pages", numpy.full((3, 4), 7))):
            self.succeed("show", name, "sheet.html", "-k", "1")
            page = (self.folder / "sheet.html").read_text()
            self.assertIn(note, page)
            before = re.findall(r"base64,([^\"]+)", page)[2]
            numpy.testing.assert_array_equal(numpy.array(Image.open(io.BytesIO(base64.b64decode(before)))), samples)

    def test_overlay_of_a_comparison(self):
        first = self.random_image(30, 20)
        second = first.copy()
        second[3, 4], second[10, 20] = (first[3, 4] + 9) % 256, (first[10, 20] + 90) % 256
        self.write("a.png", first)
        self.write("b.png", second)
        self.assertEqual(self.run_tool("compare", "a.png", "b.png", "--overlay", "o.png").returncode, 1)
        overlay, _ = self.read("o.png")
        coloured = numpy.argwhere(overlay.max(2) != overlay.min(2)).tolist()
        self.assertEqual(coloured, [[3, 4], [10, 20]])


if __name__ == "__main__":
    unittest.main()
