"""NPY files, beside what numpy makes of them."""

import subprocess
import unittest
from pathlib import Path

import numpy
from command_case import TOOL, CommandCase

COPY = Path(TOOL).parent / "npy_copy"
TYPES = ("bool", "int8", "int16", "int32", "int64", "uint8", "uint16", "uint32", "uint64", "float32", "float64",
         "complex64", "complex128")
SHAPES = ((), (1,), (7,), (0,), (3, 4), (4, 0, 2), (2, 3, 4), (1, 3, 1, 2, 2), (2,) * 9)


def header(text, version=1, length=None):
    """The start of a file whose dictionary is `text`."""
    length = len(text) if length is None else length
    return b"\x93NUMPY" + bytes([version, 0]) + length.to_bytes(2 if version == 1 else 4, "little") + text.encode()


class NpyTest(CommandCase):
    def copy(self):
        return subprocess.run([COPY, "in.npy", "out.npy"], cwd=self.folder, capture_output=True, text=True, check=False)

    def check(self, array):
        """in.npy, which holds `array`, must be read with its last axis as dimension 0, and written as it was."""
        done = self.copy()
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        native = array.astype(array.dtype.newbyteorder("="))
        extents = "".join(f"{extent} " for extent in reversed(array.shape))
        self.assertEqual(done.stdout, f"{array.dtype.name} [ {extents}] {native.tobytes('C').hex()}\n")
        written = numpy.load(self.folder / "out.npy")
        self.assertEqual((written.dtype, written.shape), (native.dtype, array.shape))
        self.assertEqual(written.tobytes(), native.tobytes())

    def refused(self, data, *words):
        (self.folder / "in.npy").write_bytes(data)
        done = self.copy()
        with self.subTest(data=data[:120], words=words):
            self.assertEqual((done.returncode, done.stdout), (2, ""), done.stderr)
            self.assertRegex(done.stderr, r"\A'in.npy'[^\n]+\n\Z")
            for word in words:
                self.assertIn(word, done.stderr)
            self.assertFalse((self.folder / "out.npy").exists())

    def test_all_types_shapes_and_orders(self):
        for name in TYPES:
            for number, shape in enumerate(SHAPES):
                values = self.random.bytes(int(numpy.prod(shape)) * numpy.dtype(name).itemsize)
                array = numpy.frombuffer(values, name).reshape(shape)
                if name == "bool":
                    array = array.view("u1") % 2 == 1
                layout = numpy.asfortranarray if number % 2 else numpy.ascontiguousarray
                for byte_order in "<>":
                    with self.subTest(type=name, shape=shape, byte_order=byte_order):
                        stored = layout(array.astype(array.dtype.newbyteorder(byte_order))).reshape(shape, order="A")
                        version = ((1, 0), (2, 0), (3, 0))[number % 3]
                        with open(self.folder / "in.npy", "wb") as file:
                            numpy.lib.format.write_array(file, stored, version)
                        if len(shape) == 5:
                            self.assertIn(b"'fortran_order': True", (self.folder / "in.npy").read_bytes())
                        self.check(stored)

    def test_headers_as_python_may_write_them(self):
        expected = numpy.array([[1, 2, 3]], "u1")
        for text in ("{'shape':(1,3),'descr':'|u1','fortran_order':False}",
                     '{ "descr" : "<u1" , "fortran_order" : False , "shape" : ( 1L , 3L , ) , }  \n',
                     "{'fortran_order': True, 'shape': (1, 3), 'descr': '=u1'}"):
            for version in (1, 2, 3):
                (self.folder / "in.npy").write_bytes(header(text, version) + bytes([1, 2, 3]))
                self.check(expected)
        (self.folder / "in.npy").write_bytes(header("{'descr': '|b1', 'fortran_order': False, 'shape': (3,), }") +
                                             bytes([0, 1, 200]))
        self.check(numpy.array([False, True, True]))

    def test_damaged_headers(self):
        def with_item(key, value):
            items = {"descr": "'<f8'", "fortran_order": "False", "shape": "(2,)"} | {key: value}
            return header("{" + ", ".join(f"'{k}': {v}" for k, v in items.items() if v) + "}") + bytes(16)

        for shape in ("2", "(2)", "(2 3)", "(-2,)", "(2.0,)", "[2]", "(,)", "(2,", "(99999999999999999999,)", "'2'"):
            self.refused(with_item("shape", shape), "damaged header")
        for descr in ("'|O'", "'<f2'", "'<U4'", "'|f8'", "'f8'", "''", "'<f88'", "[('a', '<f8')]"):
            self.refused(with_item("descr", descr), "not supported", "float64", "complex128")
        self.refused(with_item("descr", "3"), "'descr' must be a text")
        self.refused(header("{'descr': '<f8"), "a quote is not closed")
        self.refused(with_item("descr", "'\xff\x07'"), r"'ÿ\x07'")
        self.refused(with_item("fortran_order", "0"), "True or False")
        self.refused(with_item("shape", None), "needs 'descr', 'fortran_order' and 'shape'")
        self.refused(with_item("more", "1"), "unknown key 'more'")
        self.refused(with_item("fortran_order", "False, 'shape': (2,)"), "twice")
        self.refused(with_item("shape", "(2,)}  x"), "after the dictionary")
        self.refused(with_item("shape", "(" + "1, " * 65 + ")"), "65 axes", "at most 64")
        self.refused(header(""), "dictionary")

    def test_sizes_that_do_not_fit(self):
        def promised(shape, data=b""):
            return header(f"{{'descr': '<f8', 'fortran_order': False, 'shape': {shape}}}") + data

        self.refused(promised("(3, 2)", bytes(47)), "truncated", "(3, 2) of float64 needs 48 bytes", "47 follow")
        self.refused(promised("(3, 2)", bytes(49)), "longer than the 48 bytes")
        self.refused(promised(f"({2**59},)"), "truncated", f"needs {2**62} bytes", "0 follow")
        self.refused(promised(f"({2**31}, {2**31})"), "64 bits")
        self.refused(promised(f"({2**63},)"), "damaged header")
        self.refused(header("{}", 2, 2**32 - 1), "length is 4294967295")
        self.refused(header("{}", 4), "version 4.0", "1.0, 2.0 and 3.0")

    def test_files_cut_off_or_changed_anywhere(self):
        numpy.save(self.folder / "in.npy", numpy.arange(6, dtype=">i2").reshape(2, 3))
        whole = (self.folder / "in.npy").read_bytes()
        for length in range(len(whole)):
            self.refused(whole[:length], "is not an NPY file" if length < 8 else "truncated")
        for position in range(len(whole) - 12):
            for flip in (1, 0x20, 0x80):
                changed = bytes([whole[position] ^ flip])
                (self.folder / "in.npy").write_bytes(whole[:position] + changed + whole[position + 1:])
                self.assertIn(self.copy().returncode, (0, 2), f"byte {position}")

    def test_pipes(self):
        array = numpy.arange(300000, dtype="f4").reshape(1000, 300)
        numpy.save(self.folder / "in.npy", array)
        done = subprocess.run(["sh", "-c", f"cat in.npy | '{COPY}' /dev/stdin out.npy"], cwd=self.folder,
                              stdout=subprocess.DEVNULL, check=True)
        self.assertEqual(done.returncode, 0)
        numpy.testing.assert_array_equal(numpy.load(self.folder / "out.npy"), array)


if __name__ == "__main__":
    unittest.main()
