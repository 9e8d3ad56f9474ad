"""Pictures through the command against a sum in the stated order, sample for sample."""

import itertools
import math
import unittest

import numpy
from command_case import CHANNELS, CommandCase, filtered, matrix_text


class FilterTest(CommandCase):
    def check(self, image, kernel, operation, *options, depth=8, **scaling):
        """Filters `image` with the matrix `kernel`; samples, depth and the number of clipped ones must be right."""
        self.write("in.png", image, depth)
        said = self.succeed(operation, "in.png", "out.png", "--kernel", matrix_text(kernel), *options)
        expected, clipped = filtered(image, kernel, operation, depth, **scaling)
        samples, out_depth = self.read("out.png")
        self.assertEqual(out_depth, depth)
        numpy.testing.assert_array_equal(samples, expected)
        self.assertEqual(said.split(" of ")[0], f"orvane: out.png: {clipped}" if clipped else "")

    def test_samples_of_every_shape_depth_and_channel_count(self):
        sizes = [((1, 1), (1, 1)), ((17, 9), (3, 3)), ((64, 48), (4, 2)), ((33, 7), (1, 7)), ((150, 101), (5, 4))]
        for (size, window), depth, channels in itertools.product(sizes, (8, 16), CHANNELS):
            with self.subTest(size=size, window=window, depth=depth, channels=channels):
                kernel = self.random.normal(size=window[::-1])
                for operation in ("convolve", "correlate"):
                    self.check(self.random_image(*size, channels, depth), kernel, operation, "--scale-output", "1/3",
                               "--offset", "-7.25", depth=depth, scale=1 / 3, offset=-7.25)

    def test_sums_that_a_fused_or_reordered_addition_would_change(self):
        # Equal columns make the large terms cancel; what the last place of their partial sum left of the small term
        # comes out, in steps of many grey levels. A fused product would add the error of the large one.
        image = numpy.tile(self.random_image(2, 30, depth=16), (1, 20, 1))
        kernel = [[2.0**42 / 3, 0.3, -(2.0**42) / 3, 0.7]]
        expected = filtered(image, kernel, "correlate", 16)[0]
        cancelled_first = numpy.rint(0.3 * image[:, 1:-2] + 0.7 * image[:, 3:])
        self.assertGreater((expected != cancelled_first).mean(), 0.5)
        for operation in ("convolve", "correlate"):
            self.check(image, kernel, operation, depth=16)

    def test_ties_go_to_even(self):
        self.write("in.png", numpy.arange(256).reshape(16, 16, 1))
        self.succeed("convolve", "in.png", "out.png", "--kernel", "1/2")
        self.assertEqual(self.read("out.png")[0].ravel()[:8].tolist(), [0, 0, 1, 2, 2, 2, 3, 4])

    def test_named_kernels(self):
        image = self.random_image(30, 20, 3)
        self.write("in.png", image)
        matrices = {
            "box:3": [[1 / 9] * 3] * 3,
            "box:4": [[1 / 16] * 4] * 4,
            "sharpen": [[0, -1, 0], [-1, 5, -1], [0, -1, 0]],
            "laplacian": [[0, 1, 0], [1, -4, 1], [0, 1, 0]],
            "sobel-x": [[-1, 0, 1], [-2, 0, 2], [-1, 0, 1]],
            "sobel-y": [[-1, -2, -1], [0, 0, 0], [1, 2, 1]],
        }
        for name, operation in itertools.product(matrices, ("convolve", "correlate")):
            with self.subTest(kernel=name, operation=operation):
                self.succeed(operation, "in.png", "out.png", "--kernel", name)
                numpy.testing.assert_array_equal(self.read("out.png")[0], filtered(image, matrices[name], operation)[0])

    def test_gaussian_is_the_normalised_bell(self):
        for side, sigma in ((5, 1.2), (8, 2.0), (1, 3.0), (31, 0.4)):
            with self.subTest(side=side, sigma=sigma):
                image = numpy.zeros((2 * side - 1, 2 * side - 1, 1), dtype=int)
                image[side - 1, side - 1] = 1
                self.write("in.png", image, 16)
                self.succeed("correlate", "in.png", "out.png", "--kernel", f"gaussian:{side}:{sigma}",
                             "--scale-output", "65535")
                profile = [math.exp(-((i - (side - 1) / 2) ** 2) / (2 * sigma**2)) for i in range(side)]
                bell = numpy.outer(profile, profile)
                difference = self.read("out.png")[0][..., 0] - 65535 * bell / bell.sum()
                self.assertLessEqual(abs(difference).max(), 0.5 + 1e-9)

    def test_kernel_texts_that_mean_the_same(self):
        (self.folder / "plain.csv").write_text("1,2,1\n2,4,2\n1,2,1\n")
        (self.folder / "odd,name.txt").write_bytes(b"\xef\xbb\xbf1, 2, 1\r\n2,+4,2e0\r\n1,2,1\r\n\r\n")
        self.write("in.png", self.random_image(9, 8))
        results = []
        for options in (["1,2,1;2,4,2;1,2,1", "--scale", "1/16"], ["1/16,.125,1/16;0.125,1/4,0.125;0.0625,1/8,1/16"],
                        ["plain.csv", "--scale", "0.0625"], ["odd,name.txt", "--scale", "1/16"]):
            self.succeed("convolve", "in.png", "out.png", "--kernel", *options)
            results.append(self.read("out.png")[0].tolist())
        self.assertEqual(results, results[:1] * 4)


if __name__ == "__main__":
    unittest.main()
