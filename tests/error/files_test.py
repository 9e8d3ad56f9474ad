"""Files that cannot be read or written."""

import os
import resource
import signal
import struct
import subprocess
import unittest
import zlib

import numpy
from command_case import TOOL
from refusal_case import RefusalCase

KERNEL = ("--kernel", "1")
# Root may write anywhere; without this capability permissions count for it too.
UNPRIVILEGED = () if os.geteuid() else ("setpriv", "--bounding-set=-dac_override,-dac_read_search")


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def header_only(width, height, interlace=0):
    """A picture whose header promises more than there is."""
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, interlace)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(b"\0")) + chunk(b"IEND", b""))


class FilesTest(RefusalCase):
    def input_refused(self, data, *words):
        (self.folder / "bad.png").write_bytes(data)
        self.refused(["convolve", "bad.png", "old.png", *KERNEL], "'bad.png'", *words)

    def output_refused(self, name, *words, **settings):
        self.refused(["convolve", "in.png", name, *KERNEL], f"'{name}'", *words, **settings)

    def test_input_that_is_not_there_or_no_picture(self):
        (self.folder / "folder.png").mkdir()
        for name, reason in (("missing.png", "No such file"), ("folder.png", "Is a directory"),
                             ("in.png/x.png", "Not a directory"), ("", "No such file"),
                             ("two\nlines.png", r"two\nlines.png")):
            self.refused(["convolve", name, "old.png", *KERNEL], reason)
        for data, kind in ((b"", ""), (b"\x89PNG", "a PNG"), (b"GIF89a" + bytes(99), "a GIF"), (bytes(8), "")):
            self.input_refused(data, "is not a PNG, TIFF, JPEG or NPY file" + (f": it is {kind}" if kind else "\n"))
        for data in (b"\xff\xd8\xff\xe0", b"\x93NUMPY\1\0", b"II*\0", b"MM\0+\0\x08\0\0" + bytes(99)):
            self.input_refused(data, "truncated")

    def test_kernels_that_are_no_text(self):
        numpy.save(self.folder / "k.npy", numpy.ones((3, 4, 5)))
        for name, data, words in (("k.npy", None, "(5x4x3)"),
                                  ("in.png", None, "is neither text nor NPY: it is a PNG picture"),
                                  ("marked.csv", "1,2\n".encode("utf-16"), "looks like UTF-16"),
                                  ("plain.csv", "1,2\n3,4\n".encode("utf-16-be"), "looks like UTF-16"),
                                  ("nul.csv", b"1,2\n3,4\0\xff5", r"line 2: '4\x00\xff5' is not")):
            if data:
                (self.folder / name).write_bytes(data)
            self.refused(["convolve", "in.png", "old.png", "--kernel", name], f"'{name}'", words)

    def test_input_cut_off_or_damaged_anywhere(self):
        for settings in ({}, {"interlace": True}):
            self.write("whole.png", self.random_image(5, 4), **settings)
            whole = (self.folder / "whole.png").read_bytes()
            self.assertEqual(self.run_tool("convolve", "whole.png", "whole.png", *KERNEL).returncode, 0)
            for length in [*range(8, len(whole), 3), len(whole) - 1]:
                self.input_refused(whole[:length], "is damaged or truncated")
        whole = (self.folder / "in.png").read_bytes()
        for position in (12, 17, 24, 30, 45, len(whole) - 20):
            self.input_refused(whole[:position] + bytes([whole[position] ^ 0x41]) + whole[position + 1:],
                               "is damaged or truncated")

    def test_input_whose_header_promises_too_much(self):
        for width, height, words in ((70000, 70000, "too short for 70000x70000"),
                                     (2**31 - 1, 2**31 - 1, f"too short for {2**31 - 1}x{2**31 - 1}"), (20, 20, "is damaged or truncated"),
                                     (40000, 40000, "too short for 40000x40000"), (0, 20, "is damaged or truncated")):
            self.input_refused(header_only(width, height), words)
        # The length of a pipe is not known, so memory must grow with what comes.
        _, _, least = self.run_measured(["--version"])
        for width, height, interlace in ((14000, 14000, 0), (14000, 14000, 1), (2**29, 1, 0), (1, 2**29, 1)):
            status, said, used = self.run_measured(["convolve", "/dev/stdin", "/dev/null", *KERNEL],
                                                   header_only(width, height, interlace))
            self.assertEqual((status, b"damaged or truncated" in said), (2, True), said)
            self.assertLess(used - least, 20000, (width, height, interlace))

    def run_measured(self, arguments, given=b""):
        """Exit status, standard error and the most memory in KiB."""
        with subprocess.Popen([TOOL, *arguments], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE) as running:
            running.stdin.write(given)
            running.stdin.close()
            said = running.stderr.read()
            _, status, used = os.wait4(running.pid, 0)
            running.returncode = os.waitstatus_to_exitcode(status)
        return running.returncode, said, used.ru_maxrss

    def test_output_that_cannot_be_written(self):
        (self.folder / "folder.png").mkdir()
        for name, target in (("dangling.png", "nowhere"), ("loop.png", "loop.png"), ("away.png", "gone/x.png")):
            (self.folder / name).symlink_to(target)
        for name, words in (("nowhere/out.png", "No such file"), ("in.png/out.png", "Not a directory"),
                            ("folder.png", "Is a directory"), ("/dev/full", "No space left"), ("/proc/out.png", ""),
                            ("dangling.png", "link to 'nowhere', which does not exist"),
                            ("away.png", "link to 'gone/x.png', which does not exist"),
                            ("loop.png", "Too many levels of symbolic links")):
            self.output_refused(name, words)
        self.refused(["convolve", "in.png", "x" * 300 + ".png", *KERNEL], "'xxx", "File name too long")

    def test_permissions(self):
        closed = self.folder / "closed"
        closed.mkdir(mode=0o555)
        os.chmod(self.folder / "old.png", 0o444)
        os.chmod(self.folder / "in.png", 0o600)
        self.output_refused("closed/out.png", "Permission denied", prefix=UNPRIVILEGED)
        self.output_refused("old.png", "Permission denied", prefix=UNPRIVILEGED)
        (self.folder / "secret.png").touch(mode=0)
        self.refused(["convolve", "secret.png", "old.png", *KERNEL], "'secret.png'", "Permission denied",
                     prefix=UNPRIVILEGED)
        self.assertEqual(os.listdir(closed), [])

    @unittest.skipIf(os.geteuid(), "only root can make files of two owners")
    def test_two_outputs_appear_both_or_not_at_all(self):
        """In a folder with the sticky bit the last name cannot be taken: its file is another user's."""
        os.chmod(self.folder, 0o1777)
        self.write("own.png", self.random_image(3, 3))
        os.chown(self.folder / "own.png", 1, 1)
        os.chmod(self.folder / "old.png", 0o666)
        for name in ("new.png", "own.png"):
            self.refused(["match", "in.png", "in.png", "--map", name, "--overlay", "old.png"], "'old.png'",
                         "Operation not permitted",
                         prefix=("setpriv", "--reuid=1", "--regid=1", "--clear-groups"), printed=True)
        self.succeed("match", "in.png", "in.png", "--map", "own.png", "--overlay", "old.png")
        self.assertEqual(sorted(os.listdir(self.folder)), ["in.png", "old.png", "own.png"])

    def test_disk_that_fills_up_while_writing(self):
        self.write("in.png", self.random_image(99, 99))
        for name in ("new.png", "old.png"):
            self.output_refused(name, "File too large",
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096)))

    def test_interruption_while_writing_leaves_the_old_picture_or_the_new(self):
        self.write("in.png", self.random_image(800, 600, 3))
        run = ("convolve", "in.png", "old.png", "--kernel", "1")
        before = self.state()
        self.succeed(*run)
        after = self.state()
        caught = set()
        signals = (signal.SIGINT, signal.SIGTERM, signal.SIGPIPE, signal.SIGALRM, signal.SIGXCPU, signal.SIGUSR1,
                   signal.SIGABRT, signal.SIGRTMIN)
        for number in signals * 2:
            (self.folder / "old.png").write_bytes(before["old.png"])
            with subprocess.Popen([TOOL, *run], cwd=self.folder) as running:
                while running.poll() is None and len(os.listdir(self.folder)) == len(before):
                    pass
                running.send_signal(number)
            caught |= {number} if running.returncode == -number else set()
            self.assertIn(self.state(), (before, after), number)
        self.assertGreater(len(caught), len(signals) // 2)


if __name__ == "__main__":
    unittest.main()
