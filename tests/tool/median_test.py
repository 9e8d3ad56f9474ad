"""The median of pictures and arrays against a sort of each window, value for value."""

import itertools
import unittest

import numpy
import png
from command_case import CHANNELS, PADS, CommandCase, extended


def median_of(wide, width, height):
    """The middle of each sorted window over the planes of `wide`; of an even number of values the stated mean."""
    windows = numpy.lib.stride_tricks.sliding_window_view(wide, (height, width), (0, 1))
    ranked = numpy.sort(windows.reshape(*windows.shape[:-2], -1))
    count = width * height
    lower, upper = ranked[..., (count - 1) // 2], ranked[..., count // 2]
    if wide.dtype == bool:
        return upper
    half = wide.dtype.type(0.5) if wide.dtype.kind == "f" else 0.5
    with numpy.errstate(invalid="ignore"):
        return lower if count % 2 else upper * half + lower * half


def median_picture(image, window, mode, pad, value=0, is_bilevel=False):
    width, height = window
    wide = extended(image, (height, width), mode, pad, value)
    colours = image.shape[2] - (image.shape[2] % 2 == 0)
    plane = wide[..., :colours]
    result = median_of(plane.astype(bool) if is_bilevel else plane, width, height)
    centres = wide[(height - 1) // 2:, (width - 1) // 2:][:result.shape[0], :result.shape[1], colours:]
    return numpy.concatenate([numpy.rint(result).astype(int) if not is_bilevel else result.astype(int), centres], 2)


class MedianTest(CommandCase):
    windows = [(1, 1), (3, 3), (2, 3), (4, 2), (1, 5), (6, 9)]

    def edges(self):
        """Every mode with every pad, the constant one by a value of 0 or 1, which all elements have."""
        for mode, pad in itertools.product(("valid", "same", "full"), ("constant", *PADS)):
            value = 1 if mode == "full" and pad == "constant" else 0
            yield mode, pad, value, ("--mode", mode, "--pad", pad + (f":{value}" if value else ""))

    def test_pictures_of_every_depth_and_channel_count(self):
        shapes = itertools.cycle([(1, 1), *((depth, channels) for depth in (8, 16) for channels in CHANNELS)])
        for window, (mode, pad, value, options) in itertools.product(self.windows, self.edges()):
            for (depth, channels), is_coarse in zip(itertools.islice(shapes, 2), (False, True)):
                with self.subTest(window=window, mode=mode, pad=pad, depth=depth, channels=channels):
                    image = self.random_image(11, 10, channels, depth)
                    if is_coarse and depth > 1:
                        image -= image % 2 ** (depth - 2)  # many equal values
                    self.write("in.png", image, depth)
                    said = self.succeed("median", "in.png", "out.png", "--window", "{}x{}".format(*window), *options)
                    samples, out_depth = self.read("out.png")
                    self.assertEqual((out_depth, said), (depth, ""))
                    expected = median_picture(image, window, mode, pad, value, depth == 1)
                    numpy.testing.assert_array_equal(samples, expected)

    def test_one_bit_with_alpha_or_a_palette(self):
        image = self.random_image(9, 8, 1, 1)
        self.write("in.png", image, 1, transparent=0)
        self.succeed("median", "in.png", "out.png", "--window", "2x2")
        with_alpha = numpy.concatenate([image, 255 * image], 2)  # black is what is transparent
        expected = median_picture(with_alpha, (2, 2), "valid", "constant", is_bilevel=True) * [255, 1]
        numpy.testing.assert_array_equal(self.read("out.png")[0], expected)
        # Two colours are colours: a tie gives what lies between them.
        colours = numpy.array([(10, 200, 30), (51, 100, 31)])
        with open(self.folder / "in.png", "wb") as file:
            png.Writer(9, 8, palette=[tuple(map(int, colour)) for colour in colours], bitdepth=1).write(
                file, image[..., 0].tolist())
        self.succeed("median", "in.png", "out.png", "--window", "2x2")
        numpy.testing.assert_array_equal(self.read("out.png")[0],
                                         median_picture(colours[image[..., 0]], (2, 2), "valid", "constant"))

    def filtered(self, array, *options):
        numpy.save(self.folder / "in.npy", array)
        said = self.succeed("median", "in.npy", "out.npy", *options)
        return numpy.load(self.folder / "out.npy"), said

    def test_arrays_keep_their_type(self):
        edges = itertools.cycle(self.edges())
        special = [0.0, -0.0, numpy.inf, -numpy.inf, 1.5, 3e38]
        for dtype in ("f4", "f8", "?", "i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8"):
            whole = dtype[0] in "iu"
            limits = numpy.iinfo(dtype) if whole else None
            for window, (mode, pad, value, options) in zip(self.windows[1:4] * 2, edges):
                with self.subTest(dtype=dtype, window=window, mode=mode, pad=pad):
                    if whole:
                        array = self.random.integers(max(limits.min, -2**52), min(limits.max, 2**52), (9, 10), dtype,
                                                     endpoint=True)
                    else:
                        array = numpy.where(self.random.random((9, 10)) < 0.3, self.random.choice(special, (9, 10)),
                                            self.random.normal(size=(9, 10))).astype(dtype)
                        array = self.random.random((9, 10)) < 0.5 if dtype == "?" else array
                    wide = extended(array[..., None], window[::-1], mode, pad, value)[..., 0]
                    expected = median_of(wide.astype("f8") if whole else wide, *window)
                    halves = int((expected != numpy.rint(expected)).sum()) if whole else 0
                    actual, said = self.filtered(array, "--window", "{}x{}".format(*window), *options)
                    self.assertEqual(actual.dtype, array.dtype)
                    numpy.testing.assert_array_equal(actual, numpy.rint(expected).astype(dtype) if whole else expected)
                    self.assertEqual(said.split(" means")[0],
                                     f"orvane: out.npy: {halves} of {actual.size} values were" if halves else "")

    def test_fixed_point_casts_and_counts(self):
        image = self.random_image(12, 9, 3)
        self.write("in.png", image)
        array = self.random.integers(-700, 700, (9, 12)) / 4
        for rounding, function in (("floor", numpy.floor), ("ceiling", numpy.ceil), ("convergent", numpy.rint)):
            with self.subTest(rounding=rounding):
                said = self.succeed("median", "in.png", "out.png", "--window", "2x3", "--mode", "same", "--pad",
                                    "constant:3", "--fixed", f"input=u9.1,output=s8.0,rounding={rounding}")
                exact = median_of(extended(image, (3, 2), "same", "constant", 3).astype(float), 2, 3)
                cast = function(exact)
                numpy.testing.assert_array_equal(self.read("out.png")[0], cast.clip(0, 127))
                self.assertEqual(self.table(said), {
                    "input": ["u9.1", 324, 0, 0],
                    "output": ["s8.0", 324, (cast > 127).sum(), (cast != exact).sum()]})
                # The sum of the two in the middle overflows in 8 bits, and their mean is rounded there.
                actual, said = self.filtered(array, "--window", "4x2", "--fixed",
                                             f"input=s10.1,accumulator=s8.0,rounding={rounding}")
                ranked = numpy.lib.stride_tricks.sliding_window_view(function(2 * array) / 2, (2, 4))
                lower, upper = (numpy.sort(ranked.reshape(8, 9, 8))[..., k] for k in (3, 4))
                total = function(function(lower).clip(-128, 127) + upper).clip(-128, 127)
                numpy.testing.assert_array_equal(actual, function(total / 2))
                self.assertEqual(self.table(said)["output"], ["s10.1", 72, 0, 0])

    def test_lines(self):
        line = self.random.normal(size=20)
        actual, _ = self.filtered(line, "--window", "4", "--mode", "same", "--pad", "constant:0.25")
        expected = median_of(numpy.pad(line, (1, 2), constant_values=0.25)[None, :], 4, 1)[0]
        numpy.testing.assert_array_equal(actual, expected)


if __name__ == "__main__":
    unittest.main()
