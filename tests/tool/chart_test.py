"""The test chart."""

import hashlib
import unittest

import numpy
from command_case import CommandCase


class ChartTest(CommandCase):
    def chart(self, size):
        self.succeed("chart", "chart.png", "--size", size)
        samples, depth = self.read("chart.png")
        self.assertEqual((depth, samples.shape[2], f"{samples.shape[1]}x{samples.shape[0]}"), (8, 1, size))
        return samples[..., 0].astype(numpy.uint8)

    def test_samples_are_the_same_on_every_machine(self):
        digests = {"128x96": "4ffa35586981b9dc", "640x480": "e5e5dc27d1052d78", "301x900": "dee2ffb521443f40"}
        for size, digest in digests.items():
            self.assertEqual(hashlib.sha256(self.chart(size).tobytes()).hexdigest()[:16], digest, size)

    def test_plate_follows_its_formula(self):
        # At this size the plate spans columns 12 to 343 and rows 12 to 387.
        plate = self.chart("640x480")[12:388, 12:344]
        height, width = plate.shape
        y, x = numpy.mgrid[:height, :width]
        square = (x - (width - 1) / 2) ** 2 + (y - (height - 1) / 2) ** 2
        expected = 127.5 + 127.5 * numpy.cos(numpy.pi * square / max(width, height))
        self.assertLessEqual(numpy.abs(plate - expected).max(), 0.5 + 1e-6)


if __name__ == "__main__":
    unittest.main()
