"""Runs beside other threads, signals and processes."""

import multiprocessing
import os
import signal
import threading
import time
import unittest

import numpy

import orvane

LARGE = numpy.random.default_rng(1).standard_normal((3000, 4000)).astype("float32")


class RunsTest(unittest.TestCase):
    def test_an_interrupt_ends_a_long_run(self):
        job = orvane.Median(21, LARGE.shape, "float32")
        threading.Timer(0.3, os.kill, (os.getpid(), signal.SIGINT)).start()
        start = time.monotonic()
        with self.assertRaises(KeyboardInterrupt):
            for _ in range(100):
                job.run(LARGE)
        self.assertLess(time.monotonic() - start, 20)

    def test_progress_reports_cancels_and_passes_errors_on(self):
        fractions = []
        taps = numpy.ones((15, 15), "float32")
        orvane.convolve(LARGE, taps, progress=fractions.append)
        self.assertEqual((fractions, fractions[-1]), (sorted(fractions), 1))
        with self.assertRaisesRegex(orvane.Cancelled, "cancelled by the progress callback"):
            orvane.convolve(LARGE, taps, progress=lambda fraction: False)
        with self.assertRaises(ZeroDivisionError):
            orvane.convolve(LARGE, taps, progress=lambda fraction: 1 // 0)
        job = orvane.Convolution(taps, LARGE.shape, progress=lambda fraction: job.run(LARGE))
        with self.assertRaisesRegex(RuntimeError, "called from the progress callback"):
            job.run(LARGE)
        bar = numpy.zeros((9, 9), "float32")
        numpy.testing.assert_array_equal(orvane.median(bar, 3, progress=True), bar)

    def test_threads_share_an_object(self):
        """One object in several threads: its runs follow each other."""
        job = orvane.Convolution(numpy.ones((9, 9), "float32"), (700, 800), "float32")
        expected = [job.run(LARGE[k:k + 700, :800]) for k in range(4)]
        found = [None] * 4
        threads = [threading.Thread(target=lambda k=k: found.__setitem__(k, job.run(LARGE[k:k + 700, :800])))
                   for k in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        numpy.testing.assert_array_equal(found, expected)

    def test_forked_processes_make_their_threads_again(self):
        job = orvane.Convolution(numpy.ones((9, 9), "float32"), LARGE.shape, "float32", threads=2)
        expected = job.run(LARGE)
        queue = multiprocessing.get_context("fork").SimpleQueue()
        child = multiprocessing.get_context("fork").Process(
            target=lambda: queue.put(numpy.array_equal(job.run(LARGE), expected)))
        child.start()
        child.join(60)
        self.assertEqual((child.exitcode, queue.get()), (0, True))


if __name__ == "__main__":
    unittest.main()
