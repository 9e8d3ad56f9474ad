"""How arguments become what the compiled part takes."""

from __future__ import annotations

import operator
from typing import Any, Callable, Optional, Sequence, Tuple, Union

import numpy
from numpy.typing import ArrayLike, DTypeLike, NDArray

Shape = Tuple[int, ...]
Region = Union[slice, Tuple[slice, ...]]
Progress = Union[Callable[[float], Any], bool, None]


def taps(name: str, values: ArrayLike, dtype: DTypeLike) -> NDArray[Any]:
    """The elements of a filter or a template for inputs of `dtype`.

    Arrays of floating-point or complex elements stay what they are. Python's numbers, which have no precision of their
    own, and integers become elements of the input's precision, which is that of float64 for inputs of integers.
    Integers must fit exactly.
    """
    if isinstance(values, numpy.ndarray) and values.dtype.kind in "fc":
        return values
    given = numpy.asarray(values)
    if given.dtype.kind == "b" and numpy.dtype(dtype).kind == "b":
        return given
    if given.dtype.kind in "fc" and hasattr(values, "dtype"):
        return given
    if given.dtype.kind not in "biufc":
        raise TypeError(f"{name}: elements of {given.dtype}; allowed are numbers")
    is_complex, is_single = given.dtype.kind == "c", numpy.dtype(dtype) in (numpy.float32, numpy.complex64)
    result = given.astype(f"{'c' if is_complex else 'f'}{(4 if is_single else 8) * (1 + is_complex)}")
    if given.dtype.kind in "iu" and not numpy.array_equal(result.astype(object), given.astype(object)):
        raise ValueError(f"{name}: integers that {result.dtype} does not hold exactly; convert them, as by astype()")
    return result


def extents(name: str, shape: Union[int, Sequence[int]], rank: Optional[int] = None) -> Shape:
    """A shape from one extent, for `rank` axes, or from a sequence of them."""
    if isinstance(shape, (str, bytes)):
        raise TypeError(f"{name}: {shape!r}; it must be an integer or a sequence of integers")
    if not isinstance(shape, (tuple, list)):
        try:
            return (operator.index(shape),) * (1 if rank is None else rank)  # type: ignore[arg-type]
        except TypeError:
            pass
    try:
        return tuple(operator.index(extent) for extent in shape)  # type: ignore[union-attr]
    except TypeError:
        raise TypeError(f"{name}: {shape!r}; it must be an integer or a sequence of integers") from None


def positions(shape: Shape, window: Shape, mode: str) -> Tuple[Tuple[int, int], ...]:
    """The first position and the one behind the last, in each axis, that have an output."""
    def along(u: int, h: int) -> Tuple[int, int]:
        before, after = (h - 1) // 2, h // 2
        return (before, u - after) if mode == "valid" else (-after, u + before) if mode == "full" else (0, u)
    return tuple(along(u, h) for u, h in zip(shape, window))


def _near(position: Any) -> int:
    """A position, which may lie beyond all that an array has; the library counts in 32 bits."""
    return max(-2**30, min(2**30, operator.index(position)))


def region_box(region: Optional[Region], shape: Shape, window: Shape, mode: str) -> Optional[Tuple[Shape, Shape]]:
    """A region of slices as start and shape. Ends that are None are those of the mode's positions."""
    if region is None:
        return None
    slices = (region,) if isinstance(region, slice) else region
    if not isinstance(slices, tuple) or not all(isinstance(s, slice) for s in slices):
        raise TypeError(f"region: {region!r}; it must be a slice for each axis, as numpy.s_[10:20, :]")
    if len(slices) != len(shape):
        raise ValueError(f"region: {len(slices)} slices; the input has {len(shape)} axes")
    if any(s.step not in (None, 1) for s in slices):
        raise ValueError(f"region: {region!r}; allowed are slices without a step")
    ends = positions(shape, window, mode)
    first = tuple(low if s.start is None else _near(s.start) for s, (low, _) in zip(slices, ends))
    last = tuple(high if s.stop is None else _near(s.stop) for s, (_, high) in zip(slices, ends))
    return first, tuple(max(0, b - a) for a, b in zip(first, last))


def reporter(progress: Progress, title: str) -> Optional[Callable[[float], Any]]:
    """What a run calls: the caller's function, or a bar of tqdm's."""
    if progress is None or progress is False:
        return None
    if progress is not True:
        return progress
    from tqdm import tqdm  # type: ignore[import]

    bar = None

    def show(fraction: float) -> None:
        nonlocal bar
        if bar is None:
            bar = tqdm(total=100, desc=title, unit="%", bar_format="{l_bar}{bar}| {elapsed}<{remaining}")
        bar.update(100 * fraction - bar.n)
        if fraction >= 1:
            bar.close()
            bar = None

    return show


def as_array(values: ArrayLike) -> NDArray[Any]:
    """An array as it is; Python's numbers as float64."""
    if isinstance(values, numpy.ndarray):
        return values
    array = numpy.asarray(values)
    return array.astype(numpy.float64) if array.dtype.kind in "iu" and not hasattr(values, "dtype") else array


def filter_options(shape: Shape, window: Shape, title: str, *, direction: str = "convolution", mode: str, pad: str,
                   pad_value: complex, normalise: str = "none", region: Optional[Region], threads: int,
                   progress: Progress) -> dict:
    """The options of a filter."""
    return {"direction": direction, "mode": mode, "pad": pad, "pad_value": pad_value, "normalise": normalise,
            "region": region_box(region, shape, window, mode), "threads": threads,
            "progress": reporter(progress, title)}
