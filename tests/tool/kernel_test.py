"""Kernels in fixed point: what they become, and what their sums need."""

import itertools
import re
import unittest

import numpy
from command_case import CommandCase, matrix_text


class KernelTest(CommandCase):
    def shown(self, kernel, *arguments):
        """The codes, and the words of each line below them."""
        printed = self.run_tool("kernel", kernel, *arguments)
        self.assertEqual((printed.returncode, printed.stderr), (0, ""))
        matrix, lines = printed.stdout.split("filter  ", 1)
        codes = [[int(code) for code in row.split(",")] for row in matrix.splitlines()]
        return codes, dict(re.split(" {2,}", line) for line in f"filter  {lines}".splitlines())

    def test_codes_and_what_is_said_of_them(self):
        codes, said = self.shown("0.3,-0.6;1,0.25", "--scale", "2", "--fixed", "input=u8.0,filter=s4.2,rounding=floor")
        self.assertEqual((codes, said), ([[2, -5], [7, 2]], {
            "filter": "s4.2, 2x2, in units of 1/4; 1 overflows", "error": "up to 0.25, 1 units",
            "gain": "1.5, 6 units; before 1.9", "sums": f"{-5 * 255 / 4} to {11 * 255 / 4}, whatever the input in u8.0",
            "accumulator": "s13.2 has them all"}))
        codes, said = self.shown("24,-40", "--fixed", "input=s8.7,filter=s8.-3")
        self.assertEqual((codes, said["filter"], said["error"]),
                         ([[3, -5]], "s8.-3, 2x1, in units of 8; 0 overflows", "none"))
        for kernel, types, sums, accumulator in (
            ("2", "input=s4.0,filter=s4.0,overflow=saturate", "-16 to 14", "s5.0"),
            ("2", "input=s4.0,filter=s4.0,overflow=symmetric", "-14 to 14", "s5.0"),
            ("8", "input=u1.0,filter=u4.0,overflow=symmetric", "0 to 8", "u4.0"),
            ("-8", "input=u1.0,filter=s5.0,overflow=symmetric", "-8 to 0", "s5.0"),  # symmetric s4.0 ends at -7
        ):
            said = self.shown(kernel, "--fixed", types)[1]
            self.assertEqual((said["sums"].split(",")[0], said["accumulator"]), (sums, f"{accumulator} has them all"))

    def test_the_accumulator_never_overflows_and_one_bit_less_can(self):
        extremes = {"u8.0": (0, 255), "s8.4": (-8, 127 / 16), "u1.0": (0, 1), "s3.-2": (-16, 12)}
        kernels = [self.random.integers(-8, 8, (3, 2)), self.random.integers(0, 8, (1, 4)), -numpy.ones((2, 2), int),
                   numpy.array([[5, -3]]), numpy.zeros((1, 2), int)]
        for kernel, (kind, (least, greatest)) in itertools.product(kernels, extremes.items()):
            types, text = f"input={kind},filter=s5.1", matrix_text(kernel / 2)
            needed = re.match(r"([su])(\d+)\.(-?\d+) ", self.shown(text, "--fixed", types)[1]["accumulator"])
            for bits, overflows in ((int(needed[2]), False), (int(needed[2]) - 1, True)):
                if bits == 0:
                    continue
                counts = 0
                # Inputs that make every product as great, or as small, as it can be; one position each.
                for window in numpy.where(kernel > 0, greatest, least), numpy.where(kernel > 0, least, greatest):
                    numpy.save(self.folder / "in.npy", window.astype(float))
                    said = self.succeed("correlate", "in.npy", "out.npy", "--kernel", text, "--fixed",
                                        f"{types},accumulator={needed[1]}{bits}.{needed[3]},output=s64.10")
                    counts += self.table(said)["accumulator"][2]
                self.assertEqual(counts > 0, overflows, (needed[0], text, kind))


if __name__ == "__main__":
    unittest.main()
