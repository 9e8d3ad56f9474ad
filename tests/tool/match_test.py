"""The operations that find a template, and that cut one out, against a plain model."""

import json
import unittest

import numpy
from command_case import CommandCase

METRICS = ("sad", "ssd", "maxad", "product")


def level(value):
    """What comparisons look at."""
    return value.real**2 + value.imag**2 if numpy.iscomplexobj(value) else value


def score_of(window, pattern, metric):
    """The score of one position, in the type of the elements, element by element."""
    kind = numpy.result_type(window, pattern)
    if kind == bool:
        window, pattern, kind = window.astype(int), pattern.astype(int), numpy.dtype(int)
    total = kind.type(0)
    partners = pattern[::-1, ::-1] if metric == "product" else pattern
    for a, t in zip(window.astype(kind).flat, partners.astype(kind).flat):
        if metric == "product":
            total = total + a * t
        elif metric == "ssd":
            total = (a - t) * (a - t) + total
        else:
            # Complex differences are turned round, not made positive.
            d = a - t if level(a) > level(t) else t - a
            total = total + d if metric == "sad" else d if level(d) > level(total) else total
    return total


def score_map(image, pattern, metric, mode="valid"):
    """Scores of all positions, and the first of them (column, row)."""
    (height, width), (rows, columns) = image.shape, pattern.shape
    extra = {"valid": (0, 0), "same": ((rows - 1) // 2, (columns - 1) // 2), "full": (rows - 1, columns - 1)}[mode]
    shape = {"valid": (height - rows + 1, width - columns + 1), "same": (height, width),
             "full": (height + rows - 1, width + columns - 1)}[mode]
    scores = numpy.zeros(shape, dtype=type(score_of(image[:rows, :columns], pattern, metric)))
    for y, x in numpy.ndindex(shape):
        top, left = y - extra[0], x - extra[1]
        if top >= 0 and left >= 0 and top + rows <= height and left + columns <= width:
            scores[y, x] = score_of(image[top:top + rows, left:left + columns], pattern, metric)
    return scores, ((columns - 1) // 2 - extra[1], (rows - 1) // 2 - extra[0])


def plain(score):
    """A score as JSON gives it."""
    return [score.real, score.imag] if numpy.iscomplexobj(score) else score


class MatchTest(CommandCase):
    def arrays(self, image_type, pattern_type):
        """Whole numbers, whose scores are exact, with ties."""
        for name, shape, kind in (("image.npy", (9, 11), image_type), ("pattern.npy", (3, 4), pattern_type)):
            values = self.random.integers(-3, 4, shape) > 0 if kind == "bool" else self.random.integers(-3, 4, shape)
            values = values.astype(kind)
            if values.dtype.kind == "c":
                values = values + 1j * self.random.integers(-3, 4, shape).astype(kind)
            numpy.save(self.folder / name, values)
            yield values

    def match(self, *options, image="image.npy", pattern="pattern.npy"):
        done = self.run_tool("match", image, pattern, "--json", *options)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return json.loads(done.stdout)

    def test_arrays_of_all_types(self):
        for types in (("float32",) * 2, ("float64", "complex128"), ("complex64", "float32"), ("bool", "bool")):
            image, pattern = self.arrays(*types)
            for metric, mode in zip((*METRICS, "sad"), ("valid", "valid", "valid", "same", "full")):
                with self.subTest(types=types, metric=metric, mode=mode):
                    found = self.match("--metric", metric, "--mode", mode, "--map", "map.npy")
                    scores, first = score_map(image, pattern, metric, mode)
                    written = numpy.load(self.folder / "map.npy")
                    self.assertEqual(written.dtype, "int32" if types[0] == "bool" else numpy.result_type(*types))
                    numpy.testing.assert_array_equal(written, scores)
                    self.assertEqual(found["positions"], [*first, scores.shape[1], scores.shape[0]])
                    x, y = (found["location"][d] - first[d] for d in (0, 1))
                    self.assertEqual(found["score"], plain(scores[y, x]))
                    if mode == "valid":
                        self.assertEqual(y * scores.shape[1] + x, level(scores).argmin())
                    else:
                        self.assertEqual(level(scores[y, x]), level(scores).min())

    def test_region_and_neighbourhood(self):
        image, pattern = self.arrays("float64", "float64")
        scores, first = score_map(image, pattern, "ssd")
        found = self.match("--metric", "ssd", "--roi", "6,3,40x3", "--neighbourhood", "4")
        self.assertEqual((found["roi"], found["roiValid"]), ([6, 3, 40, 3], False))
        self.assertEqual(found["positions"], [6, 3, first[0] + scores.shape[1] - 6, 3])
        part = scores[3 - first[1]:6 - first[1], 6 - first[0]:]
        y, x = numpy.unravel_index(part.argmin(), part.shape)
        self.assertEqual(found["location"], [6 + x, 3 + y])
        padded = numpy.pad(scores, 4)
        top, left = (int(found["location"][d]) - first[d] - 1 + 4 for d in (1, 0))
        self.assertEqual(found["neighbourhood"], padded[top:top + 4, left:left + 4].tolist())
        self.assertFalse(found["neighbourhoodValid"])

    def test_fixed_point_casts_and_counts(self):
        for types, metric, limits in (("int16 int16", "sad", (0, 31)), ("float32 complex128", "ssd", (-16, 15)),
                                      ("uint64 bool", "product", (-16, 15)), ("complex64 int8", "sad", (-16, 15))):
            with self.subTest(types=types, metric=metric):
                image, pattern = self.arrays(*types.split())
                in_range = [numpy.clip(part, -4, 3) for part in (image.real.astype(float), image.imag.astype(float))]
                image = in_range[0] + 1j * in_range[1] if numpy.iscomplexobj(image) else in_range[0]
                pattern = pattern if numpy.iscomplexobj(pattern) else pattern.astype(float)
                output = "u5.0" if limits[0] == 0 else "s5.0"
                done = self.run_tool("match", "image.npy", "pattern.npy", "--json", "--map", "map.npy", "--metric",
                                     metric, "--fixed",
                                     f"input=s3.0,template=s4.0,accumulator=s12.0,output={output}")
                scores, first = score_map(image, pattern, metric)
                parts = scores.view(float)
                cast = parts.clip(*limits).view(scores.dtype)
                written = numpy.load(self.folder / "map.npy")
                self.assertEqual(written.dtype, scores.dtype)
                numpy.testing.assert_array_equal(written, cast)
                found = json.loads(done.stdout)
                x, y = (found["location"][d] - first[d] for d in (0, 1))
                self.assertEqual((y * scores.shape[1] + x, found["score"]), (level(scores).argmin(), plain(cast[y, x])))
                beyond = int((parts != parts.clip(*limits)).sum())
                best = numpy.array([scores[y, x]]).view(float)  # is written once more
                beyond += int((best != best.clip(*limits)).sum())
                table = self.table(done.stderr)
                self.assertEqual(table["output"], [output, parts.size + best.size, beyond, 0])
                self.assertEqual("product" in table, metric == "product")

    def test_patch_of_a_colour_picture_is_found_again(self):
        picture = self.random_image(40, 30, 4, 16)
        self.write("in.png", picture, 16)
        self.succeed("patch", "in.png", "exact.png", "--box", "25,11,6x5")
        numpy.testing.assert_array_equal(self.read("exact.png")[0], picture[11:16, 25:31])
        self.succeed("patch", "in.png", "noisy.png", "--box", "25,11,6x5", "--noise", 9000)
        change = self.read("noisy.png")[0] - picture[11:16, 25:31]
        self.assertTrue(abs(change).max() <= 9000 and change[..., :3].any() and not change[..., 3].any())
        for metric in ("sad", "ssd", "maxad"):
            found = self.match("--metric", metric, image="in.png", pattern="noisy.png")
            self.assertEqual((found["window"], found["location"]), ([25, 11, 6, 5], [27, 13]))
        luma = self.read("noisy.png")[0][..., :3] @ (0.2126, 0.7152, 0.0722)
        expected = abs(luma - picture[11:16, 25:31, :3] @ (0.2126, 0.7152, 0.0722)).max()
        self.assertAlmostEqual(found["score"], expected, 7)

    def test_pictures(self):
        picture = self.random_image(30, 20)
        self.write("in.png", picture)
        self.succeed("patch", "in.png", "patch.png", "--box", "12,6,5x4")
        told = self.succeed("match", "in.png", "patch.png", "--map", "map.png", "--overlay", "overlay.png", "--roi",
                            "4,3,20x12")
        scores = score_map(picture[..., 0], picture[6:10, 12:17, 0], "sad")[0][2:14, 2:22]
        self.assertEqual(told, f"orvane: map.png: scores of 0 to {scores.max():g} are shown as 0 to 255\n")
        numpy.testing.assert_array_equal(self.read("map.png")[0][..., 0], numpy.rint(255 * (scores / scores.max())))
        overlay = self.read("overlay.png")[0]
        # What was found is left as it is, and the frame round it is red.
        numpy.testing.assert_array_equal(overlay[6:10, 12:17], numpy.repeat(picture[6:10, 12:17], 3, axis=2))
        self.assertEqual(overlay[8, 10].tolist(), [255, 64, 48])
        self.assertEqual(overlay[8, 2].tolist(), [0, 200, 220])
        self.assertGreater(overlay.shape[1], 30 + scores.shape[1])


if __name__ == "__main__":
    unittest.main()
