"""Blocks of outputs over a Dask array: each from the elements under its windows, and from no others.

    chunks of the input  |     a     |     b     |     c     |
    a block of outputs               |<--------->|
    its elements                   |-------------------|       pieces of a, b and c, put together where it is filtered

Elements beyond an edge are those that the edge rule names, wherever they lie. A block is filtered in mode "valid", so
it has the bits of the whole.
"""

from __future__ import annotations

import itertools
import math
from dataclasses import dataclass
from typing import Any, Callable, Dict, List, Optional, Sequence, Tuple, Union

import dask.array
import numpy
from dask.base import tokenize
from dask.highlevelgraph import HighLevelGraph
from numpy.typing import NDArray

Index = Union[slice, NDArray[Any]]


def beyond(places: NDArray[Any], extent: int, pad: str) -> NDArray[Any]:
    """The elements of an axis that the rule names for places beyond its edges; -1 for the constant."""
    if pad == "replicate":
        return places.clip(0, extent - 1)
    if pad == "circular":
        return places % extent
    if pad == "symmetric":
        turned = places % (2 * extent)
        return numpy.where(turned < extent, turned, 2 * extent - 1 - turned)
    if pad == "mirror":
        period = max(1, 2 * extent - 2)
        turned = places % period
        return numpy.where(turned < extent, turned, period - turned)
    return numpy.where((places >= 0) & (places < extent), places, -1)


@dataclass(frozen=True)
class Stretch:
    """Neighbours along an axis of a block: where they go, and the chunk and the elements that they come from."""

    place: slice
    chunk: Optional[int]  #: None for those of a constant pad
    index: Index


def stretches(bounds: NDArray[Any], first: int, last: int, pad: str) -> List[Stretch]:
    """How places `first` to `last` of an axis, whose chunks lie between `bounds`, come about."""
    places = beyond(numpy.arange(first, last), int(bounds[-1]), pad)
    chunks = numpy.where(places < 0, -1, numpy.searchsorted(bounds, places, "right") - 1)
    cuts = [0, *(numpy.flatnonzero(numpy.diff(chunks)) + 1).tolist(), len(places)]
    found = []
    for low, high in zip(cuts, cuts[1:]):
        chunk = int(chunks[low])
        if chunk < 0:
            found.append(Stretch(slice(low, high), None, slice(0)))
            continue
        index = places[low:high] - bounds[chunk]
        neighbours = slice(int(index[0]), int(index[-1]) + 1)
        found.append(Stretch(slice(low, high), chunk, neighbours if (numpy.diff(index) == 1).all() else index))
    return found


def part_of(chunk: NDArray[Any], index: Sequence[Index]) -> NDArray[Any]:
    for axis, along in enumerate(index):
        chunk = chunk[(slice(None),) * axis + (along,)]
    return chunk


def borders(chunk: NDArray[Any], indices: Sequence[Sequence[Index]]) -> List[NDArray[Any]]:
    """The small parts of a chunk that other blocks need, in memory of their own: what travels between workers."""
    return [part_of(chunk, index).copy() for index in indices]


@dataclass(frozen=True)
class Piece:
    """Elements of a block: where they go, the number of their source, and what of it they are."""

    place: Tuple[slice, ...]
    source: int
    part: Union[int, Tuple[Index, ...]]  #: the number among borders, or the index in a chunk


@dataclass(frozen=True)
class Assembly:
    """The pieces of a block, and where its outputs lie."""

    shape: Tuple[int, ...]
    dtype: Any
    fill: Any  #: of a constant pad
    pieces: List[Piece]
    where: Tuple[Tuple[int, int], ...]


def assemble(plan: Assembly, run: Callable[[NDArray[Any], Tuple[Tuple[int, int], ...]], Any],
             sources: List[Any]) -> Any:
    """Puts a block's elements together, and hands them to `run`, with where its outputs lie."""
    parts = [(piece.place, sources[piece.source][piece.part] if isinstance(piece.part, int) else
              part_of(sources[piece.source], piece.part)) for piece in plan.pieces]
    if len(parts) == 1 and parts[0][1].shape == plan.shape:
        return run(numpy.asarray(parts[0][1]), plan.where)
    block = numpy.full(plan.shape, plan.fill, plan.dtype)
    for place, elements in parts:
        block[place] = elements
    return run(block, plan.where)


def cut(chunks: Sequence[int], low: int, high: int) -> List[int]:
    """The bounds of blocks of the positions `low` to `high`: those of the chunks, where they lie between."""
    inner = [bound for bound in numpy.cumsum(chunks)[:-1].tolist() if low < bound < high]
    return [low, *inner, high]


def checked(array: Any) -> dask.array.Array:
    """A Dask array whose chunks are known."""
    array = array if isinstance(array, dask.array.Array) else dask.array.from_array(array)
    if any(numpy.isnan(extent) for extent in array.shape):
        raise ValueError("input: chunks of unknown sizes; compute_chunk_sizes() finds them")
    return array


def blocks(title: str, array: dask.array.Array, bounds: Sequence[Sequence[int]],
           reach: Sequence[Tuple[int, int]], pad: Optional[str], fill: Any,
           run: Any) -> Tuple[str, HighLevelGraph]:
    """A graph with a key `(name, i, j, ...)` for each block of positions between `bounds`.

    A block's value is what `run` makes of its elements, those of its positions and `reach` before and behind, and of
    its positions. Without a pad, elements end at the edges of the array. `run` must be tokenizable, and travels once.
    What a block needs of a chunk is the chunk itself if that is most of it. The small parts that others need are cut
    out by one task for each chunk, so that not much travels and tasks are few.
    """
    name = f"{title}-{tokenize(array.name, bounds, reach, pad, fill, run)}"
    chunk_bounds = [numpy.concatenate([[0], numpy.cumsum(sizes)]) for sizes in array.chunks]

    def needed(held: NDArray[Any], first: int, last: int) -> List[Stretch]:
        if pad is not None:
            return stretches(held, first, last, pad)
        return stretches(held, max(first, 0), min(last, int(held[-1])), "replicate")

    along = [[(needed(held, low - before, high + after), (low, high)) for low, high in zip(ends, ends[1:])]
             for held, ends, (before, after) in zip(chunk_bounds, bounds, reach)]
    graph: Dict[Any, Any] = {f"{name}-run": run}
    lent: Dict[Any, List[Tuple[Index, ...]]] = {}
    for number in itertools.product(*(range(len(axis)) for axis in along)):
        axes = [axis[k] for axis, k in zip(along, number)]
        sources: Dict[Any, int] = {}
        pieces = []
        for choice in itertools.product(*(parts for parts, _ in axes)):
            if any(part.chunk is None for part in choice):
                continue
            chunk, place = tuple(part.chunk for part in choice), tuple(part.place for part in choice)
            index = tuple(part.index for part in choice)
            part: Union[int, Tuple[Index, ...]] = index
            held = math.prod(sizes[k] for sizes, k in zip(array.chunks, chunk))  # elements of the chunk
            key: Any = (array.name, *chunk)
            if 2 * math.prod(p.stop - p.start for p in place) < held:
                lent.setdefault(chunk, []).append(index)
                key, part = (f"{name}-borders", *chunk), len(lent[chunk]) - 1
            pieces.append(Piece(place, sources.setdefault(key, len(sources)), part))
        shape = tuple(parts[-1].place.stop for parts, _ in axes)
        assembly = Assembly(shape, array.dtype, fill, pieces, tuple(ends for _, ends in axes))
        graph[(name, *number)] = (assemble, assembly, f"{name}-run", list(sources))
    for chunk, indices in lent.items():
        graph[(f"{name}-borders", *chunk)] = (borders, (array.name, *chunk), indices)
    return name, HighLevelGraph.from_collections(name, graph, dependencies=[array])


def filtered(title: str, array: dask.array.Array, positions: Sequence[Tuple[int, int]],
             reach: Sequence[Tuple[int, int]], pad: str, fill: Any, run: Any, dtype: Any) -> dask.array.Array:
    """The array of the outputs at `positions`, which `run` computes block by block."""
    if any(high <= low for low, high in positions):
        return dask.array.zeros(tuple(max(0, high - low) for low, high in positions), dtype=dtype)
    bounds = [cut(chunks, low, high) for chunks, (low, high) in zip(array.chunks, positions)]
    name, graph = blocks(title, array, bounds, reach, pad, fill, run)
    chunks = tuple(tuple(numpy.diff(ends).tolist()) for ends in bounds)
    return dask.array.Array(graph, name, chunks, dtype=dtype)
