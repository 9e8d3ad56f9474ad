"""How far one picture or array is from another."""

import math
import re
import unittest

import numpy
from command_case import CommandCase


class CompareTest(CommandCase):
    def compared(self, *arguments, code=1, **arrays):
        """What is printed, by the name of the line; `arrays` become files."""
        for name, values in arrays.items():
            numpy.save(self.folder / f"{name}.npy", values)
        printed = self.run_tool("compare", *arguments)
        self.assertEqual((printed.returncode, printed.stderr), (code, ""), printed.stdout)
        return dict(re.split(" {2,}", line) for line in printed.stdout.splitlines())

    def test_an_array_and_a_picture(self):
        reference = self.random.uniform(20, 200, (11, 17))
        image = self.random_image(17, 11)
        self.write("b.png", image)
        difference = image[..., 0] - reference
        y, x = numpy.unravel_index(abs(difference).argmax(), difference.shape)
        rms = math.sqrt((difference**2).mean())
        self.assertEqual(self.compared("a.npy", "b.png", a=reference), {
            "type": "float64 and uint8", "bits": "not compared, as the types differ",
            "values": "17x11, 187 of 187 different",
            "greatest": f"{abs(difference).max():.4g} at {x},{y}, from {reference[y, x]:.4g} to {image[y, x, 0]}",
            "mean": f"{difference.mean():.4g}", "rms": f"{rms:.4g}",
            "psnr": f"{20 * math.log10(255 / rms):.2f} dB, of a peak of 255"})

    def test_first_of_equal_distances_and_colours(self):
        image = self.random_image(5, 4, 3, 16) // 2
        self.write("a.png", image, 16)
        image[2, 3, 1] += 7
        image[3, 0, 0] -= 7
        found = self.compared("a.png", "b.npy", b=image.astype("u2"))
        self.assertEqual((found["type"], found["bits"]), ("uint16", "2 of 60 different"))
        self.assertEqual((found["values"], found["mean"]), ("3x5x4, 2 of 60 different", "0"))
        self.assertRegex(found["greatest"], "^7 at 1,3,2, ")
        self.assertTrue(found["psnr"].endswith(" dB, of a peak of 65535"), found["psnr"])
        self.assertEqual(self.compared("a.png", "a.png", "--peak", "2.5", code=0), {
            "type": "uint16", "bits": "the same", "values": "3x5x4, 0 of 60 different", "mean": "0", "rms": "0",
            "psnr": "infinite, of a peak of 2.5"})

    def test_bits_types_and_values_differ_each_for_itself(self):
        nan, inf = numpy.nan, numpy.inf
        other_nan = numpy.array([0x7ff8000000000001], "u8").view("f8")
        for a, b, bits, values, greatest in (
            ([0.0, 1], [-0.0, 1], "1 of 2", 0, None),
            ([nan, inf, -inf], [nan, inf, -inf], "the same", 0, None),
            ([nan], other_nan, "1 of 1", 0, None),
            (numpy.ones(3, "f4"), numpy.ones(3), "not compared", 0, None),
            ([1, nan, 3.0], [4, 2, inf], "3 of 3", 3, "inf at 1, from nan to 2"),
            (numpy.array([2**63 - 1]), numpy.array([2**63 - 2]), "1 of 1", 1, "1 at 0, from 9.223e+18 to 9.223e+18"),
            (numpy.array([2**53 + 1]), [2.0**53], "not compared", 1, "1 at 0, from 9.007e+15 to 9.007e+15"),
            ([1 + 2j], [4 - 2j], "1 of 1", 1, "5 at 0, from 1+2i to 4-2i"),
            ([0.0, 0], [3e-200, 4e-200], "2 of 2", 2, "4e-200 at 1, from 0 to 4e-200"),
        ):
            with self.subTest(a=a, b=b):
                found = self.compared("a.npy", "b.npy", a=a, b=b, code=0 if bits == "the same" else 1)
                self.assertTrue(found["bits"].startswith(bits), found)
                self.assertEqual(found["values"].split(", ")[1], f"{values} of {len(a)} different")
                self.assertEqual(found.get("greatest"), greatest)
                self.compared("a.npy", "b.npy", "--max-error", "0", code=1 if greatest else 0)
        self.assertEqual(found["rms"], "3.536e-200")
        found = self.compared("a.npy", "b.npy", a=[1, nan, 3.0], b=[4, 2, inf])
        self.assertEqual((found["infinite"].split()[0], found["mean"]), ("2", "3"))
        for error, code in (("2.9", 1), ("3", 0)):
            self.compared("a.npy", "b.npy", "--max-error", error, a=[1, 2, 3], b=[4.0, 2, 3], code=code)


if __name__ == "__main__":
    unittest.main()
