"""Every pad, in any number of dimensions, against SciPy, whose definitions are its own; skipped where it is missing."""

import itertools
import unittest

import numpy
from command_case import CommandCase

try:
    import scipy.ndimage
except ImportError:
    scipy = None

RULES = {"constant:3": ("constant", 3), "replicate": ("nearest", 0), "symmetric": ("reflect", 0), "circular": ("wrap", 0),
         "mirror": ("mirror", 0)}


@unittest.skipUnless(scipy, "scipy is not installed")
class OracleTest(CommandCase):
    def check(self, array, operation, pad, options, expected):
        with self.subTest(operation=operation, pad=pad, options=options):
            numpy.save(self.folder / "in.npy", array)
            self.succeed(operation, "in.npy", "out.npy", "--mode", "same", "--pad", pad, *options, "--quiet")
            numpy.testing.assert_allclose(numpy.load(self.folder / "out.npy"), expected, rtol=0, atol=1e-11)

    def test_every_pad(self):
        planes = [((12, 9), (3, 3)), ((7, 20), (5, 1)), ((4, 5), (7, 3)), ((16, 16), (1, 9))]
        volumes = [((20,), (5,)), ((5, 6, 7), (3, 3, 3)), ((2, 3, 2, 3, 2, 4), (1, 3, 1, 3, 3, 5))]
        for (shape, window), (pad, (rule, value)) in itertools.product(planes + volumes, RULES.items()):
            array, kernel = (self.random.normal(size=size) for size in (shape, window))
            numpy.save(self.folder / "kernel.npy", kernel)
            self.check(array, "correlate", pad, ("--kernel", "kernel.npy", "--nd"),
                       scipy.ndimage.correlate(array, kernel, mode=rule, cval=value))
            if len(shape) == 2:
                size = "x".join(map(str, reversed(window)))
                self.check(array, "median", pad, ("--window", size),
                           scipy.ndimage.median_filter(array, window, mode=rule, cval=value))


if __name__ == "__main__":
    unittest.main()
