"""How the median treats samples, elements and types. Its arithmetic is tested with the library."""

import itertools
import unittest

import numpy
import png
from command_case import CHANNELS, CommandCase, extended


def median_of(wide, width, height):
    """The middle of each sorted window over the planes of `wide`; of an even number of values the stated mean."""
    windows = numpy.lib.stride_tricks.sliding_window_view(wide, (height, width), (0, 1))
    ranked = numpy.sort(windows.reshape(*windows.shape[:-2], -1))
    lower, upper = ranked[..., (width * height - 1) // 2], ranked[..., width * height // 2]
    return upper if wide.dtype == bool else (lower + upper) / 2


class MedianTest(CommandCase):
    def test_pictures_of_every_depth_and_channel_count(self):
        windows = itertools.cycle([(3, 3), (2, 3), (4, 2)])
        for (depth, channels), (width, height) in zip([(1, 1), *itertools.product((8, 16), CHANNELS)], windows):
            with self.subTest(depth=depth, channels=channels, window=(width, height)):
                image = self.random_image(11, 10, channels, depth)
                self.write("in.png", image, depth)
                said = self.succeed("median", "in.png", "out.png", "--window", f"{width}x{height}", "--mode", "same",
                                    "--pad", "constant:1")
                samples, out_depth = self.read("out.png")
                self.assertEqual((out_depth, said), (depth, ""))
                wide = extended(image, (height, width), "same", "constant", 1)
                expected = numpy.rint(median_of(wide.astype(bool) if depth == 1 else wide, width, height))
                expected[..., channels - (channels % 2 == 0):] = image[..., channels - (channels % 2 == 0):]
                numpy.testing.assert_array_equal(samples, expected)

    def test_one_bit_with_alpha_or_a_palette(self):
        image = self.random_image(9, 8, 1, 1)
        self.write("in.png", image, 1, transparent=0)
        self.succeed("median", "in.png", "out.png", "--window", "2x2", "--mode", "valid")
        expected = 255 * numpy.concatenate([median_of(image > 0, 2, 2), image[:-1, :-1]], 2)  # black is transparent
        numpy.testing.assert_array_equal(self.read("out.png")[0], expected)
        # Two colours are colours: a tie gives what lies between them.
        colours = numpy.array([(10, 200, 30), (51, 100, 31)])
        with open(self.folder / "in.png", "wb") as file:
            png.Writer(9, 8, palette=[tuple(map(int, colour)) for colour in colours], bitdepth=1).write(
                file, image[..., 0].tolist())
        self.succeed("median", "in.png", "out.png", "--window", "2x2", "--mode", "valid")
        numpy.testing.assert_array_equal(self.read("out.png")[0], numpy.rint(median_of(colours[image[..., 0]], 2, 2)))

    def filtered(self, array, *options):
        numpy.save(self.folder / "in.npy", array)
        said = self.succeed("median", "in.npy", "out.npy", *options)
        return numpy.load(self.folder / "out.npy"), said

    def test_arrays_keep_their_type_and_means_are_rounded_to_even(self):
        for dtype in ("f4", "f8", "?", "i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8"):
            with self.subTest(dtype=dtype):
                limits = numpy.iinfo(dtype) if dtype[0] in "iu" else numpy.iinfo("i2")
                array = self.random.integers(max(limits.min, -2**52), min(limits.max, 2**52), (9, 10)).astype(dtype)
                exact = median_of(array if dtype == "?" else array.astype("f8"), 4, 2)
                halves = int((exact != numpy.rint(exact)).sum()) if dtype[0] in "iu" else 0
                actual, said = self.filtered(array, "--window", "4x2", "--mode", "valid")
                self.assertEqual(actual.dtype, array.dtype)
                numpy.testing.assert_array_equal(actual, numpy.rint(exact).astype(dtype) if halves else exact)
                self.assertEqual(said.split(" means")[0],
                                 f"orvane: out.npy: {halves} of {actual.size} values were" if halves else "")
        self.assertEqual(self.filtered(numpy.array([5.0, 1, 4, 2]), "--window", "3")[0].tolist(), [5, 4, 2, 2])

    def test_fixed_point_casts_and_counts(self):
        image = self.random_image(12, 9, 3)
        self.write("in.png", image)
        said = self.succeed("median", "in.png", "out.png", "--window", "2x3", "--mode", "same", "--pad", "constant:3",
                            "--fixed", "input=u9.1,output=s8.0,rounding=floor")
        exact = median_of(extended(image, (3, 2), "same", "constant", 3), 2, 3)
        cast = numpy.floor(exact)
        numpy.testing.assert_array_equal(self.read("out.png")[0], cast.clip(0, 127))
        self.assertEqual(self.table(said), {"input": ["u9.1", 324, 0, 0],
                                            "output": ["s8.0", 324, (cast > 127).sum(), (cast != exact).sum()]})


if __name__ == "__main__":
    unittest.main()
