"""Arrays through the command against SciPy, where definitions meet; skipped where it is not installed."""

import itertools
import unittest

import numpy
from command_case import CommandCase, matrix_text

try:
    import scipy.ndimage
    import scipy.signal
except ImportError:
    scipy = None

RULES = {"constant:0.75": ("constant", 0.75), "replicate": ("nearest", 0), "symmetric": ("reflect", 0),
         "circular": ("wrap", 0)}


@unittest.skipUnless(scipy, "scipy is not installed")
class OracleTest(CommandCase):
    def check(self, array, operation, options, expected, tolerance=0.0):
        with self.subTest(operation=operation, options=options, type=array.dtype):
            numpy.save(self.folder / "in.npy", array)
            self.succeed(operation, "in.npy", "out.npy", *options, "--quiet")
            found = numpy.load(self.folder / "out.npy")
            self.assertEqual(found.dtype, array.dtype)
            numpy.testing.assert_allclose(found, expected, rtol=0, atol=tolerance)

    def test_every_pad(self):
        shapes = [((12, 9), (3, 3)), ((7, 20), (5, 1)), ((4, 5), (7, 3)), ((16, 16), (1, 9))]
        for (shape, window), (pad, (rule, value)), kind in zip(
                itertools.cycle(shapes), list(RULES.items()) * 4, itertools.cycle(["f4", "f8", "c16"])):
            array = self.random.normal(size=shape) + (1j * self.random.normal(size=shape) if kind == "c16" else 0)
            kernel, options = self.random.normal(size=window), ("--mode", "same", "--pad", pad)
            for operation in ("convolve", "correlate"):
                expected = getattr(scipy.ndimage, operation)(array, kernel, mode=rule, cval=value)
                self.check(array.astype(kind), operation, ("--kernel", matrix_text(kernel), *options), expected,
                           1e-4 if kind == "f4" else 1e-11)
            whole = (array.real * 20 + 60).astype("i2")
            self.check(whole, "median", ("--window", f"{window[1]}x{window[0]}", *options[:3], pad.replace("0.75", "3")),
                       scipy.ndimage.median_filter(whole, window, mode=rule, cval=3))

    def test_any_number_of_dimensions_and_the_extents_of_valid_and_full(self):
        shapes = [((20,), (5,)), ((5, 6, 7), (3, 3, 3)), ((2, 3, 2, 3, 2, 4), (1, 3, 1, 3, 3, 5))]
        for (shape, window), (pad, (rule, value)) in itertools.product(shapes, RULES.items()):
            array, kernel = (self.random.normal(size=size) for size in (shape, window))
            numpy.save(self.folder / "kernel.npy", kernel)
            self.check(array, "correlate", ("--kernel", "kernel.npy", "--nd", "--mode", "same", "--pad", pad),
                       scipy.ndimage.correlate(array, kernel, mode=rule, cval=value), 1e-12)
        array, kernel = self.random.normal(size=(9, 8)), self.random.normal(size=(3, 2))
        for mode, (pad, rule) in itertools.product(("valid", "full"), (("symmetric", "symm"), ("circular", "wrap"))):
            self.check(array, "convolve", ("--kernel", matrix_text(kernel), "--mode", mode, "--pad", pad),
                       scipy.signal.convolve2d(array, kernel, mode, rule), 1e-12)


if __name__ == "__main__":
    unittest.main()
