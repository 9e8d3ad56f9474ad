"""Filters a Zarr store that is larger than the memory of the workers into another one: filter_zarr.py [FOLDER [SIDE]]

The picture is made chunk by chunk, so it is never in memory as a whole either.
"""

import sys
import tempfile

import dask.array
import numpy
import zarr
from distributed import Client, LocalCluster

import orvane
import orvane.dask

LIMIT = 320 * 2**20  # bytes of each worker


def texture(block_info=None):
    """A chunk of a picture that has no end."""
    (top, bottom), (left, right) = block_info[None]["array-location"]
    y, x = numpy.mgrid[top:bottom, left:right].astype("float32")
    return (numpy.sin(x / 37) * numpy.cos(y / 53) * 90 + (x * 7 + y * 13) % 31).astype("float32")


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else tempfile.mkdtemp()
    side = int(sys.argv[2]) if len(sys.argv) > 2 else 20000
    with LocalCluster(n_workers=2, threads_per_worker=1, memory_limit=LIMIT, dashboard_address=None) as cluster, \
            Client(cluster):
        picture = dask.array.map_blocks(texture, chunks=dask.array.core.normalize_chunks(1500, (side, side)),
                                        dtype="float32", meta=numpy.empty((0, 0), "float32"))
        picture.to_zarr(f"{folder}/in.zarr", overwrite=True)

        stored = dask.array.from_zarr(f"{folder}/in.zarr")
        row = numpy.float32([1, 4, 6, 4, 1]) / 16
        smooth = orvane.dask.separable(stored, row, row, pad="mirror")
        orvane.dask.median(smooth, 5).to_zarr(f"{folder}/out.zarr", overwrite=True)

    source, result = zarr.open(f"{folder}/in.zarr", "r"), zarr.open(f"{folder}/out.zarr", "r")
    print(f"{source.nbytes / 2**20:.0f} MiB by workers of {LIMIT / 2**20:.0f} MiB each")
    # A part in the middle, across chunks, has the bits of a filter over its surroundings.
    middle = side // 2
    around, wanted = slice(middle - 60, middle + 60), slice(middle - 50, middle + 50)
    expected = orvane.median(orvane.separable(source[around, around], row, row, pad="mirror"), 5)[10:110, 10:110]
    assert (result[wanted, wanted] == expected).all()
    print("the part in the middle is the same, bit for bit")


if __name__ == "__main__":
    main()
