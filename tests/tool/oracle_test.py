"""Arrays through the command against other libraries, where definitions meet; tests without their library are skipped."""

import itertools
import unittest

import numpy
from command_case import CommandCase, matrix_text

try:
    import scipy.ndimage
    import scipy.signal
except ImportError:
    scipy = None
try:
    import cv2
except ImportError:
    cv2 = None


class OracleTest(CommandCase):
    shapes = [((12, 9), (3, 3)), ((7, 20), (5, 1)), ((4, 5), (7, 3)), ((16, 16), (1, 9))]

    def filtered(self, array, operation, *options):
        numpy.save(self.folder / "in.npy", array)
        self.succeed(operation, "in.npy", "out.npy", *options, "--quiet")
        return numpy.load(self.folder / "out.npy")

    def inputs(self, window, shape):
        """Real and complex input in two precisions, with a kernel, and the tolerance of a comparison."""
        kernel = self.random.normal(size=window)
        real, imaginary = self.random.normal(size=(2, *shape))
        for kind, tolerance in (("f8", 1e-12), ("f4", 1e-5), ("c16", 1e-12), ("c8", 1e-5)):
            yield (real + 1j * imaginary if kind[0] == "c" else real).astype(kind), kernel, tolerance

    @unittest.skipUnless(scipy, "scipy is not installed")
    def test_every_pad_against_scipy_ndimage(self):
        pads = {"constant:0.75": ("constant", 0.75), "replicate": ("nearest", 0), "symmetric": ("reflect", 0),
                "circular": ("wrap", 0)}
        for (shape, window), (pad, (rule, value)), operation in itertools.product(
                self.shapes, pads.items(), ("convolve", "correlate")):
            for array, kernel, tolerance in self.inputs(window, shape):
                with self.subTest(shape=shape, window=window, pad=pad, operation=operation, type=array.dtype):
                    found = self.filtered(array, operation, "--kernel", matrix_text(kernel), "--mode", "same", "--pad", pad)
                    expected = getattr(scipy.ndimage, operation)(array, kernel, mode=rule, cval=value)
                    self.assertEqual(found.dtype, array.dtype)
                    numpy.testing.assert_allclose(found, expected, rtol=0, atol=10 * tolerance)

    @unittest.skipUnless(scipy, "scipy is not installed")
    def test_medians_of_odd_windows_against_scipy_ndimage(self):
        pads = {"constant:3": "constant", "replicate": "nearest", "symmetric": "reflect", "circular": "wrap"}
        for (shape, window), (pad, rule) in itertools.product(self.shapes, pads.items()):
            for dtype in ("f4", "f8", "u1", "i2", "i4"):
                with self.subTest(shape=shape, window=window, pad=pad, type=dtype):
                    array = (self.random.normal(size=shape) * 20 + 60).astype(dtype)
                    found = self.filtered(array, "median", "--window", f"{window[1]}x{window[0]}", "--mode", "same", "--pad",
                                          pad)
                    self.assertEqual(found.dtype, array.dtype)
                    expected = scipy.ndimage.median_filter(array, window, mode=rule, cval=3)
                    numpy.testing.assert_array_equal(found, expected)

    @unittest.skipUnless(scipy, "scipy is not installed")
    def test_extents_of_valid_and_full_against_scipy_signal(self):
        rules = {"constant:0": "fill", "symmetric": "symm", "circular": "wrap"}
        for (shape, window), mode in itertools.product([((9, 8), (3, 2)), ((6, 6), (4, 4)), ((5, 9), (1, 6))],
                                                       ("valid", "full")):
            for (pad, rule), (array, kernel, tolerance) in itertools.product(rules.items(), self.inputs(window, shape)):
                with self.subTest(shape=shape, window=window, mode=mode, pad=pad, type=array.dtype):
                    found = self.filtered(array, "convolve", "--kernel", matrix_text(kernel), "--mode", mode, "--pad", pad)
                    expected = scipy.signal.convolve2d(array, kernel, mode, rule)
                    numpy.testing.assert_allclose(found, expected, rtol=0, atol=10 * tolerance)

    @unittest.skipUnless(scipy, "scipy is not installed")
    def test_any_number_of_dimensions_against_scipy_ndimage(self):
        rules = {"constant:-1.5": ("constant", -1.5), "replicate": ("nearest", 0), "symmetric": ("reflect", 0),
                 "circular": ("wrap", 0)}
        shapes = [((20,), (5,)), ((6, 7), (3, 5)), ((5, 6, 7), (3, 3, 3)), ((3, 4, 2, 5), (3, 1, 5, 3)),
                  ((2, 3, 2, 3, 2, 4), (1, 3, 1, 3, 3, 5))]
        for (shape, window), (pad, (rule, value)), kind in itertools.product(shapes, rules.items(), ("f4", "f8")):
            with self.subTest(shape=shape, pad=pad, type=kind):
                array, kernel = (self.random.normal(size=size).astype(kind) for size in (shape, window))
                numpy.save(self.folder / "kernel.npy", kernel)
                found = self.filtered(array, "correlate", "--kernel", "kernel.npy", "--nd", "--mode", "same", "--pad", pad)
                expected = scipy.ndimage.correlate(array, kernel, mode=rule, cval=value)
                self.assertEqual(found.dtype, array.dtype)
                numpy.testing.assert_allclose(found, expected, rtol=0, atol=1e-4 if kind == "f4" else 1e-12)

    @unittest.skipUnless(cv2, "opencv is not installed")
    def test_correlation_and_separable_filters_against_opencv(self):
        borders = {"constant:0": "BORDER_CONSTANT", "replicate": "BORDER_REPLICATE", "symmetric": "BORDER_REFLECT"}
        for pad, border in borders.items():
            array = self.random.normal(size=(20, 30)).astype("f4")
            kernel = self.random.normal(size=(5, 3))
            row, column = self.random.normal(size=(2, 7))
            with self.subTest(pad=pad):
                options = "--mode", "same", "--pad", pad
                found = self.filtered(array, "correlate", "--kernel", matrix_text(kernel), *options)
                expected = cv2.filter2D(array, cv2.CV_32F, kernel, borderType=getattr(cv2, border))
                numpy.testing.assert_allclose(found, expected, rtol=0, atol=1e-4)
                found = self.filtered(array, "separable", "--row", matrix_text([row]), "--column", matrix_text([column]),
                                      "--correlate", *options)
                expected = cv2.sepFilter2D(array, cv2.CV_32F, row, column, borderType=getattr(cv2, border))
                numpy.testing.assert_allclose(found, expected, rtol=0, atol=1e-3)


if __name__ == "__main__":
    unittest.main()
