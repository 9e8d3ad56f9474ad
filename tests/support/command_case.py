"""What all tests of the orvane command share."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

import numpy
import png

TOOL = os.environ["ORVANE_TOOL"]
# Channels of a picture: grey, grey and alpha, colour, colour and alpha.
CHANNELS = (1, 2, 3, 4)


class CommandCase(unittest.TestCase):
    """A test in a folder of its own, in which the command runs."""

    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.folder = Path(holder.name)
        self.random = numpy.random.default_rng(1)

    def run_tool(self, *arguments, prefix=(), **settings):
        return subprocess.run([*prefix, TOOL, *map(str, arguments)], cwd=self.folder, capture_output=True, text=True,
                              check=False, **settings)

    def succeed(self, *arguments, **settings):
        """Runs the command, which must succeed, and returns what it said on stderr."""
        done = self.run_tool(*arguments, **settings)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stderr

    def table(self, said):
        """Type and counts of each label in what was said of fixed point."""
        rows = [line.rsplit(maxsplit=6) for line in said.splitlines() if line.startswith("  ")]
        return {label.strip(): [kind, *map(int, counts[:3])] for label, kind, *counts in rows[1:]}

    def random_image(self, width, height, channels=1, depth=8):
        """Samples over the full range, as an array of rows, columns and channels."""
        return self.random.integers(0, 2**depth, (height, width, channels))

    def write(self, name, image, depth=8, **settings):
        height, width, channels = image.shape
        writer = png.Writer(width, height, greyscale=channels < 3, alpha=channels % 2 == 0, bitdepth=depth, **settings)
        with open(self.folder / name, "wb") as file:
            writer.write(file, image.reshape(height, -1).tolist())

    def read(self, name):
        """The samples of a picture, and its bit depth."""
        width, height, rows, info = png.Reader(bytes=(self.folder / name).read_bytes()).read()
        return numpy.array([list(row) for row in rows]).reshape(height, width, info["planes"]), info["bitdepth"]


def filtered(image, kernel, operation, depth=8, scale=1.0, offset=0.0):
    """The expected samples of mode valid, alpha unfiltered, and the count of clipped ones."""
    kernel = numpy.array(kernel if operation == "correlate" else kernel[::-1, ::-1])
    windows = numpy.lib.stride_tricks.sliding_window_view(image, kernel.shape, (0, 1))
    rounded = numpy.rint((windows * kernel).sum((3, 4)) * scale + offset)
    (top, left), colours = (numpy.array(kernel.shape) - 1) // 2, image.shape[2] - (image.shape[2] % 2 == 0)
    rounded[..., colours:] = windows[..., colours:, top, left]
    inside = rounded.clip(0, 2**depth - 1)
    return inside, int((rounded != inside).sum())


PADS = {"replicate": "edge", "symmetric": "symmetric", "circular": "wrap", "mirror": "reflect"}


def extended(image, shape, mode, pad, value=0):
    """The picture with what windows of `shape` meet beyond its edge; alpha beyond a constant pad is 0."""
    if mode == "valid":
        return image
    lead = [(side - 1) // 2 if mode == "same" else side - 1 for side in shape]
    widths = [(before, side - 1 - before if mode == "same" else before) for before, side in zip(lead, shape)] + [(0, 0)]
    if pad != "constant":
        return numpy.pad(image, widths, PADS[pad])
    result = numpy.pad(image, widths, constant_values=value)
    if image.shape[2] % 2 == 0:
        result[..., -1:] = numpy.pad(image[..., -1:], widths)
    return result


def matrix_text(kernel):
    return ";".join(",".join(repr(float(element)) for element in row) for row in kernel)
