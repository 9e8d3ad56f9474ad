"""Dask jobs on worker processes, one of which is killed in the middle of a job."""

import logging
import os
import signal
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

import dask
import dask.array
import numpy
from distributed import Client, LocalCluster, wait

import orvane
import orvane.dask

ROOT = Path(__file__).resolve().parents[2]


def slowly(block):
    """A chunk that takes long enough for the job to be caught at work."""
    time.sleep(0.05)
    return block


class ClusterTest(unittest.TestCase):
    def test_a_worker_dies_in_the_middle_of_a_job(self):
        values = numpy.random.default_rng(2).standard_normal((1200, 1500)).astype("float32")
        taps = numpy.random.default_rng(3).standard_normal((31, 9)).astype("float32")
        picture = dask.array.from_array(values, chunks=(200, 150)).map_blocks(slowly)
        patch = values[700:740, 900:950].copy()
        logging.getLogger("distributed").setLevel(logging.CRITICAL)
        with dask.config.set({"distributed.comm.timeouts.connect": "10s"}), \
                LocalCluster(n_workers=3, threads_per_worker=1, processes=True, dashboard_address=None) as cluster, \
                Client(cluster) as client:
            smooth = orvane.dask.convolve(picture, taps, pad="symmetric")
            jobs = client.compute([orvane.dask.median(smooth, 5, pad="circular"), orvane.dask.match(smooth, taps),
                                   orvane.dask.match(picture, patch, metric="coefficient", refine=True)])
            deadline = time.monotonic() + 60
            while sum(map(len, client.has_what().values())) < 20 and time.monotonic() < deadline:
                time.sleep(0.02)
            victim = next(worker.pid for worker in cluster.workers.values())
            self.assertFalse(any(job.done() for job in jobs), "the job was over before a worker could die")
            os.kill(victim, signal.SIGKILL)
            wait(jobs, 200)
            median, inside, found = client.gather(jobs)
        whole = orvane.convolve(values, taps, pad="symmetric")
        self.assertEqual(median.tobytes(), orvane.median(whole, 5, pad="circular").tobytes())
        expected = orvane.match(whole, taps)
        self.assertEqual((inside.location, inside.score), (expected.location, expected.score))
        expected = orvane.match(values, patch, metric="coefficient", refine=True)
        self.assertEqual((found.location, found.score, found.refined, found.window),
                         (expected.location, expected.score, expected.refined, numpy.s_[700:740, 900:950]))

    def test_a_store_larger_than_the_memory_of_the_workers(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run([sys.executable, ROOT / "examples" / "filter_zarr.py", folder, "13500"], check=False,
                                  capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("695 MiB by workers of 320 MiB each\nthe part in the middle is the same, bit for bit",
                      done.stdout)


if __name__ == "__main__":
    unittest.main()
