"""Memory that runs out: one allocation of a run fails, whichever it is."""

import os
import unittest
from pathlib import Path

import numpy
import PIL.Image
from command_case import TOOL
from refusal_case import RefusalCase

SHIM = Path(TOOL).parent.parent / "lib/liborvane_failing_malloc.so"
RUNS = int(os.environ.get("ORVANE_FAILED_RUNS", "40"))  # of each command; 0 for as many as it has allocations


class MemoryTest(RefusalCase):
    def setUp(self):
        super().setUp()
        image = self.random_image(16, 12, 3).astype(numpy.uint8)
        PIL.Image.fromarray(image).save(self.folder / "in.jpg")
        PIL.Image.fromarray(image).save(self.folder / "in.tif", compression="tiff_lzw")
        numpy.save(self.folder / "in.npy", self.random.random((9, 8)).astype(numpy.float32))
        self.write("part.png", self.random_image(3, 3, 3))

    def fail_each(self, *arguments):
        """Either the run gets by without that memory, or it says in a line what it lacks; then all files are as they were,
    or as the whole run leaves them, if only its report is missing."""
        log = self.folder.parent / f"{self.folder.name}.count"
        self.addCleanup(log.unlink, missing_ok=True)
        before = self.state()

        def run(number):
            done = self.run_tool(*arguments, env={**os.environ, "LD_PRELOAD": str(SHIM), "ORVANE_FAIL_AT": str(number),
                                                  "ORVANE_COUNT_TO": str(log)})
            after = self.state()
            for name in after:
                if name not in before:
                    (self.folder / name).unlink()
                elif after[name] != before[name]:
                    (self.folder / name).write_bytes(before[name])
            return (done.returncode, done.stdout, after), done

        whole, done = run(0)
        self.assertEqual(done.returncode, 0, done.stderr)
        count = int(log.read_text())
        self.assertGreater(count, 100)
        numbers = range(1, count + 1)
        for number in numbers if RUNS == 0 else {*numbers[:RUNS // 4], *numbers[::max(1, count // RUNS)]}:
            with self.subTest(arguments=arguments, allocation=number, of=count):
                found, done = run(number)
                if done.returncode == 0:
                    self.assertEqual(found, whole)
                else:
                    self.assertEqual(done.returncode, 2, done.stderr)
                    self.assertIn(found[2], (before, whole[2]))
                    self.assertRegex(done.stderr, r"\Aorvane: [^\n]+\n\Z")

    def test_filters(self):
        for name in ("in.png", "in.jpg", "in.tif"):
            self.fail_each("convolve", name, "old.png", "--kernel", "gaussian:3:1", "--threads", "1")
        self.fail_each("correlate", "in.png", "out.tif", "--kernel", "sobel-x", "--offset", "128", "--checksum")
        self.fail_each("separable", "in.npy", "out.npy", "-r", "1,2,1", "-c", "1,1", "--threads", "2")
        self.fail_each("median", "in.tif", "out.tif", "--window", "3x3", "--compression", "5")
        self.fail_each("convolve", "in.png", "out.npy", "--kernel", "box:3", "--fixed",
                       "input=u8.0,filter=u8.7,accumulator=u24.7,output=u8.0")

    def test_matches_and_comparisons(self):
        self.fail_each("match", "in.png", "part.png", "--json", "--map", "out.png", "--overlay", "old.png")
        self.fail_each("match", "in.png", "part.png", "--metric", "coefficient", "--top", "3")
        self.fail_each("compare", "in.png", "in.png", "--json")
        self.fail_each("checksum", "in.npy")
        self.fail_each("patch", "in.png", "out.png", "--box", "1,1,3x3", "--noise", "9")

    def test_texts_and_pictures_of_its_own(self):
        for arguments in ("kernel gaussian:5:1", "kernel gaussian:5:1.1 --fixed input=u8.0,filter=u8.10",
                          "show in.png out.html --kernel log:1", "chart out.png --size 128x128",
                          "plan --input 10x10 --window 3x3 --json --svg out.svg", "list", "help match",
                          "completion bash", "man", "reference"):
            self.fail_each(*arguments.split())


if __name__ == "__main__":
    unittest.main()
