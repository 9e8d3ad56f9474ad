"""What convolve, correlate and separable make of samples, elements, kernels and options. Sums are tested with the library."""

import itertools
import math
import unittest

import numpy
from command_case import CHANNELS, PADS, CommandCase, extended, filtered, matrix_text


class FilterTest(CommandCase):
    def run_on(self, image, operation, *options, depth=8):
        """What comes out for a picture, and what was said."""
        self.write("in.png", image, depth)
        said = self.succeed(operation, "in.png", "out.png", *options)
        samples, out_depth = self.read("out.png")
        self.assertEqual(out_depth, depth)
        return samples, said

    def run_on_array(self, array, operation, *options):
        numpy.save(self.folder / "in.npy", array)
        said = self.succeed(operation, "in.npy", "out.npy", *options)
        return numpy.load(self.folder / "out.npy"), said

    def test_samples_of_every_depth_and_channel_count_with_every_mode_and_pad(self):
        edges = itertools.product(("valid", "same", "full"), ("constant", *PADS))
        shapes = itertools.cycle(itertools.product((8, 16), CHANNELS))
        kernel = self.random.normal(size=(3, 2))
        for (mode, pad), (depth, channels), operation in zip(edges, shapes, itertools.cycle(("convolve", "correlate"))):
            with self.subTest(mode=mode, pad=pad, depth=depth, channels=channels, operation=operation):
                image = self.random_image(9, 7, channels, depth)
                samples, said = self.run_on(image, operation, "--kernel", matrix_text(kernel), "--mode", mode, "--pad",
                                            pad + (":77" if pad == "constant" else ""), "--scale-output", "1/3",
                                            "--offset", "-7.25", depth=depth)
                expected, clipped = filtered(extended(image, kernel.shape, mode, pad, 77), kernel, operation, depth,
                                             scale=1 / 3, offset=-7.25)
                numpy.testing.assert_array_equal(samples, expected)
                self.assertEqual(said.split(" of ")[0], f"orvane: out.png: {clipped}" if clipped else "")

    def test_ties_go_to_even_and_clipping_is_said_unless_quiet(self):
        samples, said = self.run_on(numpy.arange(256).reshape(16, 16, 1), "convolve", "--kernel", "3/2")
        self.assertEqual(samples.ravel()[:6].tolist(), [0, 2, 3, 4, 6, 8])
        self.assertEqual(said, "orvane: out.png: 85 of 256 values were clipped to 0..255 (see --scale-output and --offset)\n")
        self.assertEqual(self.succeed("convolve", "in.png", "out.png", "--kernel", "2", "--quiet"), "")

    def test_named_kernels(self):
        matrices = {
            "box:3": [[1 / 9] * 3] * 3,
            "box:4": [[1 / 16] * 4] * 4,
            "sharpen": [[0, -1, 0], [-1, 5, -1], [0, -1, 0]],
            "laplacian": [[0, 1, 0], [1, -4, 1], [0, 1, 0]],
            "sobel-x": [[-1, 0, 1], [-2, 0, 2], [-1, 0, 1]],
            "sobel-y": [[-1, -2, -1], [0, 0, 0], [1, 2, 1]],
            "prewitt-x": [[-1, 0, 1]] * 3,
            "scharr-y": [[-3, -10, -3], [0, 0, 0], [3, 10, 3]],
            "disk:1.5": [[1 / 9] * 3] * 3,
            "disk:2": numpy.hypot(*numpy.mgrid[-2:3, -2:3]) <= 2,
            "motion:5:0": [[0.2] * 5],
            "motion:3:90": [[1 / 3]] * 3,
        }
        matrices["disk:2"] = matrices["disk:2"] / 13
        for side, sigma in ((5, 1.2), (8, 2.0), (1, 3.0), (31, 0.4)):
            profile = [math.exp(-((i - (side - 1) / 2) ** 2) / (2 * sigma**2)) for i in range(side)]
            matrices[f"gaussian:{side}:{sigma}"] = numpy.outer(profile, profile) / sum(profile) ** 2
        gaussians = {}
        for sigma, reach in ((1.5, 5), (1.5, 6), (0.7, 5)):
            distance = numpy.arange(-reach, reach + 1)
            line = numpy.exp(-distance**2 / (2 * sigma**2))
            gaussians[sigma, reach] = numpy.outer(line, line) / line.sum() ** 2
        squares = numpy.add.outer(numpy.arange(-6, 7) ** 2, numpy.arange(-6, 7) ** 2)
        log = (squares - 2 * 1.5**2) / 1.5**4 * gaussians[1.5, 6]
        matrices |= {"gaussian:1.5": gaussians[1.5, 5], "dog:0.7:1.5": gaussians[0.7, 5] - gaussians[1.5, 5],
                     "log:1.5": log - log.mean()}
        for name, matrix in matrices.items():
            with self.subTest(kernel=name):
                pulse = numpy.zeros(2 * numpy.array(numpy.shape(matrix)) - 1)
                pulse[tuple(numpy.array(pulse.shape) // 2)] = 1
                found, _ = self.run_on_array(pulse, "convolve", "--kernel", name, "--mode", "valid")
                numpy.testing.assert_allclose(found, matrix, rtol=1e-11, atol=1e-17)

    def test_kernel_texts_that_mean_the_same(self):
        (self.folder / "plain.csv").write_text("1,2,1\n2,4,2\n1,2,1\n")
        (self.folder / "spaced.txt").write_text(" 1 2  1\n2\t4\t2 \n1 2 1\n")
        numpy.save(self.folder / "kernel.npy", numpy.array([[1, 2, 1], [2, 4, 2], [1, 2, 1]], "i2"))
        (self.folder / "odd,name.txt").write_bytes(b"\xef\xbb\xbf1, 2, 1\r\n2,+4,2e0\r\n1,2,1\r\n\r\n")
        image = self.random_image(9, 8)
        results = [self.run_on(image, "convolve", "--kernel", *options)[0].tolist() for options in (
            ["1,2,1;2,4,2;1,2,1", "--scale", "1/16"], ["1/16,.125,1/16;0.125,1/4,0.125;0.0625,1/8,1/16"],
            ["plain.csv", "--scale", "0.0625"], ["spaced.txt", "--scale", "1/16"], ["kernel.npy", "--scale", "1/16"], ["odd,name.txt", "--scale", "1/16"])]
        results.append(self.run_on(image, "separable", "--row", "1/4,1/2,1/4", "--column", "1/4;1/2;1/4")[0].tolist())
        self.assertEqual(results, results[:1] * 7)
        turned = self.run_on(image, "separable", "--row", "1,2", "--column", "box:2", "--correlate", "--scale-output", "1/4")
        straight = self.run_on(image, "correlate", "--kernel", "0.5,1;0.5,1", "--scale-output", "1/4")
        self.assertEqual(turned[0].tolist(), straight[0].tolist())

    def test_arrays_are_summed_in_their_own_type_or_in_that_asked_for(self):
        plane = self.random.integers(0, 100, (4, 5))
        results = {"float32": "float32", "float64": "float64", "complex64": "complex64", "complex128": "complex128",
                   "bool float": "float32", "int8 double": "float64", "uint16 float": "float32", "complex64 double": "complex128"}
        for given, result in results.items():
            source, _, asked = given.partition(" ")
            array = numpy.asfortranarray(plane.astype(source))
            with self.subTest(given):
                found, said = self.run_on_array(array, "correlate", "--kernel", "1,2", "--scale-output", "2", "--offset", "-3", "--mode", "valid",
                                                *(["--type", asked] if asked else []))
                expected = (array[:, :-1].astype(result) + array[:, 1:].astype(result) * 2) * 2 - 3
                self.assertEqual((found.dtype, found.tolist(), said), (result, expected.tolist(), ""))
        for array, asked, count in (([2**53, 2**53 + 1, 2**63 - 1, -3], "double", "2 of 4 values were rounded to float64"),
                                    ([0.1, 0.5, numpy.nan], "float", "1 of 3 values were rounded to float32")):
            self.assertIn(f"out.npy: {count}", self.run_on_array(array, "convolve", "--kernel", "1", "--type", asked)[1])
        volume = self.random.integers(-50, 50, (3, 4, 5)).astype(float)
        numpy.save(self.folder / "kernel.npy", volume[:2, :1, :1])
        found, _ = self.run_on_array(volume, "correlate", "--kernel", "kernel.npy", "--nd", "--mode", "valid")
        self.assertEqual(found.tolist(), (volume[:-1] * volume[0, 0, 0] + volume[1:] * volume[1, 0, 0]).tolist())

    def test_fixed_point_and_normalised_sums(self):
        image = self.random_image(16, 9)
        types = "input=u8.0,filter=s8.2,accumulator=s20.2,output=u8.0,rounding=floor,overflow=saturate"
        exact = (3 * image[:, :-1, 0] - image[:, 1:, 0]) / 4
        samples, said = self.run_on(image, "correlate", "--kernel", "0.75,-0.25", "--mode", "valid", "--fixed", types)
        cast = numpy.floor(exact)
        numpy.testing.assert_array_equal(samples[..., 0], cast.clip(0, 255))
        beyond, lossy = int((cast < 0).sum() + (cast > 255).sum()), int((exact != cast).sum())
        self.assertEqual(list(self.table(said).items()), [
            ("input", ["u8.0", 144, 0, 0]), ("filter", ["s8.2", 2, 0, 0]), ("product", ["exact", 270, 0, 0]),
            ("accumulator", ["s20.2", 270, 0, 0]), ("output", ["u8.0", 135, beyond, lossy])])
        found, said = self.run_on_array(image[..., 0] + 1j, "correlate", "--kernel", "1", "--fixed", types)
        self.assertEqual((found.dtype, self.table(said)["output"][1]), ("complex128", 288))
        for fixed in ([], ["--fixed", "input=u8.0,filter=s16.14,accumulator=s40.16,output=s16.8,sqrt=s32.12"]):
            like, _ = self.run_on(image * 0 + 9, "convolve", "--kernel", "box:2", "--normalise", "energy", *fixed,
                                  "--scale-output", "200")
            self.assertEqual(set(like.flat), {200})

    def test_a_grey_picture_into_an_array_gives_sums_that_are_not_rounded(self):
        image = self.random_image(9, 8, depth=16)
        self.write("in.png", image, 16)
        for options, kind in (([], "f8"), (["--fixed", "input=u16.0,filter=u2.1,accumulator=u20.1,output=u20.1"], "f8"),
                              (["--type", "float"], "f4")):
            self.succeed("convolve", "in.png", "out.npy", "--kernel", "0.5,0.5", "--mode", "valid", *options)
            found = numpy.load(self.folder / "out.npy")
            self.assertEqual((found.dtype, found.tolist()), (kind, (0.5 * (image[:, :-1, 0] + image[:, 1:, 0])).tolist()))


if __name__ == "__main__":
    unittest.main()
