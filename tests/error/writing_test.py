"""Every operation that writes, in every format: full disks, closed pipes, killed runs, and files that change."""

import os
import resource
import signal
import subprocess
import time
import unittest

import numpy
from command_case import TOOL
from refusal_case import RefusalCase
from tiff_case import tiff

# What writes files, with OUT for the name, and the endings that OUT can have.
PICTURES = (".png", ".tif", ".npy")
WRITERS = (("convolve in.png OUT -k box:3", PICTURES), ("correlate in.npy OUT -k box:3", PICTURES[2:]),
           ("correlate cube.npy OUT --nd -k cube.npy", PICTURES[2:]),
           ("separable in.png OUT -r 1,2,1 -c 1,2,1", PICTURES), ("median in.png OUT -w 3x3", PICTURES),
           ("convolve in.png OUT -k 1 --fixed input=u8.0,filter=s4.0,accumulator=s16.0,output=u8.0", PICTURES),
           ("match in.png in.png --mode full --map OUT", PICTURES[2:]), ("match in.png in.png --overlay OUT", PICTURES[:2]),
           ("chart OUT", PICTURES[:2]), ("patch in.png OUT --box 0,0,90x70", PICTURES[:2]),
           ("compare in.png other.png --overlay OUT", PICTURES[:2]), ("show in.png OUT", (".html",)))
JOBS = [(command, ending) for command, endings in WRITERS for ending in endings]


class WritingTest(RefusalCase):
    def setUp(self):
        super().setUp()
        self.write("in.png", self.random_image(120, 90, 3))
        self.write("other.png", self.random_image(120, 90, 3))
        self.write("grey.png", self.random_image(120, 90))
        numpy.save(self.folder / "in.npy", self.random.normal(size=(90, 120)))
        numpy.save(self.folder / "cube.npy", self.random.normal(size=(20, 20, 20)))

    def test_disk_that_fills_up(self):
        """The limit is met in the middle of the file, and once at its very end."""
        for command, ending in JOBS:
            whole = self.run_tool(*command.replace("OUT", "whole" + ending).split())
            self.assertIn(whole.returncode, (0, 1), (command, whole.stderr))
            size = (self.folder / f"whole{ending}").stat().st_size
            (self.folder / f"whole{ending}").unlink()
            (self.folder / f"old{ending}").write_bytes(b"old")
            for limit in (size // 2, size - 1):
                for name in ("new" + ending, "old" + ending):
                    self.refused(command.replace("OUT", name), f"'{name}'", "File too large", preexec_fn=lambda: (
                        signal.signal(signal.SIGXFSZ, signal.SIG_IGN),
                        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))))

    def test_pipes_that_nobody_reads(self):
        """Like other commands, this one then ends by SIGPIPE, or says why if that is ignored."""
        for command, is_ignored in (("convolve in.png - -k box:3", False), ("median in.png - -w 3x3 --format tiff", True),
                                    ("kernel gaussian:9:2", True), ("help convolve", True), ("checksum in.png", True)):
            reader, writer = os.pipe()
            os.close(reader)
            done = subprocess.run([TOOL, *command.split()], cwd=self.folder, stdout=writer, stderr=subprocess.PIPE,
                                  restore_signals=not is_ignored, text=True)
            os.close(writer)
            if is_ignored:
                self.assertEqual(done.returncode, 2, command)
                self.assertRegex(done.stderr, r"\Aorvane: [^\n]*Broken pipe[^\n]*\n\Z")
            else:
                self.assertEqual((done.returncode, done.stderr), (-signal.SIGPIPE, ""), command)

    def test_input_is_output_through_links(self):
        for ending in PICTURES:
            first, link, twin = f"first{ending}", f"link{ending}", f"twin{ending}"
            self.succeed("convolve", "grey.png", first, "-k", "1", "-q")
            self.succeed("convolve", first, f"expected{ending}", "-k", "box:3", "-q")
            (self.folder / link).symlink_to(first)
            os.link(self.folder / first, self.folder / twin)
            self.succeed("convolve", first, link, "-k", "box:3", "-q")
            self.assertTrue((self.folder / link).is_symlink())
            expected = self.run_tool("checksum", f"expected{ending}").stdout.split()[0]
            for name in (first, link):
                self.assertEqual(self.run_tool("checksum", name).stdout.split()[0], expected, name)
            self.succeed("convolve", twin, twin, "-k", "box:3", "-q")
            self.assertEqual(self.run_tool("checksum", twin).stdout.split()[0], expected, twin)

    def test_names_of_all_kinds(self):
        for name in ("two\nlines.png", "'quoted' \"names\".tif", " .npy", "-dash.png", "\u00e9\u4e2d.png", "\x1b[31m.png"):
            path = os.path.join(".", name)
            self.succeed("convolve", "grey.png", path, "-k", "1", "-q")
            self.succeed("median", path, path, "-w", "1x1", "-q")
            self.refused(["match", path, "missing.png"], "No such file")
            self.refused(["convolve", path, "x.png", "-k", "1", "-m", "?"], "--mode")

    def test_killed_runs_leave_no_partial_file(self):
        self.write("big.png", self.random_image(900, 700, 3))
        for ending in PICTURES:
            for delay in (0.0, 0.01, 0.03):
                with subprocess.Popen([TOOL, "convolve", "big.png", f"killed{ending}", "-k", "box:5"],
                                      cwd=self.folder) as running:
                    time.sleep(delay)
                    running.kill()
                if (self.folder / f"killed{ending}").exists():
                    self.succeed("checksum", f"killed{ending}")

    def test_input_that_shrinks_while_it_is_read(self):
        """Whatever was read, the run is as if the file had been so from the start, or is refused."""
        image = self.random.integers(0, 255, (900, 1400, 3)).astype("u1")
        numpy.save(self.folder / "big.npy", image[..., 0])
        names = {"big.tif": tiff(image, rows=10), "big.npy": (self.folder / "big.npy").read_bytes()}
        for name, whole in names.items():
            for delay in (0.0, 0.005, 0.02):
                (self.folder / name).write_bytes(whole)
                before = set(self.state())
                with subprocess.Popen([TOOL, "convolve", name, "out" + name[3:], "-k", "box:9"], cwd=self.folder,
                                      stderr=subprocess.PIPE, text=True) as running:
                    time.sleep(delay)
                    os.truncate(self.folder / name, len(whole) // 3)
                    said = running.stderr.read()
                if running.returncode == 0:
                    (self.folder / ("out" + name[3:])).unlink()
                else:
                    self.assertEqual(running.returncode, 2, said)
                    self.assertRegex(said, rf"\Aorvane: [^\n]*'{name}'[^\n]*\n\Z")
                self.assertEqual(set(self.state()), before, (name, delay))


if __name__ == "__main__":
    unittest.main()
