"""Files that cannot be read or written."""

import os
import resource
import signal
import struct
import subprocess
import unittest
import zlib

from command_case import TOOL
from refusal_case import RefusalCase

KERNEL = ("--kernel", "1")
# Root may write anywhere; without this capability permissions count for it too.
UNPRIVILEGED = () if os.geteuid() else ("setpriv", "--bounding-set=-dac_override,-dac_read_search")


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def header_only(width, height):
    """A picture whose header promises more than there is."""
    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)
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
                             ("two\nlines.png", None)):
            self.refused(["convolve", name, "old.png", *KERNEL], reason or "two?lines.png")
        for data in (b"", b"\x89PNG", b"GIF89a" + bytes(99), bytes(8)):
            self.input_refused(data, "is not a PNG file")

    def test_input_cut_off_anywhere(self):
        for settings in ({}, {"interlace": True}):
            self.write("whole.png", self.random_image(5, 4), **settings)
            whole = (self.folder / "whole.png").read_bytes()
            self.assertEqual(self.run_tool("convolve", "whole.png", "whole.png", *KERNEL).returncode, 0)
            for length in range(8, len(whole), 3):
                self.input_refused(whole[:length], "is damaged or truncated")
            self.input_refused(whole[:-1], "is damaged or truncated")

    def test_input_with_damaged_bytes(self):
        whole = (self.folder / "in.png").read_bytes()
        for position in (12, 17, 24, 30, 45, len(whole) - 20):
            self.input_refused(whole[:position] + bytes([whole[position] ^ 0x41]) + whole[position + 1:],
                               "is damaged or truncated")

    def test_input_whose_header_promises_too_much(self):
        self.input_refused(header_only(70000, 70000), "70000x70000", str(2**31 - 1))
        self.input_refused(header_only(2**31 - 1, 2**31 - 1), f"at most {2**31 - 1}")
        self.input_refused(header_only(40000, 40000), "too short for 40000x40000")
        self.input_refused(header_only(20, 20), "is damaged or truncated")
        self.input_refused(header_only(0, 20), "is damaged or truncated")

    def test_output_that_cannot_be_written(self):
        (self.folder / "folder.png").mkdir()
        self.output_refused("nowhere/out.png", "No such file")
        self.output_refused("in.png/out.png", "Not a directory")
        self.output_refused("folder.png", "Is a directory")
        self.output_refused("/dev/full", "No space left")
        self.refused(["convolve", "in.png", "x" * 300 + ".png", *KERNEL], "'xxx", "File name too long")
        self.output_refused("/proc/out.png")

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

    def test_disk_that_fills_up_while_writing(self):
        self.write("in.png", self.random_image(99, 99))
        for name in ("new.png", "old.png"):
            self.output_refused(name, "File too large",
                                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096)))

    def test_interruption_while_writing_leaves_the_old_picture_or_the_new(self):
        self.write("in.png", self.random_image(1200, 900, 3))
        run = ("convolve", "in.png", "old.png", "--kernel", "1")
        before = self.state()
        self.succeed(*run)
        after = self.state()
        caught = 0
        for _ in range(10):
            (self.folder / "old.png").write_bytes(before["old.png"])
            with subprocess.Popen([TOOL, *run], cwd=self.folder) as running:
                while running.poll() is None and len(os.listdir(self.folder)) == len(before):
                    pass
                running.send_signal(signal.SIGINT)
            caught += running.returncode == -signal.SIGINT
            self.assertIn(self.state(), (before, after))
        self.assertGreater(caught, 0)


if __name__ == "__main__":
    unittest.main()
