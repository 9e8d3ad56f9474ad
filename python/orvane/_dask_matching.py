"""Template matching over Dask's arrays."""

from __future__ import annotations

import dataclasses
from typing import Any, Dict, List, Optional, Tuple

import dask.array
import numpy
from dask.base import normalize_token, tokenize
from dask.delayed import Delayed
from dask.highlevelgraph import HighLevelGraph
from numpy.typing import ArrayLike, NDArray

from . import _matching
from ._blocks import blocks, checked, cut, filtered
from ._matching import Match, offset
from ._options import Region, positions, region_box, taps
from ._plan import plan

Ends = Tuple[Tuple[int, int], ...]


class _Search:
    """What workers do with a block of positions. Its elements reach `margin` positions farther where there are any."""

    def __init__(self, template: NDArray[Any], image: Tuple[int, ...], margin: int, options: Dict[str, Any]) -> None:
        self.template, self.image, self.margin, self.options = template, image, margin, options

    def __dask_tokenize__(self) -> Any:
        return normalize_token([type(self).__name__, self.template, self.image, self.margin, self.options])

    def reach(self) -> List[Tuple[int, int]]:
        return [((h - 1) // 2 + self.margin, h // 2 + self.margin) for h in self.template.shape]

    def first(self, where: Ends) -> Tuple[int, ...]:
        """The first element of a block, in the image."""
        return tuple(max(0, low - before) for (low, _), (before, _) in zip(where, self.reach()))


class _Scores(_Search):
    """The scores of a block."""

    def __call__(self, block: NDArray[Any], where: Ends) -> NDArray[Any]:
        return _score_map(block, self.template, self.options)


def _score_map(block: NDArray[Any], template: NDArray[Any], options: Dict[str, Any]) -> NDArray[Any]:
    scores = _matching.match(block, template, best=False, map=True, **options).map
    assert scores is not None
    return scores


def scores(image: Any, template: ArrayLike, *, metric: str = "sad", mode: str = "valid",
           region: Optional[Region] = None, threads: int = 1) -> dask.array.Array:
    """The scores of all positions, as `orvane.match` gives them in `Match.map`, as a Dask array.

    >>> import dask.array, orvane.dask
    >>> image = dask.array.eye(8, chunks=3)
    >>> orvane.dask.scores(image, [[1, 0], [0, 1]])[2].compute()
    array([2., 3., 0., 3., 2., 2., 2.])
    """
    array, pattern, ends = _prepared(image, template, metric, mode, region)
    inside = _inside(array, pattern, ends)
    run = _Scores(pattern, array.shape, 0, {"metric": metric, "threads": threads})
    dtype = _score_map(numpy.zeros(pattern.shape, array.dtype), pattern, {"metric": metric}).dtype
    found = filtered("scores", array, inside, run.reach(), "replicate", 0, run, dtype)
    if inside == ends:
        return found
    if found.size == 0:
        return dask.array.zeros(tuple(high - low for low, high in ends), dtype=dtype)
    widths = [(a - low, high - b) for (low, high), (a, b) in zip(ends, inside)]
    return dask.array.pad(found, widths)


def _prepared(image: Any, template: ArrayLike, metric: str, mode: str,
              region: Optional[Region]) -> Tuple[dask.array.Array, NDArray[Any], Ends]:
    """The array, the template, and the positions in the region. Refuses what `orvane.match` would."""
    array = checked(image)
    pattern = taps("template", template, array.dtype)
    if array.ndim == 2 and pattern.ndim == 2:
        small = tuple(min(u, h + 1) for u, h in zip(array.shape, pattern.shape))
        _matching.Matcher(pattern, small, array.dtype, metric=metric, mode=mode)
    else:
        raise ValueError(f"template and image: {pattern.ndim} and {array.ndim} axes; they must have 2")
    ends = list(positions(array.shape, pattern.shape, mode))
    box = region_box(region, array.shape, pattern.shape, mode)
    if box is not None:
        ends = [(min(max(low, first), high), max(min(max(low, first), high), min(high, first + count)))
                for (low, high), first, count in zip(ends, *box)]
    if any(high <= low for low, high in ends):
        ends = [(low, low) for low, _ in ends]
    return array, pattern, tuple(ends)


def _inside(array: dask.array.Array, pattern: NDArray[Any], ends: Ends) -> Ends:
    """Those of the positions at which the template lies in the image."""
    fits = positions(array.shape, pattern.shape, "valid")
    inside = tuple((max(low, a), min(high, b)) for (low, high), (a, b) in zip(ends, fits))
    return inside if all(high > low for low, high in inside) else tuple((low, low) for low, _ in ends)


def _is_greatest(metric: str) -> bool:
    return metric in ("cosine", "coefficient")


#: What the best match has the least of: 0 where NaN wins, 1 for numbers, 2 where there are none; the score, so that
#: less is better; 0 inside the image; and the location.
Rank = Tuple[int, float, int, Tuple[int, int]]
Candidate = Tuple[Rank, Match]


class _Best(_Search):
    """The best match of a block and its rank; None if all scores are NaN."""

    def __init__(self, template: NDArray[Any], image: Tuple[int, ...], margin: int, options: Dict[str, Any],
                 start: Tuple[int, ...]) -> None:
        super().__init__(template, image, margin, options)
        self.start = start  #: the very first position: NaN wins there if the least score is the best

    def __call__(self, block: NDArray[Any], where: Ends) -> Optional[Candidate]:
        first = self.first(where)
        region = tuple(slice(low - f, high - f) for (low, high), f in zip(where, first))
        match = self._match(block, region)
        if not _isnan(match.score):
            return self._candidate(match, block, first)
        begins = tuple(low for low, _ in where) == self.start
        if begins and match.location == tuple(r.start for r in region) and not self._is_greatest():
            return (0, 0, 0, (0, 0)), self._moved(match, first)
        place = self._best_number(block, region)
        if place is None:
            return ((2, 0, 0, (0, 0)), self._moved(match, first)) if begins else None
        return self._candidate(self._match(block, tuple(slice(p, p + 1) for p in place)), block, first)

    def _match(self, block: NDArray[Any], region: Tuple[slice, ...]) -> Match:
        """To refine a location, the scores around it are needed, so that the sum of the two rounds once."""
        edge = max(self.options["neighbourhood"], 3 if self.options["refine"] else 0)
        options = {**self.options, "neighbourhood": edge, "refine": False}
        return _matching.match(block, self.template, region=region, **options)

    def _candidate(self, match: Match, block: NDArray[Any], first: Tuple[int, ...]) -> Candidate:
        value = _value(match.score, block.dtype, self._is_greatest())
        return (1, value, 0, _plus(match.location, first)), self._moved(match, first)

    def _moved(self, match: Match, by: Tuple[int, ...]) -> Match:
        rows, columns = (slice(part.start + step, part.stop + step) for part, step in zip(match.window, by))
        location = _plus(match.location, by)
        refined = [float(place) for place in location]
        fits = positions(self.image, self.template.shape, "valid")
        for axis in range(2 if self.options["refine"] else 0):
            if fits[axis][0] < location[axis] < fits[axis][1] - 1:
                assert match.neighbourhood is not None
                middle = (match.neighbourhood.shape[0] - 1) // 2
                line = match.neighbourhood[:, middle] if axis == 0 else match.neighbourhood[middle]
                before, at, after = map(float, line[middle - 1:middle + 2])
                refined[axis] += offset(before, at, after, self._is_greatest())
        block = match.neighbourhood if self.options["neighbourhood"] > 0 else None
        return dataclasses.replace(match, location=location, window=(rows, columns), neighbourhood=block,
                                   refined=(refined[0], refined[1]))

    def _is_greatest(self) -> bool:
        return _is_greatest(self.options["metric"])

    def _best_number(self, block: NDArray[Any], region: Tuple[slice, ...]) -> Optional[Tuple[int, ...]]:
        """The place of the best score that is a number."""
        kept = {"metric": self.options["metric"], "threads": self.options["threads"], "region": region}
        scores = _score_map(block, self.template, kept)
        values = scores.real * scores.real + scores.imag * scores.imag if scores.dtype.kind == "c" else scores
        if numpy.isnan(values).all():
            return None
        pick = numpy.nanargmax if self._is_greatest() else numpy.nanargmin
        place = numpy.unravel_index(int(pick(values)), values.shape)
        return tuple(int(p) + r.start for p, r in zip(place, region))


def _isnan(score: Any) -> bool:
    return bool(numpy.isnan(score))


def _value(score: Any, dtype: Any, greatest: bool) -> float:
    """A score that is better if it is less; of a complex one the squared magnitude, in its own precision."""
    if isinstance(score, complex):
        kind = numpy.dtype("f4" if numpy.dtype(dtype) in (numpy.float32, numpy.complex64) else "f8").type
        real, imaginary = kind(score.real), kind(score.imag)
        return float(real * real + imaginary * imaginary)
    return -score if greatest else score


def _plus(location: Tuple[int, ...], by: Tuple[int, ...]) -> Tuple[int, int]:
    return location[0] + by[0], location[1] + by[1]


def _best_of(candidates: List[Optional[Candidate]]) -> Optional[Candidate]:
    there = [candidate for candidate in candidates if candidate is not None]
    return min(there, key=lambda candidate: candidate[0]) if there else None


def match(image: Any, template: ArrayLike, *, metric: str = "sad", mode: str = "valid",
          region: Optional[Region] = None, neighbourhood: int = 0, refine: bool = False, threads: int = 1) -> Delayed:
    """`orvane.match` over a Dask array: a delayed `Match`, without a map, of which see `scores`.

    Of equal scores the first wins, as over the whole image. A neighbourhood needs mode ``"valid"``.

    >>> import dask.array, orvane.dask
    >>> image = dask.array.eye(9, chunks=4)
    >>> orvane.dask.match(image, [[0, 1], [1, 1]]).compute().location
    (0, 1)
    """
    array, pattern, ends = _prepared(image, template, metric, mode, region)
    if neighbourhood > 0 and mode != "valid":
        raise ValueError(f"neighbourhood: {neighbourhood}; with mode {mode} it must be 0")
    options: Dict[str, Any] = {"metric": metric, "neighbourhood": neighbourhood, "refine": refine, "threads": threads}
    _matching.Matcher(pattern, pattern.shape, array.dtype, **options)  # refuses what does not fit
    inside = _inside(array, pattern, ends)
    margin = max(neighbourhood, 1 if refine else 0)
    run = _Best(pattern, array.shape, margin, options, tuple(low for low, _ in inside))
    zero = _score_map(numpy.zeros(pattern.shape, array.dtype), pattern, {"metric": metric}).dtype.type(0)
    constant = _crossing(array, pattern, mode, ends, inside, zero.item())
    box = region_box(region, array.shape, pattern.shape, mode)
    finish = _Finish(ends, positions(array.shape, pattern.shape, mode), box, constant, neighbourhood, zero)
    if any(high <= low for low, high in inside):
        return _folded("match", {}, None, [], finish, tokenize(array.name, run, finish))
    bounds = [cut(chunks, low, high) for chunks, (low, high) in zip(array.chunks, inside)]
    name, graph = blocks("match", array, bounds, run.reach(), None, 0, run)
    keys = [(name, i, j) for i in range(len(bounds[0]) - 1) for j in range(len(bounds[1]) - 1)]
    return _folded("match", graph, _best_of, keys, finish, tokenize(name, finish))


def _crossing(array: dask.array.Array, pattern: NDArray[Any], mode: str, ends: Ends, inside: Ends,
              zero: Any) -> Optional[Candidate]:
    """The position that a search visits first among those where the template crosses an edge; its score is 0."""
    if ends == inside or any(high <= low for low, high in ends):
        return None
    fits = positions(array.shape, pattern.shape, "valid")
    if all(high > low for low, high in fits):
        # Sectors follow each other as the plan says: of each axis the middle, the positions before and those after it.
        rows, columns = ([(max(low, a), min(high, b)), (low, min(high, a)), (max(low, b), high)]
                         for (low, high), (a, b) in zip(ends, fits))
        sectors = [(r, c) for r in rows for c in columns if (r, c) != (rows[0], columns[0])]
        location = next((r[0], c[0]) for r, c in sectors if r[1] > r[0] and c[1] > c[0])
    else:
        region = tuple(slice(low, high) for low, high in ends)
        sector = plan(array.shape, pattern.shape, mode=mode, region=region).sectors[0]
        location = (sector.positions[0].start, sector.positions[1].start)
    under = tuple(slice(p - (h - 1) // 2, p - (h - 1) // 2 + h) for p, h in zip(location, pattern.shape))
    found = Match(True, location, (under[0], under[1]), zero, (float(location[0]), float(location[1])), True, False,
                  (slice(0, 0), slice(0, 0)), None, None)
    return (1, 0.0, 1, location), found


@dataclasses.dataclass(frozen=True)
class _Finish:
    """Makes the result of the best candidate."""

    ends: Ends
    support: Ends
    box: Any
    constant: Optional[Candidate]
    neighbourhood: int
    zero: Any  #: of the type of scores

    def __dask_tokenize__(self) -> Any:
        return normalize_token([self.ends, self.support, self.box, str(self.constant), self.neighbourhood, self.zero])

    def __call__(self, found: Optional[Candidate]) -> Match:
        best = _best_of([found, self.constant])
        rows, columns = (slice(low, high) for low, high in self.ends)
        if best is None:
            none = slice(0, 0)
            block = numpy.full((self.neighbourhood,) * 2, self.zero) if self.neighbourhood > 0 else None
            return Match(False, (0, 0), (none, none), self.zero.item(), (0.0, 0.0), False, False, (rows, columns),
                         block, None)
        match = best[1]
        around = tuple((p - (self.neighbourhood - 1) // 2, p - (self.neighbourhood - 1) // 2 + self.neighbourhood)
                       for p in match.location)
        is_whole = self.neighbourhood > 0 and _lies_in(around, self.ends)
        asked = self.support if self.box is None else tuple((a, a + n) for a, n in zip(*self.box))
        return dataclasses.replace(match, positions=(rows, columns), region_valid=_lies_in(asked, self.support),
                                   neighbourhood_valid=is_whole)


def _lies_in(part: Ends, whole: Ends) -> bool:
    return all(low <= a and b <= high for (a, b), (low, high) in zip(part, whole))


def _folded(title: str, graph: Any, fold: Any, keys: List[Any], finish: Any, token: str) -> Delayed:
    """A delayed result: `fold` of values, some at a time, and `finish` of the last one."""
    name, level = f"{title}-{token}", 0
    layer: Dict[Any, Any] = {}
    while len(keys) > 1 or (keys and level == 0):
        groups = [keys[k:k + 16] for k in range(0, len(keys), 16)]
        for number, group in enumerate(groups):
            layer[(f"{name}-fold", level, number)] = (fold, group)
        keys, level = [(f"{name}-fold", level, number) for number in range(len(groups))], level + 1
    layer[name] = (finish, keys[0] if keys else None)
    if not graph:
        return Delayed(name, HighLevelGraph.from_collections(name, layer))
    layers = dict(graph.layers)
    layers[name] = layer
    dependencies = dict(graph.dependencies)
    dependencies[name] = {next(reversed(list(graph.layers)))}
    return Delayed(name, HighLevelGraph(layers, dependencies), layer=name)
