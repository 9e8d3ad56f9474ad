"""NPY arrays through the filtering operations, bit for bit."""

import unittest

import numpy
from command_case import CommandCase, extended, matrix_text


def summed(array, kernel, dtype):
    """Correlation in the stated order, in the element type itself."""
    kernel = numpy.array(kernel, dtype=numpy.finfo(dtype).dtype)
    rows, columns = kernel.shape
    height, width = array.shape[0] - rows + 1, array.shape[1] - columns + 1
    total = numpy.zeros((height, width), dtype=dtype)
    for (y, x), tap in numpy.ndenumerate(kernel):
        total = total + array[y:y + height, x:x + width] * tap
    return total


class FilterArrayTest(CommandCase):
    def run_on(self, array, operation, *options):
        """What comes out for `array`, and what was said."""
        numpy.save(self.folder / "in.npy", array)
        said = self.succeed(operation, "in.npy", "out.npy", *options)
        return numpy.load(self.folder / "out.npy"), said

    def check(self, actual, expected):
        self.assertEqual(actual.dtype, expected.dtype)
        numpy.testing.assert_array_equal(actual, expected)

    def test_floating_point_elements_are_summed_in_their_own_type(self):
        for dtype in (numpy.float32, numpy.float64, numpy.complex64, numpy.complex128):
            for order in "CF":
                with self.subTest(dtype=dtype, order=order):
                    array = self.random.normal(size=(7, 9)) * 1e3 ** self.random.normal(size=(7, 9))
                    if numpy.issubdtype(dtype, numpy.complexfloating):
                        array = array + 1j * self.random.normal(size=(7, 9))
                    array = numpy.array(array, dtype=dtype, order=order)
                    kernel = self.random.normal(size=(2, 3))
                    for mode, pad in (("valid", "replicate"), ("same", "symmetric"), ("full", "circular")):
                        actual, said = self.run_on(array, "correlate", "--kernel", matrix_text(kernel), "--mode", mode,
                                                   "--pad", pad)
                        wide = extended(array[..., None], (2, 3), mode, pad)[..., 0]
                        self.check(actual, summed(wide, kernel, dtype))
                        self.assertEqual(said, "")

    def test_other_elements_are_converted_on_demand_and_what_is_lost_is_said(self):
        kernel = [[1, 2], [3, 4]]
        for source in (bool, numpy.int8, numpy.uint16, numpy.int32, numpy.uint64, numpy.float32):
            array = self.random.integers(0, 100, (4, 5)).astype(source)
            for name, dtype in (("float", numpy.float32), ("double", numpy.float64)):
                actual, said = self.run_on(array, "correlate", "--kernel", matrix_text(kernel), "--type", name)
                self.check(actual, summed(array.astype(dtype), kernel, dtype))
                self.assertEqual(said, "")
        wide = numpy.array([2**53, 2**53 + 1, 2**63 - 1, -3])
        actual, said = self.run_on(wide, "convolve", "--kernel", "1", "--type", "double")
        self.check(actual, wide.astype(float))
        self.assertIn("out.npy: 2 of 4 values were rounded to float64", said)
        actual, said = self.run_on(numpy.array([0.1, 0.5, numpy.nan]), "convolve", "--kernel", "1", "--type", "float")
        self.check(actual, numpy.array([0.1, 0.5, numpy.nan], dtype=numpy.float32))
        self.assertIn("1 of 3 values were rounded to float32", said)

    def test_lines_separable_filters_and_scaling(self):
        line = self.random.normal(size=12)
        actual, _ = self.run_on(line, "convolve", "--kernel", "1,10", "--scale-output", "2", "--offset", "-3")
        self.check(actual, (line[1:] + line[:-1] * 10) * 2 - 3)
        plane = self.random.integers(-50, 50, (6, 5)).astype(complex)
        actual, _ = self.run_on(plane, "separable", "--correlate", "--row", "1,2", "--column", "1,-3,5", "--mode", "full",
                                "--pad", "constant:0,1")
        # Far from the data, the row makes 3i of the pad's i.
        across = summed(numpy.pad(plane, ((0, 0), (1, 1)), constant_values=1j), [[1, 2]], complex)
        self.check(actual, summed(numpy.pad(across, ((2, 2), (0, 0)), constant_values=3j), [[1], [-3], [5]], complex))

    def test_fixed_point(self):
        plane = self.random.integers(-40, 40, (5, 6)) / 4
        types = "input=s8.2,filter=s8.1,accumulator=s24.3,output=s12.3"
        kernel = [[1.5, -2], [0.5, 3]]
        for dtype in (float, complex):
            array = plane + (1j * plane[::-1] if dtype is complex else 0)
            actual, said = self.run_on(array, "correlate", "--kernel", matrix_text(kernel), "--fixed", types)
            self.check(actual, summed(array, kernel, dtype))
            self.assertRegex(said, r"  output +s12\.3 +" + str(20 * (1 + (dtype is complex))) + " +0 +0")


if __name__ == "__main__":
    unittest.main()
