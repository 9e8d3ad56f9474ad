"""Bad arguments."""

import unittest

import numpy
from refusal_case import RefusalCase


class ArgumentsTest(RefusalCase):
    def filter_refused(self, options, *words):
        self.refused(["convolve", "in.png", "old.png", *options], *words)

    def test_operations_and_options(self):
        for arguments, *words in (
            (["blur", "in.png", "old.png"], "'blur'", "convolve, correlate, separable, median, match, compare, kernel, chart, patch, plan"),
            (["convolve", "in.png"], "OUT is required", "orvane convolve --help"),
            (["convolve", "in.png", "old.png"], "--kernel is required"),
            (["convolve", "in.png", "old.png", "--kernel"], "--kernel"),
            (["convolve", "in.png", "old.png", "more.png", "--kernel", "1"], "more.png"),
            (["correlate", "in.png", "old.png", "--kernel", "1", "--sigma", "3"], "--sigma"),
            (["--quiet", "convolve"], "'--quiet'", "convolve, correlate, separable, median, match, compare, kernel, chart, patch, plan"),
            (["convolve", "in.png", "out.jpg", "--kernel", "1"], "'out.jpg'", ".png"),
            (["chart", "out"], "'out'", ".png"),
        ):
            self.refused(arguments, *words)

    def test_volumes(self):
        arrays = {"plane": numpy.zeros((4, 4)), "volume": numpy.zeros((3, 4, 5), "f4"),
                  "complex": numpy.zeros((3, 4, 5), "c8"), "deep": numpy.zeros((1,) * 9), "wide": numpy.zeros((3, 4, 6))}
        for name, array in arrays.items():
            numpy.save(self.folder / f"{name}.npy", array)
        for volume, kernel, options, *words in (
            ("volume", "plane", [], "filter: rank 2", "3"),
            ("volume", "complex", [], "kernel", "complex64", "real"),
            ("complex", "volume", [], "array", "complex64", "real"),
            ("deep", "deep", [], "9 dimensions", "1 to 8"),
            ("volume", "wide", [], "filter: extent 6", "1 to 5"),
            ("volume", "volume", ["--normalise", "energy"], "--nd", "--normalise"),
            ("volume", "volume", ["--scale", "2"], "--scale", "--nd"),
            ("volume", "volume", ["--pad", "constant:1,2"], "--pad", "real"),
            ("volume", "nothing", [], "nothing.npy"),
        ):
            arguments = [f"{volume}.npy", "old.npy", "--kernel", f"{kernel}.npy", "--nd", *options]
            self.refused(["correlate", *arguments], *words)

    def test_named_kernels(self):
        for kernel, *words in (
            ("bok:3", "'bok:3'", "box:N", "gaussian:N:SIGMA", "sobel-y", "CSV"),
            ("", "empty"),
            ("  ", "empty"),
            ("box", "'box'", "box:N"),
            ("box:3:4", "'box:3:4'", "box:N"),
            ("box:0", "'0'", "1 to 1023"),
            ("box:1024", "'1024'", "1 to 1023"),
            ("box:99999999999999999999", "1 to 1023"),
            ("box:2.5", "'2.5'"),
            ("gaussian:5", "gaussian:N:SIGMA"),
            ("gaussian:5:0", "SIGMA", "'0'", "0.01"),
            ("gaussian:5:nan", "SIGMA", "'nan'"),
            ("gaussian:4:0.01", "SIGMA", "too small"),
        ):
            self.filter_refused(["--kernel", kernel], *words)

    def test_matrices(self):
        for matrix, *words in (
            ("1,2,3;4,5", "row 2 has 2 numbers", "first has 3"),
            ("1,x,3", "row 1", "'x'"),
            ("1,,3", "row 1", "''"),
            ("1,2;", "row 2 is empty"),
            (";", "row 1 is empty"),
            ("1,nan", "'nan'", "finite"),
            ("1;-inf", "row 2", "'-inf'"),
            ("1e999,1", "'1e999'"),
            ("1/0,1", "'1/0'"),
            ("1 2;3 4", "'1 2'"),
            ("0x10,1", "'0x10'"),
            (",".join("1" * 1024), "1024 columns", "1023"),
            (";".join("1" * 1024), "1024 rows", "1023"),
            ("1,2\n3,4", "row 1"),
        ):
            self.filter_refused(["--kernel", matrix], *words)

    def test_kernel_files(self):
        for text, *words in (
            ("", "'k.csv' is empty"),
            ("\n \n", "'k.csv' is empty"),
            ("1,2\n3\n", "'k.csv', line 2 has 1 number"),
            ("1,2\n\n3,4\n", "'k.csv', line 2 is empty"),
            ("1,2\n3,four\n", "'k.csv', line 2", "'four'"),
            ("1;2\n", "'k.csv', line 1", "'1;2'"),
            ("1,\0", "'k.csv', line 1"),
        ):
            (self.folder / "k.csv").write_text(text)
            self.filter_refused(["--kernel", "k.csv"], *words)
        self.filter_refused(["--kernel", "missing.csv"], "'missing.csv'", "No such file")
        self.filter_refused(["--kernel", "."], "'.'", "Is a directory")
        self.filter_refused(["--kernel", "/dev/zero"], "'/dev/zero'", "longer than")

    def test_kernel_larger_than_the_image(self):
        for kernel, extents in (("box:7", "7x7"), ("1,1,1,1,1,1,1", "7x1"), ("1;1;1;1;1;1", "1x6")):
            self.filter_refused(["--kernel", kernel], f"kernel of {extents}", "image of 6x5")

    def test_numbers(self):
        for option in ("--scale", "--scale-output", "--offset"):
            for value in ("big", "nan", "1e999", "1/0", "", "1/2/3"):
                self.filter_refused(["--kernel", "1", option, value], option, f"'{value}'", "1/16")
        for options in (["--kernel", "1e300,-1e300"], ["--kernel", "1", "--scale-output", "1e299"],
                        ["--kernel", "1", "--offset", "-1.7e308"]):
            self.filter_refused(options, "too large", "1e300")
        self.filter_refused(["--kernel", "1e300", "--scale", "1e300"], "--scale 1e+300")

    def test_filter_options(self):
        fixed = "input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0"
        for options, *words in (
            (["--mode", "big"], "--mode 'big'", "valid, same, full"),
            (["--pad", "reflect"], "--pad 'reflect'", "constant:V, replicate, symmetric, circular, mirror"),
            (["--pad", "constant:"], "--pad 'constant:'", "finite number"),
            (["--pad", "constant:1,2", "--mode", "same"], "--pad", "real"),
            (["--normalise", "mean"], "--normalise 'mean'", "none, energy"),
            (["--type", "half"], "--type 'half'", "float, double"),
            (["--type", "float", "--kernel", "1e38"], "1e37"),
            (["--type", "float", "--fixed", fixed], "--type and --fixed"),
            (["--fixed", "input=u8.0"], "--fixed", "filter is missing", "accumulator=TYPE"),
            (["--fixed", fixed + ",sum=s8.0"], "'sum=s8.0'", "product=TYPE"),
            (["--fixed", fixed + ",input=u8.0"], "input is given twice"),
            (["--fixed", fixed + ",product=s129.0"], "product", "s129.0", "1 to 128"),
            (["--fixed", fixed + ",rounding=up"], "rounding 'up'", "convergent"),
            (["--fixed", fixed + ",overflow=clip"], "overflow 'clip'", "saturate"),
            (["--fixed", fixed, "--normalise", "energy"], "sqrt: no type"),
            (["--fixed", fixed, "--mode", "same", "--pad", "constant:0.5"], "0.5", "u8.0"),
        ):
            kernel = [] if "--kernel" in options else ["--kernel", "1"]
            self.filter_refused([*kernel, *options], *words)

    def test_arrays(self):
        for array, options, *words in (
            (numpy.zeros((2, 3, 4)), [], "3 dimensions", "1 and 2"),
            (numpy.zeros(()), [], "0 dimensions", "1 and 2"),
            (numpy.zeros((0, 4)), [], "extent 0 in dimension 1", "1 to 2147483647"),
            (numpy.zeros((3, 4), dtype=numpy.int16), [], "int16", "--type", "float, double"),
            (numpy.zeros(5), ["--kernel", "1;2"], "rank"),
            (numpy.zeros((3, 4)), ["--kernel", "box:4"], "extent 4 in dimension 1", "4 x 3", "1 to 3"),
            (numpy.zeros((3, 4)), ["--mode", "same", "--pad", "constant:1,2"], "1 + 2i", "real"),
        ):
            numpy.save(self.folder / "in.npy", array)
            kernel = [] if "--kernel" in options else ["--kernel", "1"]
            self.refused(["convolve", "in.npy", "out.npy", *kernel, *options], *words)
        self.refused(["convolve", "in.npy", "old.png", "--kernel", "1"], "'old.png'", ".npy")
        self.refused(["convolve", "in.png", "out.npy", "--kernel", "1"], "'in.png'", "3 channels", ".png")

    def test_comparisons(self):
        self.write("deep.png", self.random_image(6, 5, 3, 16), 16)
        arrays = {"colours": numpy.zeros((5, 6, 3)), "plane": numpy.zeros((5, 6)), "complex": numpy.zeros((5, 6), "c8"),
                  "nan": numpy.full((5, 6), numpy.nan), "long": numpy.full((5, 6), 2**53 + 1), "empty": numpy.zeros((0, 6)),
                  "scalar": numpy.zeros(()), "far": numpy.full((5, 6), 1e308)}
        for name, array in arrays.items():
            numpy.save(self.folder / f"{name}.npy", array)
        for first, second, *words in (
            ("in.png", "plane.npy", "3x6x5", "6x5"),
            ("in.png", "deep.png", "8 and 16 bits"),
            ("plane.npy", "complex.npy", "second", "complex64", "real"),
            ("nan.npy", "plane.npy", "first", "not finite"),
            ("plane.npy", "long.npy", "second", "9007199254740993", "2^53"),
            ("empty.npy", "empty.npy", "empty"),
            ("scalar.npy", "scalar.npy", "no dimensions"),
            ("plane.npy", "far.npy", "too far apart"),
            ("plane.npy", "gone.npy", "gone.npy"),
        ):
            self.refused(["compare", first, second], *words)
        for peak in ("0", "-1", "white"):
            self.refused(["compare", "in.png", "in.png", "--peak", peak], "--peak", f"'{peak}'")

    def test_kernels_in_fixed_point(self):
        for kernel, fixed, *words in (
            ("box:3", "input=u8.0", "filter is missing", "input=TYPE,filter=TYPE"),
            ("box:3", "input=u8.0,filter=u8.8,output=u8.0", "'output=u8.0'", "rounding=MODE"),
            ("box:3", "input=u33.0,filter=u8.8", "input: u33.0", "1 to 32"),
            ("box:3", "input=u8.0,filter=u8.401", "filter: u8.401", "-400 to 400"),
            ("4e9,4e9,4e9", "input=u32.0,filter=u32.0", "more than 64 bits"),
            ("1e308,1e308", "input=u8.0,filter=u8.8", "1.8e308"),
            ("bok:3", "input=u8.0,filter=u8.8", "'bok:3'"),
        ):
            self.refused(["kernel", kernel, "--fixed", fixed], *words)

    def test_medians(self):
        self.write("bit.png", self.random_image(6, 5, 1, 1), 1)
        arrays = {"line": numpy.zeros(9), "complex": numpy.zeros((5, 6), "c8"), "cube": numpy.zeros((3, 3, 3)),
                  "long": numpy.array([[0, 2**52 + 1, -2**60]]), "int8": numpy.zeros((5, 6), "i1"),
                  "bool": numpy.zeros((5, 6), bool), "float": numpy.zeros((5, 6), "f4")}
        for name, array in arrays.items():
            numpy.save(self.folder / f"{name}.npy", array)
        for name, options, *words in (
            ("in.png", [], "--window is required"),
            ("in.png", ["--window", ""], "--window", "''", "1 to 1023"),
            ("in.png", ["--window", "5"], "--window", "WIDTHxHEIGHT"),
            ("in.png", ["--window", "5x"], "--window '5x'", "''"),
            ("in.png", ["--window", "3x1024"], "'1024'", "1 to 1023"),
            ("in.png", ["--window", "3x3x3"], "'3x3x3'", "WIDTHxHEIGHT"),
            ("in.png", ["--window", "7x3"], "window of 7x3", "image of 6x5", "same or full"),
            ("in.png", ["--window", "3x3", "--mode", "all"], "--mode 'all'", "valid, same, full"),
            ("in.png", ["--window", "3x3", "--pad", "constant:256"], "constant:256", "8 bits", "0 to 255"),
            ("in.png", ["--window", "3x3", "--pad", "constant:0.5"], "constant:0.5", "whole"),
            ("in.png", ["--window", "3x3", "--pad", "constant:1,2"], "constant:1,2", "8 bits"),
            ("bit.png", ["--window", "3x3", "--pad", "constant:255"], "constant:255", "one bit", "0 to 1"),
            ("line.npy", ["--window", "3x3"], "window: rank 2", "1"),
            ("line.npy", ["--window", "10"], "window: extent 10", "1 to 9"),
            ("cube.npy", ["--window", "3x3"], "3 dimensions", "1 and 2"),
            ("complex.npy", ["--window", "3x3"], "complex64", "no order", "float64"),
            ("long.npy", ["--window", "1x1"], "2 of 3", "int64", "-2^52 to 2^52"),
            ("int8.npy", ["--window", "3x3", "--pad", "constant:-129"], "int8", "-128 to 127"),
            ("bool.npy", ["--window", "3x3", "--pad", "constant:2"], "bool", "0 to 1"),
            ("float.npy", ["--window", "3x3", "--pad", "constant:1e39"], "float32", "real"),
            ("in.png", ["--window", "3x3", "--fixed", "output=u8.0"], "input is missing", "accumulator=TYPE"),
            ("in.png", ["--window", "3x3", "--fixed", "input=u8.0,filter=u8.0"], "'filter=u8.0'", "output=TYPE"),
            ("in.png", ["--window", "9x9", "--fixed", "input=u8.0"], "window of 9x9", "image of 6x5"),
            ("in.png", ["--window", "3x3", "--fixed", "input=u8.0", "--pad", "constant:1,2"], "1,2", "real"),
            ("float.npy", ["--window", "3x3", "--mode", "same", "--fixed", "input=u8.0", "--pad", "constant:0.5"],
             "--pad 'constant:0.5'", "u8.0"),
            ("float.npy", ["--window", "3x3", "--fixed", "input=u127.0"], "accumulator", "129 bits", "128"),
            ("complex.npy", ["--window", "3x3", "--fixed", "input=u8.0"], "complex64", "no order"),
        ):
            self.refused(["median", name, "old." + name[-3:], *options], *words)
        self.refused(["median", "bool.npy", "old.png", "--window", "1x1"], "'old.png'", ".npy")

    def test_separable_kernels(self):
        for row, column, *words in (
            ("1,2;3,4", "1", "--row '1,2;3,4'", "one line"),
            ("1", "sharpen", "--column 'sharpen'", "gaussian:N:SIGMA"),
            ("1", "", "empty"),
            ("box:0", "1", "'0'", "1 to 1023"),
            ("1,1,1,1,1,1,1", "1", "kernel of 7x1", "image of 6x5"),
        ):
            self.refused(["separable", "in.png", "old.png", "--row", row, "--column", column], *words)
        self.refused(["separable", "in.png", "old.png", "--row", "1"], "--column is required")

    def test_chart_sizes(self):
        for size, *words in (
            ("640", "'640'", "WIDTHxHEIGHT"),
            ("640x", "height", "''"),
            ("127x480", "width", "'127'", "128 to 16384"),
            ("640x95", "height", "'95'", "96 to 16384"),
        ):
            self.refused(["chart", "old.png", "--size", size], "--size", *words)


if __name__ == "__main__":
    unittest.main()
