"""Stacks of pictures: a filter of some axes of an array, run over each of the others."""

from __future__ import annotations

import math
from typing import Any, Callable, Optional, Sequence, Tuple, Union

import numpy
from numpy.typing import DTypeLike, NDArray

from ._options import Progress, reporter

Axes = Union[int, Sequence[int], None]


def moved(array: NDArray[Any], axes: Axes, rank: int, filter_name: str) -> Tuple[NDArray[Any], Tuple[int, ...]]:
    """The array with the filter's axes last, and where they were."""
    if axes is None:
        if array.ndim != rank:
            raise ValueError(f"{filter_name}: {rank} axes; the input has {array.ndim}; axes= says along which of them "
                             "a stack is filtered")
        return array, tuple(range(rank))
    given = (axes,) if isinstance(axes, int) else tuple(axes)
    normal = tuple(axis + array.ndim if axis < 0 else axis for axis in given)
    if len(given) != rank or len(set(normal)) != rank or not all(0 <= axis < array.ndim for axis in normal):
        raise ValueError(f"axes: {axes}; the {filter_name} needs {rank} different axes of {array.ndim}")
    return numpy.moveaxis(array, normal, tuple(range(-rank, 0))), normal


def run_stack(make: Callable[[Progress], Any], stack: NDArray[Any], axes: Tuple[int, ...],
              out: Optional[NDArray[Any]], dtype: DTypeLike, copy: Optional[bool], progress: Progress,
              title: str) -> NDArray[Any]:
    """Runs the filter that `make` makes over each picture of a stack, whose axes are the last ones.

    `axes` says where these lie in the caller's input, and so in `out` and in the result.
    """
    if stack.ndim == len(axes) and axes == tuple(range(len(axes))):
        return make(reporter(progress, title)).run(stack, out, dtype=dtype, copy=copy)
    outer = stack.shape[:stack.ndim - len(axes)]
    tell, count, done = reporter(progress, title), max(1, math.prod(outer)), 0

    def tell_stack(fraction: float) -> Any:
        return tell((done + fraction) / count) if tell is not None else None

    job = make(None if tell is None else tell_stack)
    last = tuple(range(-len(axes), 0))
    shape = outer + job.output_shape
    if out is None:
        result = numpy.empty(shape, job.output_dtype if dtype is None else dtype)
    elif isinstance(out, numpy.ndarray) and out.ndim == stack.ndim:
        result = numpy.moveaxis(out, axes, last)
    else:
        raise ValueError(f"out: it must be an array of {stack.ndim} axes")
    if result.shape != shape:
        allowed = numpy.moveaxis(numpy.empty(shape, numpy.bool_), last, axes).shape
        raise ValueError(f"out: shape {out.shape}; it must be {allowed}")  # type: ignore[union-attr]
    for index in numpy.ndindex(*outer):
        job.run(stack[index], result[index], dtype=dtype, copy=copy)
        done += 1
    return numpy.moveaxis(result, last, axes) if out is None else out
