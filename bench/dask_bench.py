#!/usr/bin/env python3
"""Times Dask jobs on one worker process and on two: PYTHONPATH=build/release/python bench/dask_bench.py [SIDE]"""

import sys
import time

import dask.array
import numpy
from distributed import Client, LocalCluster, wait

import orvane
import orvane.dask


PADS = ("replicate", "symmetric", "mirror")


def seconds(workers, side, chunk, make):
    """The least time of three runs over a picture that lies in the workers' memory."""
    with LocalCluster(n_workers=workers, threads_per_worker=1, dashboard_address=None) as cluster, \
            Client(cluster) as client:
        picture = dask.array.random.random((side, side), chunks=chunk).astype("float32").persist()
        wait(picture)
        best = float("inf")
        for number in range(3):
            job = make(picture, number)  # another job each time, because results are kept
            start = time.perf_counter()
            wait(client.persist(job))
            best = min(best, time.perf_counter() - start)
        return best


def main():
    side = int(sys.argv[1]) if len(sys.argv) > 1 else 16384
    taps = numpy.ones((31, 31), "float32")
    jobs = {"convolve 31 x 31": lambda picture, n: orvane.dask.convolve(picture, taps + numpy.float32(n)),
            "median 15 x 15": lambda picture, n: orvane.dask.median(picture, 15, pad=PADS[n])}
    for name, make in jobs.items():
        # In turn, so that what else the machine does meets both.
        times = [(seconds(1, side, 2048, make), seconds(2, side, 2048, make)) for _ in range(2)]
        one, two = map(min, zip(*times))
        print(f"{name}, {side}^2 float32: 1 worker {one:.2f} s, 2 workers {two:.2f} s, {one / two:.2f} x")
    # Chunks so small that filtering them costs nothing.
    count = (1024 // 32) ** 2
    small = seconds(1, 1024, 32, lambda picture, n: orvane.dask.median(picture, 3, pad=PADS[n]))
    print(f"a chunk costs {small / count * 1e3:.2f} ms ({count} chunks of 32 x 32, with borders)")
    plain = seconds(1, 1024, 32, lambda picture, n: picture + n)
    print(f"of which {plain / count * 1e3:.2f} ms are those of a task of Dask's")


if __name__ == "__main__":
    main()
