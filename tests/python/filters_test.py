"""Filters of the module beside SciPy and NumPy."""

import itertools
import unittest

import numpy
from scipy import ndimage

import orvane

PADS = {"constant": "constant", "replicate": "edge", "symmetric": "symmetric", "circular": "wrap", "mirror": "reflect"}
RANDOM = numpy.random.default_rng(5)


def random_array(shape, dtype):
    dtype = numpy.dtype(dtype)
    if dtype.kind in "iu":
        info = numpy.iinfo(dtype)
        return RANDOM.integers(info.min, info.max, shape, dtype, endpoint=True)
    if dtype.kind == "b":
        return RANDOM.random(shape) < 0.4
    values = RANDOM.standard_normal(shape)
    return (values + 1j * RANDOM.standard_normal(shape) if dtype.kind == "c" else values).astype(dtype)


def windows_of(array, window, mode, pad, value=0):
    """The window of each output, with NumPy's padding."""
    if mode != "valid":
        lead = [(h - 1) // 2 if mode == "same" else h - 1 for h in window]
        widths = [(before, h - 1 - before if mode == "same" else before) for before, h in zip(lead, window)]
        more = {"constant_values": value} if pad == "constant" else {}
        array = numpy.pad(array, widths, PADS[pad], **more)
    return numpy.lib.stride_tricks.sliding_window_view(array, window)


def sums(array, taps, mode, pad, value, dtype):
    """Sums in the order that is promised, each operation rounded once."""
    windows = windows_of(array.astype(dtype), taps.shape, mode, pad, value)
    total = numpy.zeros(windows.shape[:taps.ndim], dtype)
    for index in numpy.ndindex(*taps.shape):
        total = total + windows[(..., *index)] * taps[index]
    return total


class FiltersTest(unittest.TestCase):
    def test_bits_of_all_ranks_modes_pads_and_types(self):
        """Products in the order of the filter's elements give the bits of the library, in any number of axes."""
        cases = itertools.product(((17,), (9, 14), (5, 6, 7), (3, 4, 5, 4)), ("valid", "same", "full"), PADS,
                                  ("float32", "float64"))
        inputs = itertools.cycle(("own", "uint8", "int16", "own", "int8", "uint16"))
        for (shape, mode, pad, dtype), kind in zip(cases, inputs):
            with self.subTest(shape=shape, mode=mode, pad=pad, dtype=dtype, input=kind):
                array = random_array(shape, dtype if kind == "own" else kind)
                taps = random_array((2, 3, 4, 3)[:len(shape)], dtype)
                options = {"mode": mode, "pad": pad, "pad_value": 3}
                expected = sums(array, taps, mode, pad, 3, dtype)
                numpy.testing.assert_array_equal(orvane.correlate(array, taps, **options), expected)
                numpy.testing.assert_array_equal(
                    orvane.convolve(array, numpy.flip(taps), **options), expected)

    def test_complex_elements(self):
        for first, second in (("complex64", "float32"), ("float32", "complex64"), ("complex128", "complex128"),
                              ("uint8", "complex64")):
            array, taps = random_array((8, 9), first), random_array((3, 2), second)
            found = orvane.convolve(array, taps, mode="valid")
            expected = sums(array.astype("complex128"), numpy.flip(taps), "valid", "mirror", 0, "complex128")
            numpy.testing.assert_allclose(found, expected, rtol=1e-4, atol=1e-3)
            self.assertEqual(found.dtype, "complex128" if second == "complex128" else "complex64")

    def test_names_of_scipy_mean_the_same(self):
        array, taps = random_array((12, 13), "float64"), random_array((3, 5), "float64")
        for name in ("constant", "nearest", "mirror", "wrap", "grid-wrap", "grid-mirror", "grid-constant"):
            expected = ndimage.correlate(array, taps, mode=name, cval=2)
            numpy.testing.assert_allclose(orvane.correlate(array, taps, pad=name, pad_value=2), expected, rtol=1e-12)
            expected = ndimage.median_filter(array, (3, 5), mode=name, cval=2)
            numpy.testing.assert_array_equal(orvane.median(array, (3, 5), pad=name, pad_value=2), expected)
        reflected = ndimage.correlate(array, taps, mode="reflect")
        numpy.testing.assert_allclose(orvane.correlate(array, taps, pad="symmetric"), reflected, rtol=1e-12)

    def test_separable_and_rounding(self):
        array = random_array((20, 30), "uint8")
        row, column = numpy.float32([1, 2, 1]) / 4, numpy.float32([1, 4, 6, 4, 1]) / 16
        found = orvane.separable(array, row, column, pad="symmetric")
        expected = ndimage.correlate1d(ndimage.correlate1d(array.astype("f4"), row, 1), column, 0)
        numpy.testing.assert_allclose(found, expected, rtol=1e-5)
        rounded = orvane.separable(array, row, column, pad="symmetric", dtype="uint8")
        numpy.testing.assert_array_equal(rounded, numpy.rint(found).astype("uint8"))
        job = orvane.Convolution(numpy.float32([[2]]), array.shape, "uint8")
        bright = job.run(array, dtype=numpy.uint8)
        numpy.testing.assert_array_equal(bright, numpy.minimum(2 * array.astype(int), 255))
        self.assertEqual(job.clipped, int((array > 127).sum()))

    def test_medians(self):
        for dtype in ("float32", "float64", "bool", "int8", "uint8", "int16", "uint16", "int32", "uint32"):
            array = random_array((11, 16), dtype)
            expected = ndimage.median_filter(array.astype("f8"), 5, mode="mirror").astype(dtype)
            numpy.testing.assert_array_equal(orvane.median(array, 5, pad="mirror"), expected)
        line = random_array((40,), "float32")
        numpy.testing.assert_array_equal(orvane.median(line, 7), ndimage.median_filter(line, 7, mode="nearest"))

    def test_regions_are_parts_of_the_whole(self):
        array, taps = random_array((9, 14), "float32"), random_array((4, 3), "float32")
        for mode, first in (("valid", (1, 1)), ("same", (0, 0)), ("full", (-2, -1))):
            whole = orvane.convolve(array, taps, mode=mode)
            job = orvane.Convolution(taps, array.shape, mode=mode)
            self.assertEqual(tuple(s.start for s in job.positions), first)
            for region in (numpy.s_[2:6, 3:9], numpy.s_[:3, 5:], numpy.s_[-2**80:4, :2**62], numpy.s_[5:5, :]):
                clipped = tuple(slice(max(r.start if r.start is not None else p.start, p.start) - p.start,
                                      max((r.stop if r.stop is not None else p.stop) - p.start, 0))
                                for r, p in zip(region, job.positions))
                found = orvane.convolve(array, taps, mode=mode, region=region)
                if whole[clipped].size:
                    numpy.testing.assert_array_equal(found, whole[clipped])
                self.assertEqual(found.size, whole[clipped].size)

    def test_stacks(self):
        stack, taps = random_array((4, 10, 11, 3), "float32"), random_array((3, 2), "float32")
        for axes in ((1, 2), (-2, 0), (3, 1)):
            last = numpy.moveaxis(stack, axes, (-2, -1))
            expected = numpy.empty(last.shape[:2] + (last.shape[2] - 2, last.shape[3] - 1), "float32")
            for index in numpy.ndindex(last.shape[:2]):
                expected[index] = orvane.convolve(last[index].copy(), taps, mode="valid")
            expected = numpy.moveaxis(expected, (-2, -1), axes)
            numpy.testing.assert_array_equal(orvane.convolve(stack, taps, mode="valid", axes=axes), expected)
            out = numpy.zeros_like(expected)
            fractions = []
            found = orvane.convolve(stack, taps, mode="valid", axes=axes, out=out, progress=fractions.append)
            self.assertIs(found, out)
            numpy.testing.assert_array_equal(out, expected)
            self.assertEqual((fractions, fractions[-1]), (sorted(fractions), 1))
        numpy.testing.assert_array_equal(orvane.median(stack, 3, axes=1),
                                         ndimage.median_filter(stack, (1, 3, 1, 1), mode="nearest"))

    def test_fixed_point(self):
        """In a line: products in s20.6, rounded and clipped; filters, matching and medians count what happens."""
        pixels = random_array((12, 15), "uint8")
        taps = orvane.quantise([[-0.25, 1.5, -0.25]], "s8.6")
        job = orvane.FixedConvolution(taps, pixels.shape, input="u8.0", accumulator="s20.6", output="u8.0",
                                      pad="mirror", direction="correlation", rounding="convergent")
        exact = ndimage.correlate(pixels.astype("f8"), taps.to_float(), mode="mirror")
        numpy.testing.assert_array_equal(job.run(pixels).raw, numpy.clip(numpy.rint(exact), 0, 255))
        output = next(s for s in job.statistics() if s.label == "output")
        self.assertEqual((output.casts, output.overflows),
                         (pixels.size, int(((numpy.rint(exact) < 0) | (numpy.rint(exact) > 255)).sum())))
        self.assertEqual(len(job.paths), 1)
        wide = orvane.quantise(numpy.array([1.5 - 2j, 2**40]), "s100.30")
        self.assertEqual(wide.raw.dtype["re"]["low"], numpy.uint64)
        numpy.testing.assert_array_equal(wide.to_float(), [1.5 - 2j, 2**40])
        middle = orvane.FixedMedian(3, pixels.shape, input="u8.0", gather="counts")
        numpy.testing.assert_array_equal(middle.run(pixels).raw, orvane.median(pixels, 3))
        find = orvane.FixedMatcher(orvane.FixedArray(pixels[3:7, 5:10], orvane.FixedType("u8.0")), pixels.shape,
                                   input="u8.0", accumulator="s20.0", output="u16.0", map=True)
        match = find.run(pixels)
        self.assertEqual((match.score, match.window), (0, numpy.s_[3:7, 5:10]))
        numpy.testing.assert_array_equal(match.map, orvane.match(pixels, pixels[3:7, 5:10], map=True).map)

    def test_refusals(self):
        picture = numpy.zeros((6, 7), numpy.float32)
        cases = (
            (ValueError, "pad: reflect.*mirror.*NumPy.*symmetric.*SciPy",
             lambda: orvane.convolve(picture, [[1]], pad="reflect")),
            (ValueError, "pad: linear_ramp; allowed are constant, replicate",
             lambda: orvane.median(picture, 3, pad="linear_ramp")),
            (ValueError, "mode: all; allowed are valid, same, full",
             lambda: orvane.convolve(picture, [[1]], mode="all")),
            (ValueError, "filter: extent 9 in dimension 0; with mode valid",
             lambda: orvane.convolve(picture, numpy.ones((1, 9)).astype("f4"), mode="valid")),
            (ValueError, "filter: 1 axes; the input has 2; axes=", lambda: orvane.convolve(picture, [1, 2])),
            (ValueError, "axes: .*needs 2 different axes", lambda: orvane.convolve(picture, [[1]], axes=(1, 1))),
            (ValueError, "integers that float32 does not hold", lambda: orvane.convolve(picture, [[2**24 + 1]])),
            (TypeError, "differ in precision", lambda: orvane.convolve(picture, numpy.ones((3, 3)))),
            (TypeError, "float does not hold all integers of 32 bits",
             lambda: orvane.convolve(picture.astype("i4"), numpy.float32([[1]]))),
            (TypeError, "bool inputs have no sums", lambda: orvane.convolve(picture > 0, [[1]])),
            (TypeError, "dtype: elements of float16; allowed are bool",
             lambda: orvane.convolve(picture.astype("f2"), [[1.0]])),
            (TypeError, "elements of int64", lambda: orvane.median(picture.astype("i8"), 3)),
            (TypeError, "complex numbers have no order", lambda: orvane.median(picture.astype("c8"), 3)),
            (TypeError, "filter: elements of <U1", lambda: orvane.convolve(picture, [["a"]])),
            (TypeError, "more than 2 dimensions are real",
             lambda: orvane.convolve(picture.astype("c8")[None], [[[1]]])),
            (ValueError, "normalise: energy; allowed is none",
             lambda: orvane.convolve(picture[None], [[[1]]], normalise="energy")),
            (ValueError, "region: 1 slices; the input has 2 axes",
             lambda: orvane.median(picture, 3, region=numpy.s_[1:2])),
            (ValueError, "without a step", lambda: orvane.median(picture, 3, region=numpy.s_[1:2, ::2])),
            (ValueError, "shape: 1180591620717411303424; allowed", lambda: orvane.Median(3, (2**70, 4))),
            (ValueError, "threads: -1; allowed", lambda: orvane.median(picture, 3, threads=-1)),
            (TypeError, "threads: 'x'; it must be an integer", lambda: orvane.median(picture, 3, threads="x")),
            (ValueError, "input: shape \\(7, 6\\); it must be \\(6, 7\\)",
             lambda: orvane.Median(3, (6, 7), "f4").run(picture.T)),
            (TypeError, "input: elements of float64; they must be float32",
             lambda: orvane.Median(3, (6, 7), "f4").run(picture.astype(float))),
            (TypeError, "progress: it must be a callable", lambda: orvane.median(picture, 3, progress=3)),
            (ValueError, "FixedType|type|s8", lambda: orvane.FixedType("q8.1")),
            (TypeError, "must be a FixedArray",
             lambda: orvane.FixedConvolution([1], 3, input="u8.0", accumulator="s9.0", output="u8.0")),
            (TypeError, "values of u8.0 lie in uint8",
             lambda: orvane.FixedMedian(3, (6, 7), input="u8.0").run(picture)),
        )
        for number, (kind, text, call) in enumerate(cases):
            with self.subTest(number=number), self.assertRaisesRegex(kind, text):
                call()

    def test_plan_covers_all_outputs_once(self):
        for mode, window in itertools.product(("valid", "same", "full"), ((3, 4), (9, 2), (5, 5))):
            if mode == "valid" and window[0] > 8:
                continue
            plan = orvane.plan((8, 10), window, mode=mode)
            first = tuple(s.start for s in plan.output)
            seen = numpy.zeros(tuple(s.stop - s.start for s in plan.output), int)
            for sector in plan.sectors:
                seen[tuple(slice(s.start - f, s.stop - f) for s, f in zip(sector.positions, first))] += 1
            self.assertTrue((seen == 1).all())
            self.assertEqual(seen.shape, orvane.Median(window, (8, 10), "f4", mode=mode).output_shape)


if __name__ == "__main__":
    unittest.main()
