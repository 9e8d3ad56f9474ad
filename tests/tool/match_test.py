"""What match and patch read, write and say. Scores are tested with the library."""

import json
import unittest

import numpy
from command_case import CommandCase


class MatchTest(CommandCase):
    def match(self, image, pattern, *options):
        """The printed result, and what was said."""
        done = self.run_tool("match", image, pattern, "--json", *options)
        self.assertEqual(done.returncode, 0, done.stderr)
        return json.loads(done.stdout), done.stderr

    def save(self, image, pattern):
        """Small whole numbers as an array, and a part of it as the pattern, of these types."""
        values = self.random.integers(-3, 4, (9, 11)) > 0 if image == "bool" else self.random.integers(-3, 4, (9, 11))
        numpy.save(self.folder / "image.npy", values.astype(image))
        numpy.save(self.folder / "pattern.npy", values[4:7, 5:9].astype(pattern))

    def test_arrays_of_all_types(self):
        fixed = ["--fixed", "input=s3.0,template=s4.0,accumulator=s12.0,output=s5.0"]
        for image, pattern, scores, options in (
            ("float32", "float32", "float32", []), ("float64", "complex128", "complex128", []),
            ("complex64", "float32", "complex64", []), ("bool", "bool", "int32", []),
            ("int16", "int16", "float64", fixed), ("int8", "complex64", "complex128", fixed),
        ):
            with self.subTest(image=image, pattern=pattern):
                self.save(image, pattern)
                found, said = self.match("image.npy", "pattern.npy", "--metric", "maxad", "--map", "map.npy", *options)
                self.assertEqual((found["window"], found["location"]), ([5, 4, 4, 3], [6, 5]))
                self.assertEqual((found["score"], found["positions"]), ([0, 0] if scores[0] == "c" else 0, [1, 1, 8, 7]))
                written = numpy.load(self.folder / "map.npy")
                self.assertEqual((written.dtype, written.shape, written[4, 5]), (scores, (7, 8), 0))
                counts = {label: row[:2] for label, row in self.table(said).items() if label in ("input", "output")}
                outputs = 57 * (1 + (scores[0] == "c"))  # the best score is written once more
                self.assertEqual(counts, {"input": ["s3.0", 99], "output": ["s5.0", outputs]} if options else {})

    def test_region_and_neighbourhood(self):
        self.save("float64", "float64")
        options = ("--metric", "ssd", "--roi", "6,3,40x3", "--neighbourhood", "4")
        found, _ = self.match("image.npy", "pattern.npy", *options, "--map", "map.npy")
        self.assertEqual((found["roi"], found["roiValid"], found["positions"]), ([6, 3, 40, 3], False, [6, 3, 3, 3]))
        self.assertEqual((found["location"], found["score"], found["neighbourhoodValid"]), ([6, 5], 0, False))
        scores = numpy.load(self.folder / "map.npy")
        self.assertEqual(numpy.array(found["neighbourhood"])[:2, 1:].tolist(), scores[1:].tolist())
        text = self.run_tool("match", "image.npy", "pattern.npy", *options).stdout.splitlines()
        self.assertEqual(text[:5], ["location  6,5", "window    5,4 4x3", "score     0",
                                    "roi       6,3 40x3, of which 6,3 3x3 are positions",
                                    "scores around it, some of them beyond the positions searched:"])
        self.assertEqual([list(map(float, line.split())) for line in text[5:]], found["neighbourhood"])

    def test_patch_of_a_colour_picture_is_found_again(self):
        picture = self.random_image(40, 30, 4, 16)
        self.write("in.png", picture, 16)
        self.succeed("patch", "in.png", "exact.png", "--box", "25,11,6x5")
        numpy.testing.assert_array_equal(self.read("exact.png")[0], picture[11:16, 25:31])
        self.succeed("patch", "in.png", "noisy.png", "--box", "25,11,6x5", "--noise", 9000)
        change = self.read("noisy.png")[0] - picture[11:16, 25:31]
        self.assertTrue(abs(change).max() <= 9000 and change[..., :3].any() and not change[..., 3].any())
        found, _ = self.match("in.png", "noisy.png", "--metric", "maxad")
        self.assertEqual((found["window"], found["location"]), ([25, 11, 6, 5], [27, 13]))
        expected = abs(change[..., :3] @ (0.2126, 0.7152, 0.0722)).max()
        self.assertAlmostEqual(found["score"], expected, 7)

    def test_whole_samples_have_the_scores_of_double(self):
        image = self.random_image(24, 20, depth=16)
        for depth, options in ((8, ("sad", "ssd", "maxad", "product", "cosine", "coefficient")), (16, ("sad", "ssd"))):
            picture = image >> (16 - depth)
            self.write("in.png", picture, depth)
            self.write("patch.png", picture[3:8, 5:12], depth)
            numpy.save(self.folder / "in.npy", picture[..., 0].astype(float))
            numpy.save(self.folder / "patch.npy", picture[3:8, 5:12, 0].astype(float))
            for metric in options:
                shown = [self.run_tool("match", f"in.{kind}", f"patch.{kind}", "--metric", metric, "--map", "map.npy",
                                       "--checksum", "--refine").stdout for kind in ("png", "npy")]
                self.assertEqual(shown[0], shown[1])
                if metric != "product":
                    self.assertIn("window    5,3 7x5", shown[0])

    def test_several_matches(self):
        scene = numpy.full((40, 60, 1), 90)
        patch = self.random_image(7, 6)
        places = [(4, 5), (30, 8), (20, 30)]
        for number, (x, y) in enumerate(places):
            scene[y:y + 6, x:x + 7] = (patch - 128) * 3 // (4 + number) + 128
        self.write("in.png", scene)
        self.write("patch.png", patch)
        found, _ = self.match("in.png", "patch.png", "--metric", "coefficient", "--top", "3", "--min-distance", "5",
                              "--overlay", "overlay.png")
        self.assertEqual([match["window"][:2] for match in found["matches"]], [list(place) for place in places])
        self.assertEqual(found["matches"][0]["location"], found["location"])
        text = self.run_tool("match", "in.png", "patch.png", "--metric", "cosine", "--top", "2", "--refine").stdout
        self.assertRegex(text, r"match 2   \d+,\d+  window \d+,\d+ 7x6  score 0\.\d+  refined ")

    def test_pictures(self):
        picture = self.random_image(30, 20)
        self.write("in.png", picture)
        self.succeed("patch", "in.png", "patch.png", "--box", "12,6,5x4")
        self.match("in.png", "patch.png", "--map", "map.npy", "--roi", "4,3,20x12")
        scores = numpy.load(self.folder / "map.npy")
        _, told = self.match("in.png", "patch.png", "--map", "map.png", "--overlay", "overlay.png", "--roi", "4,3,20x12")
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
