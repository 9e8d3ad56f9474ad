"""Results for programs and for comparison: checksums and JSON."""

import hashlib
import itertools
import json
import unittest

import numpy
from command_case import CommandCase
from tiff_case import tiff


def checksum_of(array):
    """SHA-256 of an array whose last axis is dimension 0."""
    start = f"{array.dtype.name} {'x'.join(map(str, reversed(array.shape)))}\n"
    return hashlib.sha256(start.encode() + array.astype(array.dtype.newbyteorder("<")).tobytes()).hexdigest()


class ProofTest(CommandCase):
    def printed(self, *arguments):
        done = self.run_tool(*arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""), arguments)
        return done.stdout

    def test_checksums_depend_on_the_elements_alone(self):
        image = self.random_image(23, 31, 3).astype("u1")
        self.write("a.png", image)
        (self.folder / "b.tif").write_bytes(tiff(image, order=">", tile=16, packed=True))
        numpy.save(self.folder / "c.npy", numpy.asfortranarray(image))
        for name in ("a.png", "b.tif", "c.npy"):
            self.assertEqual(self.printed("checksum", name), f"{checksum_of(image)}  {name}\n")
        self.assertEqual(json.loads(self.printed("checksum", "b.tif", "--json")), {
            "file": "b.tif", "type": "uint8", "extents": [3, 23, 31], "sha256": checksum_of(image)})
        stack = self.random.normal(size=(4, 5, 6)).astype(">c8")
        numpy.save(self.folder / "stack.npy", stack)
        self.assertEqual(self.printed("checksum", "stack.npy").split()[0], checksum_of(stack))

    def test_every_writing_operation_tells_its_checksum(self):
        self.write("in.png", self.random_image(40, 30))
        numpy.save(self.folder / "in.npy", self.random.normal(size=(4, 5)))
        for run, name in ((("convolve", "in.png", "o.tif", "-k", "box:3"), "o.tif"),
                          (("correlate", "in.png", "o.npy", "-k", "sobel-x", "--fixed",
                            "input=u8.0,filter=s4.0,accumulator=s16.0,output=s16.0", "--quiet"), "o.npy"),
                          (("correlate", "in.npy", "o.npy", "-k", "in.npy", "--nd"), "o.npy"),
                          (("separable", "in.png", "o.npy", "-r", "1,2,1", "-c", "1,2,1"), "o.npy"),
                          (("median", "in.npy", "o.npy", "-w", "3x3"), "o.npy"),
                          (("patch", "in.png", "o.png", "--box", "1,2,9x8"), "o.png"),
                          (("chart", "o.png"), "o.png")):
            said = self.printed(*run, "--checksum")
            self.assertEqual(said, self.printed("checksum", name))
        self.printed("patch", "in.png", "patch.png", "--box", "11,12,9x8")
        found = json.loads(self.printed("match", "in.png", "patch.png", "--map", "map.npy", "--json", "--checksum"))
        self.assertEqual((found["window"], found["mapSha256"]),
                         ([11, 12, 9, 8], checksum_of(numpy.load(self.folder / "map.npy"))))

    def test_results_do_not_depend_on_threads_bands_and_targets(self):
        """The memory of the second picture is for the smallest bands."""
        self.write("in.png", self.random_image(120, 200, 4))
        (self.folder / "tall.tif").write_bytes(tiff(self.random.integers(0, 999, (1000, 150, 1)).astype("u2"), rows=64))
        numpy.save(self.folder / "stack.npy", self.random.integers(0, 99, (3, 150, 200)).astype("i2"))
        targets = self.run_tool("convolve", "in.png", "o.png", "-k", "1", env={"ORVANE_TARGET": "?"}).stderr
        targets = targets.split("allowed here are ")[1].strip().split(", ")
        edges = itertools.product(("valid", "same", "full"), ("replicate", "constant:7", "symmetric", "circular", "mirror"))
        for (mode, pad), name in zip(edges, itertools.cycle(("in.png", "tall.tif"))):
            if (mode, pad) == ("full", "circular"):
                name = "stack.npy"
            for run in (("convolve", "-k", "gaussian:6:2"), ("median", "-w", "4x7"),
                        ("separable", "-r", "gaussian:2", "-c", "1,2,0,3", "--type", "float"),
                        ("convolve", "-k", "1,2;3,-4;0,1", "--fixed",
                         "input=s12.2,filter=s4.0,product=s14.1,accumulator=s15.0,output=s12.2,overflow=wrap")):
                sums = set()
                for threads, memory, target in ((1, 256, targets[0]), (2, 2, targets[-1]), (3, 4, targets[0])):
                    done = self.run_tool(run[0], name, "out.npy", *run[1:], "-m", mode, "-p", pad, "--checksum",
                                         "-t", threads, "--memory", memory, *(("--axes", "ZYX") if name == "stack.npy" else ()),
                                         env={"ORVANE_TARGET": target})
                    self.assertEqual(done.returncode, 0, done.stderr)
                    sums.add((done.stdout, done.stderr))
                self.assertEqual(len(sums), 1, (mode, pad, run))

    def test_json_has_what_the_texts_say(self):
        numpy.save(self.folder / "a.npy", numpy.array([1.0, 2.0, numpy.nan]))
        numpy.save(self.folder / "b.npy", numpy.array([1.0, 2.5, 0.0]))
        found = json.loads(self.run_tool("compare", "a.npy", "b.npy", "--json", "--peak", "2").stdout)
        self.assertEqual((found["differentValues"], found["infiniteErrors"], found["position"], found["maxError"]),
                         (2, 1, [2], "inf"))
        self.assertEqual((found["first"], found["second"], found["mean"]), ("nan", 0, 0.25))
        kernel = json.loads(self.printed("kernel", "sobel-x", "-j", "--fixed", "input=u8.0,filter=s4.0"))
        self.assertEqual((kernel["elements"], kernel["fixed"]["accumulator"]), ([-1, 0, 1, -2, 0, 2, -1, 0, 1], "s11.0"))
        self.assertEqual(self.printed("kernel", "1,1/2;0,3"), "1,0.5\n0,3\n")
        plan = json.loads(self.printed("plan", "--input", "9x7", "--window", "3x4", "--json"))
        self.assertEqual((plan["output"]["extents"], plan["centre"], len(plan["sectors"])), ([9, 7], [1, 1], 9))


if __name__ == "__main__":
    unittest.main()
