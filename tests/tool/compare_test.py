"""How far one picture or array is from another."""

import math
import re
import unittest

import numpy
from command_case import CommandCase


class CompareTest(CommandCase):
    def compared(self, *arguments):
        """What is printed, by the name of the line."""
        printed = self.run_tool("compare", *arguments)
        self.assertEqual((printed.returncode, printed.stderr), (0, ""))
        return dict(re.split(" {2,}", line) for line in printed.stdout.splitlines())

    def test_an_array_and_a_picture(self):
        reference = self.random.uniform(20, 200, (11, 17))
        image = self.random_image(17, 11)
        numpy.save(self.folder / "a.npy", reference)
        self.write("b.png", image)
        difference = image[..., 0] - reference
        y, x = numpy.unravel_index(abs(difference).argmax(), difference.shape)
        rms = math.sqrt((difference**2).mean())
        self.assertEqual(self.compared("a.npy", "b.png"), {
            "values": "17x11, 187 of 187 different",
            "greatest": f"{abs(difference).max():.4g} at {x},{y}, from {reference[y, x]:.4g} to {image[y, x, 0]}",
            "mean": f"{difference.mean():.4g}", "rms": f"{rms:.4g}",
            "psnr": f"{20 * math.log10(255 / rms):.2f} dB, of a peak of 255"})

    def test_first_of_equal_distances_and_colours(self):
        image = self.random_image(5, 4, 3, 16) // 2
        self.write("a.png", image, 16)
        image[2, 3, 1] += 7
        image[3, 0, 0] -= 7
        numpy.save(self.folder / "b.npy", image)
        found = self.compared("a.png", "b.npy")
        self.assertEqual(found["values"], "3x5x4, 2 of 60 different")
        self.assertRegex(found["greatest"], "^7 at 1,3,2, ")
        self.assertEqual(found["mean"], "0")
        self.assertTrue(found["psnr"].endswith(" dB, of a peak of 65535"), found["psnr"])

    def test_equal_arrays_and_the_peak(self):
        numpy.save(self.folder / "a.npy", numpy.arange(6, dtype="i8") * 2**50)
        self.assertEqual(self.compared("a.npy", "a.npy"), {"values": "6, 0 of 6 different", "mean": "0", "rms": "0"})
        self.assertEqual(self.compared("a.npy", "a.npy", "--peak", "2.5")["psnr"], "infinite, of a peak of 2.5")
        for name, values in (("a", [0, 0]), ("b", [3e-200, 4e-200])):
            numpy.save(self.folder / f"{name}.npy", values)
        self.assertEqual(self.compared("a.npy", "b.npy")["rms"], "3.536e-200")


if __name__ == "__main__":
    unittest.main()
