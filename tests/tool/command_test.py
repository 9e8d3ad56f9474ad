"""How the command reads and writes files, what it says, and its texts about itself."""

import itertools
import os
import subprocess
import unittest

import numpy
import png
from command_case import CHANNELS, TOOL, CommandCase

OPERATIONS = ("convolve", "correlate", "separable", "median", "match", "compare", "checksum", "kernel", "show", "chart", "patch", "plan",
              "list", "help", "completion", "man", "reference")


class CommandTest(CommandCase):
    IDENTITY = ("--kernel", "1")

    def test_samples_stay_exact_and_interlaced_files_are_read(self):
        for depth, channels, interlace in itertools.product((8, 16), CHANNELS, (False, True)):
            with self.subTest(depth=depth, channels=channels, interlace=interlace):
                image = self.random_image(*self.random.integers(1, 14, 2), channels, depth)
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

    def test_output_replaces_its_input_through_a_link_and_keeps_mode_and_owner(self):
        self.write("in.png", self.random_image(8, 8))
        os.chmod(self.folder / "in.png", 0o4640)
        owner = (12345, 23456) if os.geteuid() == 0 else (os.geteuid(), os.getegid())
        os.chown(self.folder / "in.png", *owner)
        os.chmod(self.folder / "in.png", 0o4640)
        (self.folder / "link.png").symlink_to("in.png")
        self.succeed("convolve", "link.png", "link.png", "--kernel", "box:3", "--mode", "valid")
        self.assertEqual(self.read("in.png")[0].shape, (6, 6, 1))
        status = os.stat(self.folder / "in.png")
        self.assertEqual((status.st_mode & 0o7777, status.st_uid, status.st_gid), (0o4640, *owner))
        self.assertEqual(sorted(os.listdir(self.folder)), ["in.png", "link.png"])
        self.assertTrue((self.folder / "link.png").is_symlink())

    def test_pipes_are_read_and_written(self):
        for interlace in (False, True):
            image = self.random_image(8, 8)
            self.write("in.png", image, interlace=interlace)
            done = subprocess.run([TOOL, "convolve", "/dev/stdin", "/dev/stdout", *self.IDENTITY],
                                  input=(self.folder / "in.png").read_bytes(), stdout=subprocess.PIPE, check=True)
            (self.folder / "out.png").write_bytes(done.stdout)
            numpy.testing.assert_array_equal(self.read("out.png")[0], image)

    def test_notes_are_legible_whatever_the_name(self):
        self.write("in.png", numpy.full((1, 1, 1), 200))
        name = b"a\n\x1b[1m\x7f\xc2\x9b\xff\xe2\x80\xae\xed\xa0\x80\xc3\xa9.png"
        shown = r"a\n\x1b[1m\x7f\u009b\xff\u202e\xed\xa0\x80é.png"
        self.assertEqual(self.succeed("convolve", "in.png", os.fsdecode(name), "--kernel", "2").split(": ")[1], shown)

    def test_usage_names_defaults_and_allowed_values(self):
        for operation, words in (
            ("", (*OPERATIONS, "--version")),
            ("convolve", ("orvane convolve", "IN", "OUT", "gaussian:N:SIGMA", "sobel-y", "-k, --kernel KERNEL",
                          "(default 1)", "valid|same|full")),
            ("chart", ("orvane chart", "640x480", "16384")),
        ):
            arguments = [operation] if operation else []
            for shown in (self.run_tool(*arguments, "--help"), self.run_tool("help", *arguments)):
                self.assertEqual((shown.returncode, shown.stderr), (0, ""))
                for word in words:
                    self.assertIn(word, shown.stdout)
            missing = self.run_tool(*arguments)  # the same text, as an error
            self.assertEqual((missing.returncode, missing.stdout), (2, ""))
            self.assertEqual(missing.stderr, "orvane: arguments are missing\n" + shown.stdout)
        self.assertRegex(self.run_tool("--version").stdout, r"^orvane \d+\.\d+\.\d+, vector target \w+\n$")

    def test_texts_about_all_operations(self):
        self.assertEqual(tuple(line.split()[0] for line in self.run_tool("list").stdout.splitlines()), OPERATIONS)
        for name in ("man", "reference"):
            text = self.run_tool(name).stdout.replace("\\-", "-")
            for word in ("gaussian:N:SIGMA", "--neighbourhood", "-k, --kernel", *OPERATIONS):
                self.assertIn(word, text)
        for arguments in ([], *([operation] for operation in OPERATIONS)):
            for line in self.run_tool("help", *arguments).stdout.splitlines():
                self.assertLessEqual(len(line), 80, line)
        (self.folder / "completion").write_text(self.run_tool("completion", "bash").stdout)
        for typed, offered in (("orvane co", "convolve correlate compare completion"), ("orvane match --me", "--metric"),
                               ("orvane match a b --metric s", "sad ssd"), ("orvane help ma", "match man"),
                               ("orvane completion ", "bash"), ("orvane chart a --size -", ""), ("orvane chart x", "")):
            words = typed.split(" ")
            script = (f"source ./completion; COMP_WORDS=({' '.join(map(repr, words))}); COMP_CWORD={len(words) - 1}; "
                      "_orvane; echo ${COMPREPLY[*]}")
            done = subprocess.run(["bash", "-c", script], cwd=self.folder, capture_output=True, text=True, check=True)
            self.assertEqual((done.stdout.strip(), done.stderr), (offered, ""), typed)

    def test_texts_to_a_full_device_are_errors(self):
        self.write("in.png", self.random_image(9, 9))
        self.succeed("patch", "in.png", "patch.png", "--box", "1,2,3x4")
        before = sorted(os.listdir(self.folder))
        for arguments in ("--help", "--version", "list", "man", "reference", "completion bash", "chart --help",
                          "plan --input 9 --window 3 --svg new.svg", "match in.png patch.png --map new.png"):
            with open("/dev/full", "w") as full, self.subTest(arguments):
                done = subprocess.run([TOOL, *arguments.split()], cwd=self.folder, stdout=full, stderr=subprocess.PIPE,
                                      text=True)
                self.assertEqual((done.returncode, done.stderr),
                                 (2, "orvane: cannot write to the standard output: No space left on device\n"))
                self.assertEqual(sorted(os.listdir(self.folder)), before)


if __name__ == "__main__":
    unittest.main()
