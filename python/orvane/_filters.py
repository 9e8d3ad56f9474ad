"""Convolution, correlation, separable and median filters."""

from __future__ import annotations

from typing import Any, Optional, Sequence, Union

import numpy
from numpy.typing import ArrayLike, DTypeLike, NDArray

from . import _orvane
from ._options import Progress, Region, as_array, extents, filter_options, taps
from ._stacks import Axes, moved, run_stack


class Convolution(_orvane.Filter):
    """Convolution, or correlation, of arrays of one shape with a filter: made once, run for each array.

        y[p] = sum over j of u[p + j - centre] * h[f]

    j runs over the filter's elements, the last axis fastest; f over the filter's elements from the last to the first,
    for the direction ``"correlation"`` from the first to the last. Each output is one sum in this order, with one
    rounding for each multiplication and each addition, in the type of the sums: the bits are the same on every machine.

    Parameters
    ----------
    filter : array of 1 to 8 axes of float32, float64, complex64 or complex128; or numbers, which take the precision of
        the inputs. Of more than 2 axes it is real.
    shape : the shape of inputs.
    dtype : the element type of inputs: that of the filter, of the same precision, or integers of 8 and 16 bits, with
        float64 also of 32 bits. Default: that of the filter.
    direction : ``"convolution"`` or ``"correlation"``.
    mode : ``"valid"``: the window lies in the input; ``"same"``: its centre does, the middle element, of an even
        extent the lower one of two; ``"full"``: window and input overlap.
    pad : what is read beyond an edge, at any distance::

            constant   v v v | a b c | v v v        replicate  a a a | a b c | c c c
            symmetric  c b a | a b c | c b a        circular   a b c | a b c | a b c
            mirror     d c b | a b c d | c b a

        Other names for them: fill, grid-constant; edge, nearest; symm, grid-mirror; wrap, grid-wrap. ``"reflect"``
        is refused, because it is mirror to NumPy and symmetric to SciPy.
    pad_value : v of a constant pad.
    normalise : ``"none"``, or ``"energy"``: each sum is divided by the norms of filter and window, and 0 where that
        divisor is 0.
    region : the positions that are wanted, a slice for each axis. They count from the input's first element, so
        negative ones lie before it; None stands for an end of the positions that the mode has.
    threads : the most threads of a run, 0 for all cores. Results do not depend on it.
    progress : called with the fraction that is done, at most 50 times a second, from any thread; False ends the run
        with `Cancelled`. True shows a bar of tqdm's.

    Raises
    ------
    ValueError for values, TypeError for types that do not fit: what, its value, what is allowed.

    >>> import numpy, orvane
    >>> smooth = orvane.Convolution([0.25, 0.5, 0.25], (5,), numpy.float32)
    >>> smooth.run(numpy.array([0, 4, 8, 4, 0], numpy.float32))
    array([1., 4., 6., 4., 1.], dtype=float32)
    >>> smooth.output_shape, smooth.halo
    ((5,), ((1, 1),))
    """

    __slots__ = ()

    def __init__(self, filter: ArrayLike, shape: Union[int, Sequence[int]], dtype: DTypeLike = None, *,
                 direction: str = "convolution", mode: str = "same", pad: str = "replicate", pad_value: complex = 0,
                 normalise: str = "none", region: Optional[Region] = None, threads: int = 0,
                 progress: Progress = None) -> None:
        dtype = _dtype_of(filter) if dtype is None else dtype
        values, size = taps("filter", filter, dtype), extents("shape", shape)
        if values.ndim != len(size):
            raise ValueError(f"filter: {values.ndim} axes; the input has {len(size)}")
        super().__init__("convolution", [values], (), size, dtype, filter_options(
            size, values.shape, "filtering", direction=direction, mode=mode, pad=pad, pad_value=pad_value,
            normalise=normalise, region=region, threads=threads, progress=progress))

    def set_filter(self, filter: ArrayLike) -> None:
        """Copies the elements of another filter of the same shape and type for later runs."""
        self._set_filters([filter])


class SeparableConvolution(_orvane.Filter):
    """The same with a filter that is the product of a row and a column: made once, run for each picture.

    The row is run across, along the last axis, into an intermediate picture of the output's type; then the column
    down. The cost is the sum of their lengths. The pad rule holds for the picture in the first pass and for the
    intermediate one in the second; there the value of a constant pad is the row's sum times the pad value. All other
    parameters are those of `Convolution`.

    >>> import numpy, orvane
    >>> blur = orvane.SeparableConvolution([1, 2, 1], [1, 1], (2, 3), numpy.float64)
    >>> blur.run(numpy.array([[1., 2, 3], [4, 5, 6]]))
    array([[22., 28., 34.],
           [34., 40., 46.]])
    """

    __slots__ = ()

    def __init__(self, row: ArrayLike, column: ArrayLike, shape: Sequence[int], dtype: DTypeLike = None, *,
                 direction: str = "convolution", mode: str = "same", pad: str = "replicate", pad_value: complex = 0,
                 region: Optional[Region] = None, threads: int = 0, progress: Progress = None) -> None:
        dtype = _dtype_of(row) if dtype is None else dtype
        across, down, size = taps("row", row, dtype), taps("column", column, dtype), extents("shape", shape)
        if across.dtype != down.dtype:
            raise TypeError(f"column: elements of {down.dtype}; those of the row are {across.dtype}")
        if across.ndim != 1 or down.ndim != 1 or len(size) != 2:
            raise ValueError(f"row, column and shape: {across.ndim}, {down.ndim} and {len(size)} axes; they must have "
                             "1, 1 and 2")
        super().__init__("separable", [across, down], (), size, dtype, filter_options(
            size, (down.size, across.size), "filtering", direction=direction, mode=mode, pad=pad, pad_value=pad_value,
            region=region, threads=threads, progress=progress))

    def set_filters(self, row: ArrayLike, column: ArrayLike) -> None:
        """Copies the elements of other filters of the same lengths and types for later runs."""
        self._set_filters([row, column])


class Median(_orvane.Filter):
    """Median filter for arrays of one shape: made once, run for each array.

    Each output is the middle one of the values in a window, in the input's type, which is float32, float64, bool or an
    integer of 8, 16 or 32 bits::

        odd number of values    the middle one in ascending order
        even number             upper * 0.5 + lower * 0.5 of the two in the middle; of integers rounded, ties to even
        bool                    True if at least half of the values are

    `window` is an extent for all axes or one for each; `shape` has 1 or 2 axes. All other parameters are those of
    `Convolution`.

    >>> import numpy, orvane
    >>> clean = orvane.Median(3, (5,), numpy.uint8)
    >>> clean.run(numpy.array([1, 2, 99, 4, 5], numpy.uint8))
    array([1, 2, 4, 5, 5], dtype=uint8)
    """

    __slots__ = ()

    def __init__(self, window: Union[int, Sequence[int]], shape: Union[int, Sequence[int]],
                 dtype: DTypeLike = numpy.float64, *, mode: str = "same", pad: str = "replicate", pad_value: float = 0,
                 region: Optional[Region] = None, threads: int = 0, progress: Progress = None) -> None:
        size = extents("shape", shape)
        under = extents("window", window, len(size))
        if len(under) != len(size):
            raise ValueError(f"window: {len(under)} axes; the input has {len(size)}")
        super().__init__("median", [], under, size, dtype, filter_options(
            size, under, "median", mode=mode, pad=pad, pad_value=pad_value, region=region, threads=threads,
            progress=progress))


def _dtype_of(values: ArrayLike) -> DTypeLike:
    dtype = numpy.asarray(values).dtype
    return dtype if dtype.kind in "fc" else numpy.float64


def _convolve(direction: str, input: ArrayLike, filter: ArrayLike, axes: Axes, out: Optional[NDArray[Any]],
              dtype: DTypeLike, copy: Optional[bool], progress: Progress, options: dict) -> NDArray[Any]:
    array = as_array(input)
    values = taps("filter", filter, array.dtype)
    stack, places = moved(array, axes, values.ndim, "filter")

    def make(tell: Progress) -> Convolution:
        return Convolution(values, stack.shape[stack.ndim - values.ndim:], stack.dtype, direction=direction,
                           progress=tell, **options)

    return run_stack(make, stack, places, out, dtype, copy, progress, direction)


def convolve(input: ArrayLike, filter: ArrayLike, *, mode: str = "same", pad: str = "replicate",
             pad_value: complex = 0, normalise: str = "none", region: Optional[Region] = None, axes: Axes = None,
             out: Optional[NDArray[Any]] = None, dtype: DTypeLike = None, copy: Optional[bool] = None,
             threads: int = 0, progress: Progress = None) -> NDArray[Any]:
    """Convolves `input` with `filter`.

        y[p] = sum over j of u[p + j - centre] * h[last - j]

    `mode`, `pad`, `pad_value`, `normalise`, `region`, `threads` and `progress`, types and errors are those of
    `Convolution`. The output has the type of the sums, complex if input or filter is; with mode ``"same"`` it has the
    input's shape.

    Parameters
    ----------
    input : array of 1 to 8 axes.
    filter : array of as many axes, or of as many as `axes` has.
    axes : along which axes of the input the filter lies, for stacks: each picture is filtered by itself. The region
        then has a slice for each of them.
    out : where the output goes; it must not overlap the input. Integers round and clip the sums.
    dtype : the type of the output: that of the sums, or integers.
    copy : arrays whose strides are not those of lines at a pitch are copied; False refuses them.

    >>> import numpy, orvane
    >>> picture = numpy.arange(12, dtype=numpy.float32).reshape(3, 4)
    >>> orvane.convolve(picture, [[0, 1], [1, 0]], mode="valid")
    array([[ 5.,  7.,  9.],
           [13., 15., 17.]], dtype=float32)
    >>> orvane.convolve([1, 2, 3], [1, -1], pad="edge")
    array([1., 1., 0.])
    """
    return _convolve("convolution", input, filter, axes, out, dtype, copy, progress, dict(
        mode=mode, pad=pad, pad_value=pad_value, normalise=normalise, region=region, threads=threads))


def correlate(input: ArrayLike, filter: ArrayLike, *, mode: str = "same", pad: str = "replicate",
              pad_value: complex = 0, normalise: str = "none", region: Optional[Region] = None, axes: Axes = None,
              out: Optional[NDArray[Any]] = None, dtype: DTypeLike = None, copy: Optional[bool] = None,
              threads: int = 0, progress: Progress = None) -> NDArray[Any]:
    """Correlates `input` with `filter`; nothing is conjugated. All parameters are those of `convolve`.

        y[p] = sum over j of u[p + j - centre] * h[j]

    >>> import orvane
    >>> orvane.correlate([1, 2, 4, 8], [-1, 0, 1], pad="mirror")
    array([0., 3., 6., 0.])
    """
    return _convolve("correlation", input, filter, axes, out, dtype, copy, progress, dict(
        mode=mode, pad=pad, pad_value=pad_value, normalise=normalise, region=region, threads=threads))


def separable(input: ArrayLike, row: ArrayLike, column: ArrayLike, *, direction: str = "convolution",
              mode: str = "same", pad: str = "replicate", pad_value: complex = 0, region: Optional[Region] = None,
              axes: Axes = None, out: Optional[NDArray[Any]] = None, dtype: DTypeLike = None,
              copy: Optional[bool] = None, threads: int = 0, progress: Progress = None) -> NDArray[Any]:
    """Filters pictures with a row across and then a column down (see `SeparableConvolution`).

    `input` has 2 axes, or more with `axes`; all other parameters are those of `convolve`.

    >>> import numpy, orvane
    >>> orvane.separable(numpy.eye(3), [1, 2, 1], [1, 0, 0], pad="constant")
    array([[1., 2., 1.],
           [0., 1., 2.],
           [0., 0., 0.]])
    """
    array = as_array(input)
    across, down = taps("row", row, array.dtype), taps("column", column, array.dtype)
    stack, places = moved(array, axes, 2, "separable filter")

    def make(tell: Progress) -> SeparableConvolution:
        return SeparableConvolution(across, down, stack.shape[-2:], stack.dtype, direction=direction, mode=mode,
                                    pad=pad, pad_value=pad_value, region=region, threads=threads, progress=tell)

    return run_stack(make, stack, places, out, dtype, copy, progress, "separable")


def median(input: ArrayLike, window: Union[int, Sequence[int]], *, mode: str = "same", pad: str = "replicate",
           pad_value: float = 0, region: Optional[Region] = None, axes: Axes = None,
           out: Optional[NDArray[Any]] = None, copy: Optional[bool] = None, threads: int = 0,
           progress: Progress = None) -> NDArray[Any]:
    """Replaces each element by the median of those in a window around it (see `Median`).

    `window` is an extent for all axes or one for each. `input` has 1 or 2 axes, or more with `axes`; the output has
    its type. All other parameters are those of `convolve`.

    >>> import numpy, orvane
    >>> orvane.median(numpy.array([[1, 1, 9], [1, 7, 1], [1, 1, 1]], numpy.uint8), 3)
    array([[1, 1, 7],
           [1, 1, 1],
           [1, 1, 1]], dtype=uint8)
    """
    array = as_array(input)
    rank = array.ndim if axes is None else 1 if isinstance(axes, int) else len(axes)
    under = extents("window", window, rank)
    stack, places = moved(array, axes, len(under), "window")

    def make(tell: Progress) -> Median:
        return Median(under, stack.shape[stack.ndim - len(under):], stack.dtype, mode=mode, pad=pad,
                      pad_value=pad_value, region=region, threads=threads, progress=tell)

    return run_stack(make, stack, places, out, None, copy, progress, "median")
