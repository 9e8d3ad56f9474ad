"""Bad arguments and files of the operations match and patch."""

import unittest

import numpy
from refusal_case import RefusalCase


class MatchArgumentsTest(RefusalCase):
    def setUp(self):
        super().setUp()
        self.write("small.png", self.random_image(3, 2))
        self.write("deep.png", self.random_image(3, 2, 1, 16), 16)
        for name, array in (("f32", numpy.zeros((2, 2), "f4")), ("f64", numpy.zeros((2, 2))),
                            ("int", numpy.zeros((2, 2), "i2")), ("cube", numpy.zeros((2, 2, 2))),
                            ("empty", numpy.zeros((0, 2)))):
            numpy.save(self.folder / f"{name}.npy", array)

    def test_options(self):
        for options, *words in (
            ("--metric mad", "--metric 'mad'", "sad, ssd, maxad, product"),
            ("--search fast", "--search 'fast'", "exhaustive, three-step"),
            ("--mode outer", "--mode 'outer'", "valid, same, full"),
            ("--neighbourhood 0", "--neighbourhood", "'0'", "1 to 1023"),
            ("--roi 1,2,3", "--roi '1,2,3'", "X,Y,WIDTHxHEIGHT"),
            ("--roi 1,3", "--roi '1,3'", "X,Y,WIDTHxHEIGHT"),
            ("--roi 1,2,0x4", "--roi '1,2,0x4'", "'0'"),
            ("--roi 50,2,4x4", "--roi 50,2,4x4 holds no position", "1,0,4x4"),
            ("--roi 2147483647,0,9x9", "region", "2147483647"),
            ("--map map.tif", "--map 'map.tif'", ".npy or .png"),
            ("--overlay o.jpg", "'o.jpg'", ".png"),
            ("--fixed input=u8.0,accumulator=s12.0,output=u8.0", "template is missing", "product=TYPE"),
            ("--fixed input=u8.0,template=u8.0,accumulator=s12.0,output=u8.0,sqrt=u8.0", "'sqrt=u8.0'", "template=TYPE"),
            ("--fixed input=u8.0,template=u8.0,accumulator=s12.0,output=u8.0,product=s9.0", "product: s9.0", "3 (product)"),
            ("--map m.npy --overlay nowhere/o.png", "'nowhere/o.png'", "No such file"),
            ("--map o.png --overlay o.png", "'o.png'", "differ"),
            ("--map nowhere/old.png", "'nowhere/old.png'", "No such file"),
        ):
            self.refused(["match", "in.png", "small.png", *options.split()], *words)

    def test_files(self):
        for image, pattern, *words in (
            ("small.png", "in.png", "template: extent 6", "input of 3 x 2", "1 to 3"),
            ("none.png", "small.png", "'none.png'", "No such file"),
            ("in.png", "deep.png", "'deep.png'", "16 bits", "of 8", "the same"),
            ("in.png", "f32.npy", "float64", "float32", "complex128", "bool"),
            ("in.png", "int.npy", "'int.npy'", "int16", "bool, float32, float64, complex64, complex128"),
            ("cube.npy", "f64.npy", "'cube.npy'", "3 dimensions (2x2x2)", "2"),
            ("f64.npy", "empty.npy", "'empty.npy'", "empty (2x0)", "1 or more"),
        ):
            self.refused(["match", image, pattern, "--map", "old.png"], *words)

    def test_patch(self):
        for options, *words in (
            ("--box 1,2,6x3", "--box '1,2,6x3'", "within 0,0,6x5"),
            ("--box -1,2,3x3", "within 0,0,6x5"),
            ("--box 1,3", "X,Y,WIDTHxHEIGHT"),
            ("--box 1,2,3x3 --noise 256", "--noise", "'256'", "0 to 255"),
            ("--noise 3", "--box is required"),
        ):
            self.refused(["patch", "in.png", "old.png", *options.split()], *words)


if __name__ == "__main__":
    unittest.main()
