#!/usr/bin/env python3
"""Times the Python module beside SciPy, and its calls: PYTHONPATH=build/release/python bench/python_bench.py

Each figure is the least of several runs."""

import time

import numpy
from scipy import ndimage

import orvane


def least(call, rounds=7, number=1):
    """Seconds of one call."""
    best = float("inf")
    for _ in range(rounds):
        start = time.perf_counter()
        for _ in range(number):
            call()
        best = min(best, (time.perf_counter() - start) / number)
    return best


def main():
    random = numpy.random.default_rng(1)
    print(f"{'job':36} {'orvane':>10} {'1 thread':>10} {'scipy':>10} {'gain':>7}")
    for side, dtype in ((3, "float32"), (7, "float32"), (15, "float32"), (7, "float64")):
        picture = random.standard_normal((1024, 1024)).astype(dtype)
        taps = random.standard_normal((side, side)).astype(dtype)
        report(f"convolve 1024^2 {dtype}, {side} x {side}", picture,
               lambda threads: orvane.Convolution(taps, picture.shape, threads=threads),
               lambda: ndimage.convolve(picture, taps, mode="nearest"))
    for dtype in ("uint8", "float32"):
        picture = (random.random((1024, 1024)) * 255).astype(dtype)
        report(f"median 1024^2 {dtype}, 7 x 7", picture,
               lambda threads: orvane.Median(7, picture.shape, dtype, threads=threads),
               lambda: ndimage.median_filter(picture, 7, mode="nearest"))
    overhead()


def report(name, picture, make, peer):
    all_cores, one = make(0), make(1)
    out = numpy.empty(all_cores.output_shape, all_cores.output_dtype)
    fast, single = least(lambda: all_cores.run(picture, out), 25), least(lambda: one.run(picture, out), 25)
    scipy = least(peer, 2)
    print(f"{name:36} {fast * 1e3:7.2f} ms {single * 1e3:7.2f} ms {scipy * 1e3:7.1f} ms {scipy / fast:5.0f} x")


def overhead():
    """A run over one element is little more than the call."""
    tiny, taps = numpy.ones((1, 1), "float32"), numpy.ones((1, 1), "float32")
    job, out = orvane.Convolution(taps, (1, 1), threads=1), numpy.empty((1, 1), "float32")
    calls = {"run of an object over 1 element, with out": lambda: job.run(tiny, out),
             "run of an object over 1 element": lambda: job.run(tiny),
             "convolve() of 1 element": lambda: orvane.convolve(tiny, taps)}
    for name, call in calls.items():
        print(f"{name:44} {least(call, 9, 1000) * 1e6:.2f} us")


if __name__ == "__main__":
    main()
