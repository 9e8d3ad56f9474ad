"""Modes, pads, types and fixed point of the filtering operations, sample for sample."""

import itertools
import unittest

import numpy
from command_case import CHANNELS, PADS, CommandCase, extended, filtered, matrix_text

MODES = ("valid", "same", "full")


class FilterOptionsTest(CommandCase):
    def run_on(self, image, operation, *options):
        """What comes out for `image`, and what was said."""
        self.write("in.png", image)
        said = self.succeed(operation, "in.png", "out.png", *options)
        return self.read("out.png")[0], said

    def test_every_mode_and_pad_for_every_channel_count(self):
        for (mode, pad), channels in zip(itertools.product(MODES, ("constant", *PADS)), itertools.cycle(CHANNELS)):
            for shape in ((1, 1), (3, 2), (4, 5), *([(8, 10)] if mode != "valid" else [])):
                with self.subTest(mode=mode, pad=pad, channels=channels, shape=shape):
                    kernel = self.random.normal(size=shape)
                    image = self.random_image(9, 7, channels)
                    value = 77 if pad == "constant" else 0
                    expected = extended(image, shape, mode, pad, value)
                    for operation in ("convolve", "correlate"):
                        actual, _ = self.run_on(image, operation, "--kernel", matrix_text(kernel), "--mode", mode,
                                                "--pad", pad + (f":{value}" if value else ""))
                        numpy.testing.assert_array_equal(actual, filtered(expected, kernel, operation)[0])

    def test_separable_is_the_product_of_row_and_column_and_faster_forms_of_both(self):
        image = self.random_image(12, 10, 2)
        row, column = [1, -2, 3, 0], [0.5, 4, 1]
        for (mode, pad), correlates in itertools.product(itertools.product(MODES, PADS), (False, True)):
            with self.subTest(mode=mode, pad=pad, correlates=correlates):
                options = ("--mode", mode, "--pad", pad, "--scale-output", "1/4", "--offset", "100")
                actual, _ = self.run_on(image, "separable", "--row", "1,-2,3,0", "--column", "0.5;4;1",
                                        *(["--correlate"] if correlates else []), *options)
                expected, _ = filtered(extended(image, (3, 4), mode, pad), numpy.outer(column, row),
                                       "correlate" if correlates else "convolve", scale=0.25, offset=100)
                numpy.testing.assert_array_equal(actual, expected)
        smooth, _ = self.run_on(image, "separable", "--row", "gaussian:5:1.5", "--column", "box:3")
        bell = numpy.exp(-numpy.arange(-2, 3) ** 2 / 4.5)
        expected, _ = filtered(image, numpy.outer([1 / 3] * 3, bell / bell.sum()), "convolve")
        self.assertLessEqual(abs(smooth - expected).max(), 1)

    def test_float_sums_round_after_every_operation(self):
        image = self.random_image(20, 10)
        kernel = numpy.array([[2**22 / 3, 0.3, -(2**22) / 3, 0.7]], dtype=numpy.float32)
        total = numpy.zeros((10, 17), dtype=numpy.float32)
        for x, tap in enumerate(kernel[0]):
            total = total + image[:, x:x + 17, 0].astype(numpy.float32) * tap
        options = ("--kernel", matrix_text(kernel), "--scale-output", "1/65536", "--offset", "128")
        actual, _ = self.run_on(image, "correlate", "--type", "float", *options)
        expected = numpy.rint(total.astype(float) / 65536 + 128).clip(0, 255)
        numpy.testing.assert_array_equal(actual[..., 0], expected)
        fine = ("--kernel", matrix_text(kernel))
        self.assertGreater((self.run_on(image, "correlate", "--type", "float", *fine)[0] !=
                            self.run_on(image, "correlate", *fine)[0]).sum(), 0)

    def test_normalised_sums_measure_likeness(self):
        image = self.random_image(15, 12)
        kernel = self.random.normal(size=(3, 4))
        actual, _ = self.run_on(image, "correlate", "--kernel", matrix_text(kernel), "--normalise", "energy",
                                "--scale-output", "100", "--offset", "128")
        windows = numpy.lib.stride_tricks.sliding_window_view(image[..., 0].astype(float), (3, 4))
        norms = numpy.sqrt((windows**2).sum((2, 3)) * (kernel**2).sum())
        expected = 100 * (windows * kernel).sum((2, 3)) / norms + 128
        self.assertLessEqual(abs(actual[..., 0] - expected).max(), 0.5 + 1e-9)
        blank = numpy.zeros((4, 4, 1), dtype=int)
        self.assertEqual(self.run_on(blank, "correlate", "--kernel", "1,1", "--normalise", "energy")[0].max(), 0)

    def test_fixed_point_casts_and_counts(self):
        image = self.random_image(16, 9)
        types = "input=u8.0,filter=s8.2,accumulator=s20.2,output=u8.0,rounding={},overflow=saturate"
        exact = (3 * image[:, :-1, 0] - image[:, 1:, 0]) / 4
        for rounding, function in (("floor", numpy.floor), ("ceiling", numpy.ceil), ("convergent", numpy.rint)):
            with self.subTest(rounding=rounding):
                actual, said = self.run_on(image, "correlate", "--kernel", "0.75,-0.25", "--fixed",
                                           types.format(rounding))
                cast = function(exact)
                numpy.testing.assert_array_equal(actual[..., 0], cast.clip(0, 255))
                beyond, lossy = int((cast < 0).sum() + (cast > 255).sum()), int((exact != numpy.floor(exact)).sum())
                self.assertEqual(list(self.table(said).items()), [
                    ("input", ["u8.0", 144, 0, 0]), ("filter", ["s8.2", 2, 0, 0]), ("product", ["exact", 270, 0, 0]),
                    ("accumulator", ["s20.2", 270, 0, 0]), ("output", ["u8.0", 135, beyond, lossy])])

    def test_a_grey_picture_into_an_array_gives_sums_that_are_not_rounded(self):
        image = self.random_image(9, 8, depth=16)
        self.write("in.png", image, 16)
        for options, scale in (([], 1), (["--fixed", "input=u16.0,filter=u2.1,accumulator=u20.1,output=u20.1"], 1),
                               (["--type", "float", "--scale-output", "1/4"], 0.25)):
            self.succeed("convolve", "in.png", "out.npy", "--kernel", "0.5,0.5,0.5", *options)
            found = numpy.load(self.folder / "out.npy")
            self.assertEqual(found.dtype, "f4" if "float" in options else "f8")
            plane = image[..., 0].astype(float)
            numpy.testing.assert_array_equal(found, scale * 0.5 * (plane[:, :-2] + plane[:, 1:-1] + plane[:, 2:]))

    def test_fixed_point_in_separable_and_normalised_filters(self):
        image = self.random_image(9, 8)
        types = "input=u8.0,filter=u4.0,accumulator=u20.0,output=u16.0"
        actual, said = self.run_on(image, "separable", "--row", "1,2", "--column", "1,2,1", "--fixed", types,
                                   "--scale-output", "1/12")
        expected, _ = filtered(image, numpy.outer([1, 2, 1], [1, 2]), "convolve", scale=1 / 12)
        numpy.testing.assert_array_equal(actual, expected)
        self.assertEqual(self.table(said)["second product"], ["exact", 6 * 8 * 3, 0, 0])
        like, _ = self.run_on(image // 4 * 0 + 9, "convolve", "--kernel", "box:2", "--normalise", "energy", "--fixed",
                              "input=u8.0,filter=s16.14,accumulator=s40.16,output=s16.8,sqrt=s32.12",
                              "--scale-output", "200")
        numpy.testing.assert_array_equal(like, 200)


if __name__ == "__main__":
    unittest.main()
