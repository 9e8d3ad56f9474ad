"""Several matches of a template over Dask's arrays."""

from __future__ import annotations

import dataclasses
import math
from typing import Any, List, Optional, Tuple

import numpy
from dask.base import tokenize
from dask.delayed import Delayed
from numpy.typing import ArrayLike, NDArray

from ._blocks import blocks
from ._dask_matching import Ends, _folded, _is_greatest, _prepared, scores
from ._matching import Peak, offset
from ._options import Region


@dataclasses.dataclass(frozen=True)
class _Top:
    """The best scores of a block: rows of score, row, column, and the scores above, below, left and right of it."""

    count: int
    greatest: bool
    shape: Tuple[int, ...]
    margin: int

    def __call__(self, block: NDArray[Any], where: Ends) -> NDArray[Any]:
        first = [max(0, low - self.margin) for low, _ in where]
        (top, bottom), (left, right) = [(low - f, high - f) for (low, high), f in zip(where, first)]
        wide = numpy.pad(block.astype(numpy.float64), 1, constant_values=numpy.nan)
        inner = wide[1 + top:1 + bottom, 1 + left:1 + right]
        rows, columns = numpy.nonzero(~numpy.isnan(inner))
        values = inner[rows, columns]
        table = numpy.stack([values, rows + where[0][0], columns + where[1][0], *(
            wide[1 + top + dy:1 + bottom + dy, 1 + left + dx:1 + right + dx][rows, columns]
            for dy, dx in ((-1, 0), (1, 0), (0, -1), (0, 1)))], axis=1)
        return self.best(table)

    def best(self, table: NDArray[Any]) -> NDArray[Any]:
        """The best rows, the best one first; of equal ones the first in the map."""
        keys = -table[:, 0] if self.greatest else table[:, 0]
        if len(keys) > self.count:
            kept = keys <= numpy.partition(keys, self.count - 1)[self.count - 1]
            table, keys = table[kept], keys[kept]
        return table[numpy.lexsort((table[:, 2], table[:, 1], keys))[:self.count]]

    def fold(self, tables: List[NDArray[Any]]) -> NDArray[Any]:
        return self.best(numpy.concatenate(tables))


@dataclasses.dataclass(frozen=True)
class _Choice:
    """Chooses peaks: the best score, the best one that is far enough from it, and so on."""

    count: int
    distance: float
    refine: bool
    greatest: bool
    is_integer: bool
    start: Tuple[int, int]
    shape: Tuple[int, ...]
    template: Tuple[int, ...]

    def __call__(self, table: Optional[NDArray[Any]]) -> List[Peak]:
        peaks: List[Peak] = []
        places: List[Tuple[int, int]] = []
        for row in numpy.empty((0, 7)) if table is None else table:
            place = int(row[1]), int(row[2])
            if len(peaks) == self.count:
                break
            if all(float(y - place[0]) ** 2 + float(x - place[1]) ** 2 >= self.distance ** 2 for y, x in places):
                places.append(place)
                peaks.append(self.peak(place, row))
        return peaks

    def peak(self, place: Tuple[int, int], row: NDArray[Any]) -> Peak:
        location = place[0] + self.start[0], place[1] + self.start[1]
        refined = [float(p) for p in location]
        for axis in range(2 if self.refine else 0):
            if 0 < place[axis] < self.shape[axis] - 1:
                refined[axis] += offset(row[3 + 2 * axis], row[0], row[4 + 2 * axis], self.greatest)
        rows, columns = (slice(p - (h - 1) // 2, p - (h - 1) // 2 + h) for p, h in zip(location, self.template))
        score = int(row[0]) if self.is_integer else float(row[0])
        return Peak(location, (rows, columns), score, (float(refined[0]), float(refined[1])))


def matches(image: Any, template: ArrayLike, count: int, *, distance: float = 1, refine: bool = False,
            metric: str = "sad", mode: str = "valid", region: Optional[Region] = None, threads: int = 1) -> Delayed:
    """`orvane.matches` over a Dask array: a delayed list of `Peak`.

    A peak rules out the positions nearer than `distance`, so the choice lies among as many of the best scores as
    `count` peaks can rule out: each block gives no more.

    >>> import dask.array, orvane.dask
    >>> image = dask.array.eye(9, chunks=4)
    >>> [peak.location for peak in orvane.dask.matches(image, [[1, 0], [0, 1]], 2, distance=3).compute()]
    [(0, 0), (3, 3)]
    """
    if count < 1:
        raise ValueError(f"count: {count}; it must be at least 1")
    if not distance >= 0:
        raise ValueError(f"distance: {distance}; it must be at least 0")
    found = scores(image, template, metric=metric, mode=mode, region=region, threads=threads)
    if found.dtype.kind == "c":
        raise TypeError(f"matches: scores of {found.dtype} have no order; image and template must be real")
    _, pattern, ends = _prepared(image, template, metric, mode, region)
    margin = 1 if refine else 0
    reach = min(distance, float(sum(found.shape)))
    top = _Top(min(count * _disk(reach), max(1, found.size)), _is_greatest(metric),
               found.shape, margin)
    finish = _Choice(count, reach, refine, _is_greatest(metric), found.dtype.kind == "i",
                     (ends[0][0], ends[1][0]), found.shape, pattern.shape)
    if found.size == 0:
        return _folded("matches", {}, None, [], finish, tokenize(found.name, finish))
    bounds = [[0, *numpy.cumsum(chunks).tolist()] for chunks in found.chunks]
    name, graph = blocks("peaks", found, bounds, [(margin, margin)] * 2, None, 0, top)
    keys = [(name, i, j) for i in range(len(bounds[0]) - 1) for j in range(len(bounds[1]) - 1)]
    return _folded("matches", graph, top.fold, keys, finish, tokenize(name, finish))


def _disk(distance: float) -> int:
    """How many positions are nearer than a distance to one of them, itself among them."""
    reach = math.ceil(distance)
    steps = numpy.arange(-reach, reach + 1, dtype=numpy.float64) ** 2
    return max(1, int((steps[:, None] + steps < distance * distance).sum()))
