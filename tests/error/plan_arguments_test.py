"""Bad arguments of the plan operation."""

import unittest

from refusal_case import RefusalCase


class PlanArgumentsTest(RefusalCase):
    def plan_refused(self, options, *words):
        self.refused(["plan", "--input", "9x9", "--window", "3x3", *options.split()], *words)

    def test_options(self):
        for options, *words in (
            ("--mode some", "--mode 'some'", "valid, same, full"),
            ("--pad zero", "--pad 'zero'", "constant:V, replicate, symmetric, circular, mirror"),
            ("--pad replicate:3", "--pad 'replicate:3'", "constant:V"),
            ("--pad constant:x", "--pad 'constant:x'", "'x'", "finite"),
            ("--pad constant:1,2,3", "RE,IM"),
            ("--reach 3", "--reach", "'3'", "0 to 2"),
            ("--roi 1,2", "region", "1 dimension,", "input has 2"),
            ("--roi 1,2x3", "--roi '1,2x3'", "X,Y,WIDTHxHEIGHT"),
            ("--roi 1,2,3x4x5", "--roi '1,2,3x4x5'", "X,Y,WIDTHxHEIGHT"),
            ("--roi 1,2,3x0", "--roi '1,2,3x0'", "'0'", "1 to"),
            ("--roi 1.5,2,3x4", "'1.5'"),
            ("--roi 1,2,3,4x5x6", "region", "3 dimensions", "input has 2"),
            ("--roi 999999999,2,3x4", "region", "999999999", "268435456"),
            ("--svg plan.png", "'plan.png'", ".svg"),
            ("--svg nowhere/plan.svg", "'nowhere/plan.svg'", "No such file"),
        ):
            self.plan_refused(options, *words)

    def test_extents(self):
        for extents, window, *words in (
            ("", "3", "--input ''", "whole number"),
            ("9x", "3x3", "--input '9x'", "''"),
            ("9x0", "3x3", "--input '9x0'", "'0'", "1 to 2147483647"),
            ("3x2147483648", "3x3", "--input '3x2147483648'", "1 to 2147483647"),
            ("9x9", "3x-3", "--window '3x-3'", "'-3'"),
            ("9x9", "3", "window has 1 dimension", "input has 2"),
            ("9x9x9x9x9", "3x3x3x3x3", "5 dimensions", "1 to 4"),
            ("65536x65536", "3x3", "input has more than 2147483647 elements"),
            ("40000x40000", "20000x20000", "output has more than 2147483647 elements"),
            ("300000000", "3", "input", "300000000", "268435456"),
        ):
            self.refused(["plan", "--input", extents, "--window", window, "--mode", "full"], *words)
        self.refused(["plan", "--input", "9x9"], "--window is required")
        self.refused(["plan", "--input", "9x9x9", "--window", "3x3x3", "--svg", "p.svg"], "3 dimensions", "1 and 2")


if __name__ == "__main__":
    unittest.main()
