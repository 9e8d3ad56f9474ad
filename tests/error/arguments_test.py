"""Bad arguments: each case is a command line and the words of its refusal."""

import unittest

import numpy
from refusal_case import RefusalCase

OPERATIONS = "convolve, correlate, separable, median, match, compare, checksum, kernel, show, chart, patch, plan, list, help, completion"
BOX = "X,Y,WIDTHxHEIGHT"


class ArgumentsTest(RefusalCase):
    def save(self, **arrays):
        for name, array in arrays.items():
            numpy.save(self.folder / f"{name}.npy", array)

    def test_operations_and_options(self):
        self.all_refused(
            "",
            ("blur in.png old.png", "unknown operation 'blur'", OPERATIONS),
            ("convole in.png old.png", "unknown operation 'convole'; did you mean 'convolve'?\n"),
            ("--quiet convolve", "'--quiet'", OPERATIONS),
            ("list all", "unexpected argument 'all'"),
            ("completion fish", "SHELL 'fish'", "bash"),
            ("convolve in.png", "OUT is required; usage: orvane convolve IN OUT --kernel KERNEL [OPTIONS]; see orvane convolve"),
            ("convolve in.png old.png", "--kernel is required"),
            ("convolve in.png old.png --kernel", "--kernel needs a value"),
            ("convolve in.png old.png --kernal 1", "unknown option '--kernal'; did you mean '--kernel'?\n"),
            ("convolve --kernal=1 in.png", "unknown option '--kernal'; did you mean '--kernel'?\n"),
            ("convolve in.png old.png more.png --kernel 1", "unexpected argument 'more.png'"),
            ("convolve in.png old.png --kernel 1 --mode same --mode full", "--mode is given twice"),
            ("correlate in.png old.png --kernel 1 --sigma 3", "unknown option '--sigma'; see orvane correlate --help"),
            ("convolve in.png old.png -x 1", "unknown option '-x'"),
            ("convolve in.png out.jpg --kernel 1", "'out.jpg'", ".png"),
            ("chart old.png --size 640", "--size '640'", "WIDTHxHEIGHT"),
            ("chart old.png --size 640x", "--size", "height", "''"),
            ("chart old.png --size 127x480", "--size", "width", "'127'", "128 to 16384"),
            ("patch in.png old.png --box 1,2,6x3", "--box '1,2,6x3'", "within 0,0,6x5"),
            ("patch in.png old.png --box 1,3", BOX),
            ("patch in.png old.png --box 1,2,3x3 --noise 256", "--noise", "'256'", "0 to 255"),
        )

    def test_kernels(self):
        self.all_refused(
            "convolve in.png old.png --kernel",
            ("bok:3", "'bok:3'", "box:N", "gaussian:N:SIGMA", "sobel-y", "CSV"),
            ("'  '", "empty"),
            ("box", "'box'", "box:N"),
            ("box:1024", "'1024'", "1 to 1023"),
            ("gaussian", "gaussian:SIGMA or gaussian:N:SIGMA"),
            ("gaussian:200", "'200'", "1201 pixels", "at most 1023"),
            ("motion:0:45", "LENGTH", "1 to 1021"),
            ("disk:-1", "RADIUS", "0 to 511"),
            ("gaussian:4:0.01", "SIGMA", "too small"),
            ("'1,2,3;4,5'", "row 2 has 2 numbers", "first has 3"),
            ("'1,2;'", "row 2 is empty"),
            ("'1;-inf'", "row 2", "'-inf'", "finite"),
            ("1/0,1", "'1/0'"),
            (",".join("1" * 1024), "1024 columns", "1023"),
            ("'" + ";".join("1" * 1024) + "'", "1024 rows", "1023"),
            ("box:7 --mode valid", "kernel of 7x7", "image of 6x5"),
            ("missing.csv", "'missing.csv'", "No such file"),
            (".", "'.'", "Is a directory"),
            ("/dev/zero", "'/dev/zero'", "longer than"),
        )
        for text, *words in (("\n \n", "'k.csv' is empty"), ("1,2\n3\n", "'k.csv', line 2 has 1 number,"),
                             ("1,2\n\n3,4\n", "'k.csv', line 2 is empty"), ("1;2\n", "'k.csv', line 1", "'1;2'"),
                             ("1 2\t3\n4 5", "'k.csv', line 2 has 2 numbers")):
            (self.folder / "k.csv").write_text(text)
            self.refused("convolve in.png old.png --kernel k.csv", *words)
        self.all_refused(
            "separable in.png old.png",
            ("--row '1,2;3,4' --column 1", "--row '1,2;3,4'", "one line"),
            ("--row 1,1,1,1,1,1,1 --column 1 --mode valid", "kernel of 7x1", "image of 6x5"),
            ("--row 1", "--column is required"),
        )
        self.all_refused(
            "kernel",
            ("box:3 --fixed input=u8.0", "filter is missing", "input=TYPE,filter=TYPE"),
            ("box:3 --fixed input=u33.0,filter=u8.8", "input: u33.0", "1 to 32"),
            ("box:3 --fixed input=u8.0,filter=u8.401", "filter: u8.401", "-400 to 400"),
            ("1e308,1e308 --fixed input=u8.0,filter=u8.8", "1.8e308"),
        )

    def test_filter_options(self):
        for option in ("--scale", "--scale-output", "--offset"):
            for value in ("big", "nan", "1/0", ""):
                self.refused(f"convolve in.png old.png --kernel 1 {option} '{value}'", option, f"'{value}'", "1/16")
        fixed = "--kernel 1 --fixed input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0"
        self.all_refused(
            "convolve in.png old.png",
            ("--kernel 1e300,-1e300", "too large", "1e300"),
            ("--kernel 1e300 --scale 1e300", "--scale 1e+300"),
            ("--kernel 1e38 --type float", "1e37"),
            ("--kernel 1 --mode big", "--mode 'big'", "valid, same, full"),
            ("--kernel 1 --pad zero", "--pad 'zero'", "constant:V, replicate, symmetric, circular, mirror"),
            ("--kernel 1 --pad constant:", "--pad 'constant:'", "finite number"),
            ("--kernel 1 --pad constant:1,2 --mode same", "--pad", "real"),
            ("--kernel 1 --pad replicate:3", "--pad 'replicate:3'", "constant:V"),
            ("--kernel 1 --fixed input=u8.0", "--fixed", "filter is missing", "accumulator=TYPE"),
            (f"{fixed} --type float", "--type and --fixed"),
            (f"{fixed},sum=s8.0", "'sum=s8.0'", "product=TYPE"),
            (f"{fixed},input=u8.0", "input is given twice"),
            (f"{fixed},rounding=up", "rounding 'up'", "convergent"),
            (f"{fixed},overflow=clip", "overflow 'clip'", "saturate"),
            (f"{fixed} --normalise energy", "sqrt: no type"),
            (f"{fixed} --mode same --pad constant:0.5", "0.5", "u8.0"),
        )

    def test_arrays(self):
        self.save(cube=numpy.zeros((3, 4, 5), "f4"), empty=numpy.zeros((0, 4)),
                  short=numpy.zeros((3, 4), "i2"), line=numpy.zeros(5), plane=numpy.zeros((3, 4)),
                  complex=numpy.zeros((3, 4, 5), "c8"), deep=numpy.zeros((1,) * 9), tall=numpy.zeros((9000, 20)))
        self.all_refused(
            "convolve",
            ("cube.npy out.npy --kernel 1", "3 dimensions", "1 and 2", "--axes"),
            ("cube.npy out.npy --kernel 1 --axes YX", "--axes 'YX'", "3 letters", "ZYX"),
            ("cube.npy out.npy --kernel 1 --axes XYZ", "--axes 'XYZ'", "YXC"),
            ("in.png old.png --kernel 1 --axes YX", "--axes 'YX'", "only arrays"),
            ("empty.npy out.npy --kernel 1", "empty (4x0)", "1 or more"),
            ("line.npy out.npy --kernel '1;2' --mode valid", "kernel of 1x2", "5x1"),
            ("plane.npy old.png --kernel 1", "'old.png'", "float64", ".tif and .npy can"),
            ("short.npy old.png --kernel 1", "'old.png'", "int16"),
            ("in.png old.png --kernel 1 --format jpeg", "--format 'jpeg'", "png, tiff, npy"),
            ("in.png old.png --kernel 1 --compression 10", "--compression", "'10'", "0 to 9"),
            ("in.png old.png --kernel 1 --threads -1", "--threads", "'-1'", "0 to 1024"),
            ("in.png old.png --kernel 1 --memory 0", "--memory", "'0'", "1 to"),
        )
        # A pipe cannot be read twice.
        self.refused("convolve - out.npy --kernel box:9 --pad circular --memory 1", "--memory 1", "circular", "MiB",
                     prefix=("sh", "-c", 'cat tall.npy | "$@"', "sh"))
        self.all_refused(
            "correlate --nd",
            ("cube.npy out.npy --kernel plane.npy", "filter: rank 2", "3"),
            ("cube.npy out.npy --kernel complex.npy", "kernel", "complex64", "real"),
            ("complex.npy out.npy --kernel cube.npy", "array", "complex64", "real"),
            ("deep.npy out.npy --kernel deep.npy", "9 dimensions", "1 to 8"),
            ("cube.npy out.npy --kernel cube.npy --normalise energy", "--nd", "--normalise"),
            ("cube.npy out.npy --kernel cube.npy --scale 2", "--scale", "--nd"),
            ("cube.npy out.npy --kernel cube.npy --pad constant:1,2", "--pad", "real"),
        )

    def test_sheets(self):
        self.all_refused(
            "show in.png",
            ("old.png", "'old.png'", ".html"),
            ("new.html --kernel blob", "unknown kernel 'blob'"),
            ("new.html --pad constant:1,2", "--pad", "real"),
            ("nowhere/new.html", "'nowhere/new.html'", "No such file"),
        )

    def test_comparisons(self):
        self.write("deep.png", self.random_image(6, 5, 3, 16), 16)
        self.save(plane=numpy.zeros((5, 6)), empty=numpy.zeros((0, 6)), scalar=numpy.zeros(()))
        self.all_refused(
            "compare",
            ("in.png plane.npy", "3x6x5", "6x5"),
            ("in.png deep.png", "8 and 16 bits"),
            ("empty.npy empty.npy", "empty"),
            ("scalar.npy scalar.npy", "no dimensions"),
            ("in.png in.png --overlay o.jpg", "'o.jpg'", ".tif"),
            ("in.png in.png --peak 0", "--peak '0'", "greater than 0"),
            ("in.png in.png --max-error -1", "--max-error '-1'", "less than 0"),
            ("in.png in.png --max-error nan", "--max-error", "'nan'"),
        )

    def test_medians(self):
        self.write("bit.png", self.random_image(6, 5, 1, 1), 1)
        self.save(complex=numpy.zeros((5, 6), "c8"), cube=numpy.zeros((3, 3, 3)),
                  long=numpy.array([[0, 2**52 + 1, -2**60]]), int8=numpy.zeros((5, 6), "i1"),
                  bool=numpy.zeros((5, 6), bool), float=numpy.zeros((5, 6), "f4"))
        self.all_refused(
            "median",
            ("in.png old.png", "--window is required"),
            ("in.png old.png --window 5", "--window", "WIDTHxHEIGHT"),
            ("in.png old.png --window 3x1024", "'1024'", "1 to 1023"),
            ("in.png old.png --window 7x3 --mode valid", "window of 7x3", "image of 6x5", "same or full"),
            ("in.png old.png --window 3x3 --pad constant:256", "constant:256", "8 bits", "0 to 255"),
            ("in.png old.png --window 3x3 --pad constant:0.5", "constant:0.5", "whole"),
            ("bit.png old.png --window 3x3 --pad constant:255", "constant:255", "one bit", "0 to 1"),
            ("cube.npy out.npy --window 3x3", "3 dimensions", "1 and 2"),
            ("complex.npy out.npy --window 3x3", "complex64", "no order", "float64"),
            ("long.npy out.npy --window 1x1", "int64", "-2^52 to 2^52"),
            ("int8.npy out.npy --window 3x3 --pad constant:-129", "int8", "-128 to 127"),
            ("bool.npy old.png --window 1x1", "'old.png'", "bool", ".npy"),
            ("float.npy out.npy --window 3x3 --pad constant:1e39", "float32", "real"),
            ("in.png old.png --window 3x3 --fixed output=u8.0", "input is missing", "accumulator=TYPE"),
            ("float.npy out.npy --window 3x3 --fixed input=u8.0 --mode same --pad constant:0.5", "'constant:0.5'", "u8.0"),
        )

    def test_matches(self):
        self.write("small.png", self.random_image(3, 2))
        self.write("deep.png", self.random_image(3, 2, 1, 16), 16)
        self.save(f32=numpy.zeros((2, 2), "f4"), f64=numpy.zeros((2, 2)), int=numpy.zeros((2, 2), "i2"),
                  cube=numpy.zeros((2, 2, 2)), empty=numpy.zeros((0, 2)))
        fixed = "--fixed input=u8.0,accumulator=s12.0,output=u8.0"
        self.all_refused(
            "match in.png small.png",
            ("--metric mad", "--metric 'mad'", "sad, ssd, maxad, product, cosine, coefficient"),
            ("--neighbourhood 0", "--neighbourhood", "'0'", "1 to 1023"),
            ("--roi 1,2,3", "--roi '1,2,3'", BOX),
            ("--top 2 --min-distance -1", "--min-distance '-1'", "less than 0"),
            ("--roi 50,2,4x4", "--roi 50,2,4x4 holds no position", "1,0,4x4"),
            ("--map map.gif", "'map.gif'", ".tif", ".npy"),
            ("--overlay o.jpg", "'o.jpg'", ".png"),
            (fixed, "template is missing", "product=TYPE"),
            ("--map m.npy --overlay nowhere/o.png", "'nowhere/o.png'", "No such file"),
            ("--map o.png --overlay ./o.png", "'o.png'", "differ"),
        )
        self.all_refused(
            "match --map old.png",
            ("small.png in.png", "template: extent 6", "input of 3 x 2", "1 to 3"),
            ("in.png deep.png", "'deep.png'", "16 bits", "of 8", "the same"),
            ("in.png f32.npy", "float64", "float32", "complex128", "bool"),
            ("in.png int.npy", "'int.npy'", "int16", "bool, float32, float64, complex64, complex128"),
            ("cube.npy f64.npy", "'cube.npy'", "3 dimensions (2x2x2)", "2"),
            ("f64.npy empty.npy", "'empty.npy'", "empty (2x0)", "1 or more"),
        )

    def test_plans(self):
        self.all_refused(
            "plan --input 9x9 --window 3x3",
            ("--reach 3", "--reach", "'3'", "0 to 2"),
            ("--roi 999999999,2,3x4", "region", "999999999", "268435456"),
            ("--svg plan.png", "'plan.png'", ".svg"),
            ("--svg nowhere/plan.svg", "'nowhere/plan.svg'", "No such file"),
        )
        self.all_refused(
            "plan --mode full",
            ("--input 3x2147483648 --window 3x3", "--input '3x2147483648'", "1 to 2147483647"),
            ("--input 9x9 --window 3x-3", "--window '3x-3'", "'-3'"),
            ("--input 9x9 --window 3", "window has 1 dimension", "input has 2"),
            ("--input 9x9x9x9x9 --window 3x3x3x3x3", "5 dimensions", "1 to 4"),
            ("--input 40000x40000 --window 20000x20000", "output has more than 2147483647 elements"),
            ("--input 300000000 --window 3", "input", "300000000", "268435456"),
            ("--input 9x9", "--window is required"),
            ("--input 9x9x9 --window 3x3x3 --svg p.svg", "3 dimensions", "1 and 2"),
        )
        self.refused("plan --input 9x3 --window 3x4 --mode valid", "window: extent 4 in dimension 1; with mode valid and an input of 9x3, "
                     "allowed are 1 to 3")


if __name__ == "__main__":
    unittest.main()
