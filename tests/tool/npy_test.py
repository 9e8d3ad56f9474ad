"""NPY files, beside what numpy makes of them."""

import subprocess
import unittest
from pathlib import Path

import numpy
from command_case import TOOL, CommandCase

COPY = Path(TOOL).parent / "npy_copy"
TYPES = ("bool", "int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64", "float32", "float64",
         "complex64", "complex128")
SHAPES = ((), (7,), (0,), (3, 4), (4, 0, 2), (2, 3, 4), (1, 3, 1, 2, 2), (2,) * 9)


def header(text, version=1, length=None):
    """The start of a file whose dictionary is `text`."""
    length = len(text) if length is None else length
    return b"\x93NUMPY" + bytes([version, 0]) + length.to_bytes(2 if version == 1 else 4, "little") + text.encode()


def described(descr="'<f8'", order="False", shape="(2,)", more="", data=bytes(16)):
    return header(f"{{'descr': {descr}, 'fortran_order': {order}, 'shape': {shape}{more}}}") + data


class NpyTest(CommandCase):
    def copy(self, data=None, source="in.npy"):
        """Copies in.npy, which is given on the standard input, too."""
        if data is not None:
            (self.folder / "in.npy").write_bytes(data)
        done = subprocess.run([COPY, source, "out.npy"], cwd=self.folder, capture_output=True, check=False,
                              input=(self.folder / "in.npy").read_bytes())
        done.stdout, done.stderr = done.stdout.decode(), done.stderr.decode()
        return done

    def check(self, array, **how):
        """in.npy, which holds `array`, must be read with its last axis as dimension 0, and written as it was."""
        done = self.copy(**how)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        native = array.astype(array.dtype.newbyteorder("="))
        extents = "".join(f"{extent} " for extent in reversed(array.shape))
        self.assertEqual(done.stdout, f"{array.dtype.name} [ {extents}] {native.tobytes('C').hex()}\n")
        written = numpy.load(self.folder / "out.npy")
        self.assertEqual((written.dtype, written.shape, written.tobytes()), (native.dtype, array.shape, native.tobytes()))

    def refused(self, data, *words):
        done = self.copy(data)
        with self.subTest(data=data[:120], words=words):
            self.assertEqual((done.returncode, done.stdout), (2, ""), done.stderr)
            self.assertRegex(done.stderr, r"\A'in.npy'[^\n]+\n\Z")
            for word in words:
                self.assertIn(word, done.stderr)
            self.assertFalse((self.folder / "out.npy").exists())

    def test_all_types_shapes_and_orders(self):
        for number, (name, shape) in enumerate((name, shape) for name in TYPES for shape in SHAPES):
            values = self.random.bytes(int(numpy.prod(shape)) * numpy.dtype(name).itemsize)
            array = numpy.frombuffer(values, "u1" if name == "bool" else name).reshape(shape)
            array = array % 2 == 1 if name == "bool" else array.astype(array.dtype.newbyteorder("<>"[number // 3 % 2]))
            layout = numpy.asfortranarray if number % 2 else numpy.ascontiguousarray
            with self.subTest(type=array.dtype, shape=shape, number=number):
                with open(self.folder / "in.npy", "wb") as file:
                    numpy.lib.format.write_array(file, layout(array).reshape(shape, order="A"), (number % 3 + 1, 0))
                self.check(array)
        numpy.save(self.folder / "in.npy", numpy.arange(300000, dtype="f4"))
        self.check(numpy.arange(300000, dtype="f4"), source="/dev/stdin")

    def test_headers_as_python_may_write_them(self):
        for text in ("{'shape':(1,3),'descr':'|u1','fortran_order':False}",
                     '{ "descr" : "<u1" , "fortran_order" : False , "shape" : ( 1L , 3L , ) , }  \n',
                     "{'fortran_order': True, 'shape': (1, 3), 'descr': '=u1'}"):
            self.check(numpy.array([[1, 2, 3]], "u1"), data=header(text, 2) + bytes([1, 2, 3]))
        self.check(numpy.array([False, True, True]), data=described("'|b1'", shape="(3,)", data=bytes([0, 1, 200])))

    def test_damaged_headers(self):
        for shape in ("2", "(2)", "(2 3)", "(-2,)", "(2.0,)", "[2]", "(,)", "(2,", "(99999999999999999999,)", "'2'",
                      f"({2**63},)"):
            self.refused(described(shape=shape), "damaged header")
        for descr in ("'|O'", "'<f2'", "'<U4'", "'|f8'", "'f8'", "''", "'<f88'", "[('a', '<f8')]"):
            self.refused(described(descr), "not supported", "float64", "complex128")
        for data, *words in (
            (described("3"), "'descr' must be a text"),
            (described("'\xff\x07'"), r"'ÿ\x07'"),
            (described(order="0"), "True or False"),
            (described(more=", 'more': 1"), "unknown key 'more'"),
            (described(more=", 'shape': (2,)"), "twice"),
            (described(more="}  x"), "after the dictionary"),
            (described(shape="(" + "1, " * 65 + ")"), "65 axes", "at most 64"),
            (header("{'descr': '<f8"), "a quote is not closed"),
            (header("{'descr': '<f8', 'fortran_order': False}"), "needs 'descr', 'fortran_order' and 'shape'"),
            (header(""), "dictionary"),
            (header("{}", 2, 2**32 - 1), "length is 4294967295"),
            (header("{}", 4), "version 4.0", "1.0, 2.0 and 3.0"),
            (described(shape="(3, 2)", data=bytes(47)), "truncated", "(3, 2) of float64 needs 48 bytes", "47 follow"),
            (described(shape="(3, 2)", data=bytes(49)), "longer than the 48 bytes"),
            (described(shape=f"({2**59},)", data=b""), "truncated", f"needs {2**62} bytes", "0 follow"),
            (described(shape=f"({2**31}, {2**31})"), "64 bits"),
        ):
            self.refused(data, *words)

    def test_files_cut_off_or_changed_anywhere(self):
        numpy.save(self.folder / "in.npy", numpy.arange(6, dtype=">i2").reshape(2, 3))
        whole = (self.folder / "in.npy").read_bytes()
        for length in [*range(0, len(whole), 4), len(whole) - 1]:
            self.refused(whole[:length], "is not a PNG, TIFF, JPEG or NPY file" if length < 6 else "truncated")
        for position in range(0, len(whole) - 12, 2):
            changed = bytes([whole[position] ^ (1, 0x20, 0x80)[position % 3]])
            done = self.copy(whole[:position] + changed + whole[position + 1:])
            self.assertIn(done.returncode, (0, 2), f"byte {position}")


if __name__ == "__main__":
    unittest.main()
