"""The filters over Dask's arrays, lazily: the bits of the whole array, whatever its chunks and the workers.

`convolve`, `correlate`, `separable` and `median` take and give Dask arrays, chunk by chunk: a block of outputs needs
the elements under its windows, and no more. Chunks may be smaller than a filter. With mode "same" outputs have the
chunks of the input. `match` and `matches` give delayed results, `scores` the array of all scores.

Parameters are those of the functions of `orvane`. Each task runs in one thread unless `threads` says otherwise, because
workers have threads of their own.

>>> import dask.array, orvane.dask
>>> picture = dask.array.ones((1000, 1000), chunks=(300, 400), dtype="float32")
>>> orvane.dask.median(picture, 9).sum().compute()
1000000.0
"""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, Optional, Sequence, Tuple, Union

import dask.array
import numpy
from numpy.typing import ArrayLike, DTypeLike, NDArray

import orvane

from . import _orvane
from ._blocks import checked, filtered
from ._dask_matching import match, scores
from ._dask_peaks import matches
from ._options import Region, extents, positions, region_box, taps
from ._stacks import Axes

__all__ = ["convolve", "correlate", "match", "matches", "median", "scores", "separable"]


@dataclass(frozen=True)
class _Job:
    """A function of `orvane` with all but its input, as it travels to workers."""

    function: str
    arguments: Tuple[Any, ...]
    options: Dict[str, Any]
    compute: Any = None  #: the type in which inputs are given to it; None for their own

    def __call__(self, block: NDArray[Any], where: Any) -> NDArray[Any]:
        if self.compute is not None:
            block = block.astype(self.compute)
        return getattr(orvane, self.function)(block, *self.arguments, mode="valid", **self.options)

    def __dask_tokenize__(self) -> Any:
        from dask.base import normalize_token
        return normalize_token([self.function, self.arguments, self.options, str(self.compute)])


@dataclass(frozen=True)
class _Geometry:
    """The windows of a filter over an array, of extent 1 in the axes that it does not filter."""

    axes: Tuple[int, ...]
    window: Tuple[int, ...]
    positions: Tuple[Tuple[int, int], ...]
    reach: Tuple[Tuple[int, int], ...]
    sample: Tuple[int, ...]  #: a shape in which arguments can be checked


def _geometry(array: dask.array.Array, size: Sequence[int], axes: Axes, mode: str, region: Optional[Region],
              name: str) -> _Geometry:
    given = range(array.ndim) if axes is None else (axes,) if isinstance(axes, int) else axes
    normal = tuple(axis + array.ndim if axis < 0 else axis for axis in given)
    if axes is None and array.ndim != len(size):
        raise ValueError(f"{name}: {len(size)} axes; the input has {array.ndim}; axes= says along which of them a "
                         "stack is filtered")
    if len(normal) != len(size) or len(set(normal)) != len(size) or not all(0 <= a < array.ndim for a in normal):
        raise ValueError(f"axes: {axes}; the {name} needs {len(size)} different axes of {array.ndim}")
    under = [1] * array.ndim
    for axis, extent in zip(normal, size):
        under[axis] = extent
    window = tuple(under)
    ends = list(positions(array.shape, window, mode))
    shape = tuple(array.shape[axis] for axis in normal)
    box = region_box(region, shape, tuple(size), mode)
    if box is not None:
        for axis, first, count in zip(normal, *box):
            low, high = max(ends[axis][0], first), min(ends[axis][1], first + count)
            ends[axis] = (low, max(low, high))
        if any(ends[axis][1] <= ends[axis][0] for axis in normal):
            for axis in normal:
                ends[axis] = (ends[axis][0], ends[axis][0])
    reach = tuple(((h - 1) // 2, h // 2) for h in window)
    sample = tuple(min(u, 3 * h + 3) for u, h in zip(shape, size))
    return _Geometry(normal, window, tuple(ends), reach, sample)


def _windowed(title: str, array: dask.array.Array, geometry: _Geometry, pad: str, pad_value: complex, job: _Job,
              probe: Any, dtype: DTypeLike) -> dask.array.Array:
    """The outputs of a job; `probe` is an object for the same filter over a small array, which has the same types."""
    rule = _orvane.pad_name(pad)
    wanted = numpy.dtype(probe.output_dtype if dtype is None else dtype)
    options = dict(job.options, axes=None if array.ndim == len(geometry.axes) and
                   geometry.axes == tuple(range(array.ndim)) else geometry.axes)
    if dtype is not None:
        options["dtype"] = wanted.str
    # The value of a constant pad need not be an integer where inputs are: such blocks are converted, which is exact.
    compute = None
    if rule == "constant" and array.dtype.kind in "iu" and job.function != "median" and not (
            pad_value == numpy.array(pad_value.real).astype(array.dtype)):
        compute = _real_of(probe.output_dtype)
        array = array.astype(compute)
    fill = numpy.array(pad_value if array.dtype.kind == "c" else numpy.real(pad_value)).astype(array.dtype)[()]
    return filtered(title, array, geometry.positions, geometry.reach, rule, fill,
                    _Job(job.function, job.arguments, options), wanted)


def _real_of(dtype: Any) -> Any:
    return numpy.empty(0, dtype).real.dtype


def _convolve(function: str, input: Any, filter: ArrayLike, mode: str, pad: str, pad_value: complex, normalise: str,
              region: Optional[Region], axes: Axes, dtype: DTypeLike, threads: int) -> dask.array.Array:
    array = checked(input)
    values = taps("filter", filter, array.dtype)
    geometry = _geometry(array, values.shape, axes, mode, region, "filter")
    probe = orvane.Convolution(values, geometry.sample, array.dtype, mode=mode, pad=pad, pad_value=pad_value,
                               normalise=normalise, threads=threads)
    job = _Job(function, (values,), {"normalise": normalise, "threads": threads})
    return _windowed(function, array, geometry, pad, pad_value, job, probe, dtype)


def convolve(input: Any, filter: ArrayLike, *, mode: str = "same", pad: str = "replicate", pad_value: complex = 0,
             normalise: str = "none", region: Optional[Region] = None, axes: Axes = None, dtype: DTypeLike = None,
             threads: int = 1) -> dask.array.Array:
    """`orvane.convolve` over a Dask array.

    >>> import dask.array, orvane.dask
    >>> orvane.dask.convolve(dask.array.arange(6.0, chunks=2), [1, 1, 1], pad="mirror").compute()
    array([ 2.,  3.,  6.,  9., 12., 13.])
    """
    return _convolve("convolve", input, filter, mode, pad, pad_value, normalise, region, axes, dtype, threads)


def correlate(input: Any, filter: ArrayLike, *, mode: str = "same", pad: str = "replicate", pad_value: complex = 0,
              normalise: str = "none", region: Optional[Region] = None, axes: Axes = None, dtype: DTypeLike = None,
              threads: int = 1) -> dask.array.Array:
    """`orvane.correlate` over a Dask array."""
    return _convolve("correlate", input, filter, mode, pad, pad_value, normalise, region, axes, dtype, threads)


def median(input: Any, window: Union[int, Sequence[int]], *, mode: str = "same", pad: str = "replicate",
           pad_value: float = 0, region: Optional[Region] = None, axes: Axes = None,
           threads: int = 1) -> dask.array.Array:
    """`orvane.median` over a Dask array."""
    array = checked(input)
    rank = array.ndim if axes is None else 1 if isinstance(axes, int) else len(axes)
    size = extents("window", window, rank)
    geometry = _geometry(array, size, axes, mode, region, "window")
    probe = orvane.Median(size, geometry.sample, array.dtype, mode=mode, pad=pad, pad_value=pad_value, threads=threads)
    job = _Job("median", (size,), {"threads": threads})
    return _windowed("median", array, geometry, pad, pad_value, job, probe, None)


def separable(input: Any, row: ArrayLike, column: ArrayLike, *, direction: str = "convolution", mode: str = "same",
              pad: str = "replicate", pad_value: complex = 0, region: Optional[Region] = None, axes: Axes = None,
              dtype: DTypeLike = None, threads: int = 1) -> dask.array.Array:
    """`orvane.separable` over a Dask array.

    With a constant pad the second pass has a value of its own, so the passes are two layers of the graph.
    """
    array = checked(input)
    across, down = taps("row", row, array.dtype), taps("column", column, array.dtype)
    if across.ndim != 1 or down.ndim != 1:
        raise ValueError(f"row and column: {across.ndim} and {down.ndim} axes; they must have 1")
    geometry = _geometry(array, (down.size, across.size), axes, mode, region, "separable filter")
    probe = orvane.SeparableConvolution(across, down, geometry.sample, array.dtype, direction=direction, mode=mode,
                                        pad=pad, pad_value=pad_value, threads=threads)
    if _orvane.pad_name(pad) == "constant" and mode != "valid":
        return _two_passes(array, across, down, direction, mode, pad_value, region, geometry.axes, probe, dtype,
                           threads)
    job = _Job("separable", (across, down), {"direction": direction, "threads": threads})
    return _windowed("separable", array, geometry, pad, pad_value, job, probe, dtype)


def _two_passes(array: dask.array.Array, across: NDArray[Any], down: NDArray[Any], direction: str, mode: str,
                pad_value: complex, region: Optional[Region], axes: Tuple[int, ...], probe: Any, dtype: DTypeLike,
                threads: int) -> dask.array.Array:
    def one(first: dask.array.Array, values: NDArray[Any], value: complex, wanted: DTypeLike) -> dask.array.Array:
        function = "convolve" if direction == "convolution" else "correlate"
        return _convolve(function, first, values, mode, "constant", value, "none", None, axes, wanted, threads)

    middle = one(array, across[None, :], pad_value, None)
    value = _second_value(across, pad_value, array.dtype, probe.output_dtype)
    whole = one(middle, down[:, None], value, dtype)
    geometry = _geometry(array, (down.size, across.size), axes, mode, region, "separable filter")
    first = [low for low, _ in positions(array.shape, geometry.window, mode)]
    return whole[tuple(slice(low - f, high - f) for (low, high), f in zip(geometry.positions, first))]


def _second_value(across: NDArray[Any], pad_value: complex, input_dtype: Any, dtype: Any) -> Any:
    """What the first pass makes of an input of nothing but the pad value: the sum of the filter times the value."""
    kind = _real_of(dtype).type
    real, imaginary = kind(across[0].real), kind(across[0].imag)
    for tap in across[1:]:
        real, imaginary = real + kind(tap.real), imaginary + kind(tap.imag)
    value = complex(pad_value)
    a, b = kind(value.real), kind(value.imag)
    if numpy.dtype(dtype).kind != "c":
        return real * a
    if across.dtype.kind != "c":
        return complex(real * a, real * b)
    if numpy.dtype(input_dtype).kind != "c":
        return complex(real * a, imaginary * a)
    return complex(real * a - imaginary * b, real * b + imaginary * a)
