"""Programs that ask for what is not supported do not compile, and the compiler says what to do instead."""

import concurrent.futures
import pathlib
import shutil
import subprocess
import unittest

SOURCE = pathlib.Path(__file__).resolve().parents[2]
COMPILERS = [name for name in ("g++", "clang++", "clang++-14") if shutil.which(name)][:2]

PROGRAM = """#include "orvane/orvane.h"
using namespace orvane;
template <class T> Array<T> make() { return Array<T>({4, 4}); }
int main() { %s; }
"""

ACCEPTED = (
    "convolve(make<std::uint8_t>(), make<float>())",
    "Array<std::int16_t> y({4, 4}); (void)convolveInto(make<std::int32_t>(), make<double>(), y)",
    "median(make<std::uint32_t>(), {3, 3})",
)

REFUSED = {
    "convolve(make<std::uint32_t>(), make<float>())": "float does not hold all integers of 32 bits; give the filter",
    "convolve(make<std::int64_t>(), make<double>())": "double does not hold all integers of 64 bits; converted<double>",
    "convolve(make<std::uint8_t>(), make<std::uint8_t>())": "are float, double or their complex types; converted<float>",
    "convolve(make<bool>(), make<float>())": "bool inputs have no sums; use converted<float>",
    "correlate(make<float>(), make<double>())": "differ in precision; convert one",
    "correlateND(make<long double>(), make<double>())": "elements of inputs are float, double",
    "Array<float> y({4, 4}); Convolution<float>(make<float>(), {4, 4}).runRounded(make<float>(), y)":
        "rounded to integers of 8, 16 or 32 bits; run() gives others",
    "median(make<std::complex<float>>(), {3, 3})": "complex numbers have no order",
    "matchTemplate(make<std::uint8_t>(), make<std::uint8_t>())": "converted<float>() makes such an array",
    "matchTemplate(make<std::uint8_t>(), make<std::complex<float>>())": "templates for images of integers are real",
}


def compiled(compiler, statement):
    return subprocess.run([compiler, "-std=c++20", "-fsyntax-only", "-I", SOURCE, "-x", "c++", "-"],
                          input=PROGRAM % statement, capture_output=True, text=True)


class RefusedProgramsTest(unittest.TestCase):
    def test_messages(self):
        self.assertTrue(COMPILERS)
        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            for compiler in COMPILERS:
                for statement, done in zip(ACCEPTED, pool.map(lambda s: compiled(compiler, s), ACCEPTED)):
                    self.assertEqual((done.returncode, done.stderr), (0, ""), f"{compiler}: {statement}")
                for (statement, words), done in zip(REFUSED.items(), pool.map(lambda s: compiled(compiler, s), REFUSED)):
                    with self.subTest(compiler=compiler, statement=statement):
                        self.assertNotEqual(done.returncode, 0)
                        self.assertIn(words, " ".join(done.stderr.replace('""', "").split()))


if __name__ == "__main__":
    unittest.main()
