"""Template matching of the module beside straightforward sums, and filters beside the command."""

import unittest

import numpy
from command_case import CommandCase

import orvane


class MatchingTest(unittest.TestCase):
    def test_maps_and_best_matches(self):
        random = numpy.random.default_rng(7)
        image = random.integers(0, 9, (20, 23)).astype("float64")
        template = image[6:10, 11:16].copy()
        windows = numpy.lib.stride_tricks.sliding_window_view(image, template.shape)
        less = windows - template
        maps = {"sad": abs(less).sum((2, 3)), "ssd": (less * less).sum((2, 3)), "maxad": abs(less).max((2, 3)),
                "product": (windows * template[::-1, ::-1]).sum((2, 3)),
                "cosine": (windows * template).sum((2, 3)) / numpy.sqrt((windows**2).sum((2, 3)) * (template**2).sum())}
        for metric, expected in maps.items():
            with self.subTest(metric=metric):
                match = orvane.match(image, template, metric=metric, map=True, neighbourhood=3, refine=True)
                numpy.testing.assert_allclose(match.map, expected, rtol=1e-12)
                place = expected.argmax() if metric == "cosine" else expected.argmin()
                best = numpy.unravel_index(place, expected.shape)
                self.assertEqual(match.location, (best[0] + 1, best[1] + 2))
                self.assertEqual(match.window, (slice(best[0], best[0] + 4), slice(best[1], best[1] + 5)))
                self.assertEqual(match.neighbourhood[1, 1], match.score)
        self.assertEqual(orvane.match(image.astype("u1"), template.astype("u1")).score, 0)
        self.assertEqual(orvane.match(image > 4, template > 4).location, (7, 13))
        self.assertIsInstance(orvane.match(image > 4, template > 4).score, int)
        inside = orvane.match(image, template, region=numpy.s_[3:6, :])
        self.assertEqual((inside.positions[0], inside.region_valid), (slice(3, 6), True))
        finder = orvane.Matcher(template, image.shape)
        finder.set_region(numpy.s_[0:4, 0:4])
        self.assertLessEqual(finder.run(image).location, (3, 3))
        peaks = orvane.matches(image, template, 5, distance=4)
        self.assertEqual((len(peaks), peaks[0].location, peaks[0].score), (5, (7, 13), 0))
        with self.assertRaisesRegex(TypeError, "both or neither are bool"):
            orvane.match(image > 4, template)
        with self.assertRaisesRegex(TypeError, "image and template must be real"):
            orvane.matches(image.astype(complex), template, 2)


class CommandTest(CommandCase):
    def test_the_command_gives_the_same_bits(self):
        """Pictures of noise, of a chart, and of steps, by every job, through .npy files."""
        self.succeed("chart", "chart.npy", "--size", "160x128")
        chart = numpy.load(self.folder / "chart.npy")
        chart = chart if chart.ndim == 2 else chart[..., 1].copy()
        pictures = [chart, chart[::2, ::3].copy(), *(self.random.integers(0, 256, shape, numpy.uint8)
                                                     for shape in ((40, 60), (33, 7), (5, 90)))]
        taps = self.random.standard_normal((3, 5))
        kernel = ";".join(",".join(repr(float(tap)) for tap in row) for row in taps)
        for picture, dtype in ((p, t) for p in pictures for t in ("uint8", "float32", "float64")):
            numpy.save(self.folder / "in.npy", picture.astype(dtype))
            own = taps.astype("float32" if dtype == "float32" else "float64")
            row, column = own[0], own[:, 0].copy()
            jobs = {
                ("convolve", "--kernel", kernel, "--pad", "mirror"): lambda a: orvane.convolve(a, own, pad="mirror"),
                ("correlate", "--kernel", kernel, "--mode", "full"): lambda a: orvane.correlate(a, own, mode="full"),
                ("separable", "-r", ",".join(map(repr, map(float, taps[0]))), "-c",
                 ",".join(map(repr, map(float, taps[:, 0])))): lambda a: orvane.separable(a, row, column),
                ("median", "--window", "5x3"): lambda a: orvane.median(a, (3, 5)),
            }
            for (operation, *options), call in jobs.items():
                with self.subTest(dtype=dtype, shape=picture.shape, operation=operation):
                    self.succeed(operation, "in.npy", "out.npy", *options)
                    expected, found = numpy.load(self.folder / "out.npy"), call(picture.astype(dtype))
                    self.assertEqual((found.dtype, found.shape), (expected.dtype, expected.shape))
                    self.assertEqual(found.tobytes(), expected.tobytes())

    def test_colours_as_stacks(self):
        image = self.random_image(31, 23, channels=3)
        self.write("in.png", image)
        self.succeed("convolve", "in.png", "out.png", "--kernel", "0,-1,0;-1,5.5,-1;0,-1,0")
        taps = numpy.array([[0, -1, 0], [-1, 5.5, -1], [0, -1, 0]])
        found = orvane.convolve(image.astype("uint8"), taps, axes=(0, 1), dtype="uint8")
        numpy.testing.assert_array_equal(found, self.read("out.png")[0])


if __name__ == "__main__":
    unittest.main()
