"""How the command reads and writes files and what it says."""

import itertools
import os
import subprocess
import unittest

import numpy
import png
from command_case import CHANNELS, TOOL, CommandCase


class CommandTest(CommandCase):
    IDENTITY = ("--kernel", "1")

    def test_samples_stay_exact_and_interlaced_files_are_read(self):
        for depth, channels, interlace in itertools.product((8, 16), CHANNELS, (False, True)):
            with self.subTest(depth=depth, channels=channels, interlace=interlace):
                image = self.random_image(13, 11, channels, depth)
                self.write("in.png", image, depth, interlace=interlace)
                self.succeed("convolve", "in.png", "out.png", *self.IDENTITY)
                samples, out_depth = self.read("out.png")
                self.assertEqual(out_depth, depth)
                numpy.testing.assert_array_equal(samples, image)

    def test_small_depths_palettes_and_transparent_colours_are_expanded(self):
        palette = [(10, 20, 30), (255, 0, 7), (1, 2, 3), (90, 80, 70)]
        clear = [colour + (alpha,) for colour, alpha in zip(palette, (0, 77, 255, 255))]
        indices = self.random.integers(0, 4, (6, 9))
        bits = self.random.integers(0, 2, (6, 9))
        cases = [
            ({"bitdepth": 1}, bits, (bits * 255)[..., None]),
            ({"bitdepth": 2}, indices, (indices * 85)[..., None]),
            ({"bitdepth": 4}, indices * 5, (indices * 85)[..., None]),
            ({"bitdepth": 2, "palette": palette}, indices, numpy.array(palette)[indices]),
            ({"bitdepth": 8, "palette": clear}, indices, numpy.array(clear)[indices]),
            ({"bitdepth": 16, "transparent": 300}, indices * 100,
             numpy.stack([indices * 100, numpy.where(indices == 3, 0, 65535)], -1)),
        ]
        for settings, rows, expected in cases:
            with self.subTest(**settings):
                with open(self.folder / "in.png", "wb") as file:
                    png.Writer(9, 6, greyscale="palette" not in settings, **settings).write(file, rows.tolist())
                self.succeed("convolve", "in.png", "out.png", *self.IDENTITY)
                numpy.testing.assert_array_equal(self.read("out.png")[0], expected)

    def test_output_replaces_its_input_through_a_link_and_keeps_the_mode(self):
        image = self.random_image(8, 8)
        self.write("in.png", image)
        os.chmod(self.folder / "in.png", 0o640)
        (self.folder / "link.png").symlink_to("in.png")
        self.succeed("convolve", "link.png", "link.png", "--kernel", "box:3")
        self.assertEqual(self.read("in.png")[0].shape, (6, 6, 1))
        self.assertEqual(os.stat(self.folder / "in.png").st_mode & 0o777, 0o640)
        self.assertEqual(sorted(os.listdir(self.folder)), ["in.png", "link.png"])
        self.assertTrue((self.folder / "link.png").is_symlink())

    def test_pipes_are_read_and_written(self):
        image = self.random_image(8, 8)
        self.write("in.png", image)
        done = subprocess.run([TOOL, "convolve", "/dev/stdin", "/dev/stdout", *self.IDENTITY],
                              input=(self.folder / "in.png").read_bytes(), stdout=subprocess.PIPE, check=True)
        (self.folder / "out.png").write_bytes(done.stdout)
        numpy.testing.assert_array_equal(self.read("out.png")[0], image)

    def test_clipping_is_counted_and_said_unless_quiet(self):
        self.write("in.png", numpy.array([[[0, 100, 200, 9], [50, 255, 127, 0]]]))
        run = ["convolve", "in.png", "out.png", "--kernel", "2"]
        self.assertEqual(self.succeed(*run), "orvane: out.png: 2 of 6 values were clipped to 0..255 "
                         "(see --scale-output and --offset)\n")
        self.assertEqual(self.read("out.png")[0].tolist(), [[[0, 200, 255, 9], [100, 255, 254, 0]]])
        self.assertEqual(self.succeed(*run, "--quiet"), "")

    def test_usage_names_defaults_and_allowed_values(self):
        for arguments, words in (
            ((), ("convolve", "correlate", "chart", "--version")),
            (("convolve",), ("orvane convolve", "IN", "OUT", "gaussian:N:SIGMA", "sobel-y", "CSV", "--scale NUMBER=1",
                             "--offset NUMBER=0", "valid|same|full")),
            (("chart",), ("orvane chart", "640x480", "16384")),
        ):
            for shown in (self.run_tool(*arguments), self.run_tool(*arguments, "--help")):
                self.assertEqual((shown.returncode, shown.stderr), (0, ""))
                for word in words:
                    self.assertIn(word, shown.stdout)
        self.assertRegex(self.run_tool("--version").stdout, r"^orvane \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
