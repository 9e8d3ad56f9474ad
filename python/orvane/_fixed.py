"""Fixed point: types, arrays, filters and what they count."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, List, Optional, Sequence, Tuple, Union

import numpy
from numpy.typing import ArrayLike, NDArray

from . import _orvane
from ._matching import Match
from ._options import Progress, Region, extents, filter_options, region_box, reporter


class FixedType:
    """The type of a fixed-point value, from a text such as ``"s16.12"``: signed, 16 bits, 12 of them fraction.

    A value is an integer of `word` bits, 1 to 128, times 2^-fraction. It lies in the narrowest of 8, 16, 32, 64 and
    128 bits that hold its word. `dtype()` is that of arrays: an integer; beyond 64 bits a record of `low` and `high`;
    for complex values a record of `re` and `im`.

    >>> kind = FixedType("u12.4")
    >>> kind.word, kind.fraction, kind.signed, kind.dtype()
    (12, 4, False, dtype('uint16'))
    """

    __slots__ = ("text", "word", "fraction", "signed")

    def __init__(self, text: Union[str, FixedType]) -> None:
        self.text, self.word, self.fraction, self.signed = _orvane.fixed_type(str(text))

    def dtype(self, is_complex: bool = False) -> numpy.dtype:
        """The dtype of arrays of such values."""
        return _orvane.fixed_dtype(self.text, is_complex)

    def __str__(self) -> str:
        return self.text

    def __repr__(self) -> str:
        return f"FixedType({self.text!r})"

    def __eq__(self, other: object) -> bool:
        return isinstance(other, FixedType) and self.text == other.text

    def __hash__(self) -> int:
        return hash(self.text)


TypeLike = Union[str, FixedType]


@dataclass(frozen=True)
class Statistics:
    """The counts of casts of one label; they add up over the runs of an object."""

    label: str
    casts: int  #: values cast into the label's type
    overflows: int  #: values outside the type's range
    lossy: int  #: values whose rounding lost bits
    minimum: float  #: least value after the cast; infinite without one, or where ranges are not gathered
    maximum: float  #: greatest value after the cast


@dataclass(frozen=True, eq=False)
class FixedArray:
    """Values of a type: `raw` has the dtype ``type.dtype()``, real or complex."""

    raw: NDArray[Any]
    type: FixedType
    statistics: Optional[Statistics] = None  #: of the casts that made it, if `quantise` did

    @property
    def is_complex(self) -> bool:
        return self.raw.dtype != self.type.dtype()

    def to_float(self) -> NDArray[Any]:
        """The values as the nearest float64, or complex128."""
        return _orvane.to_float(self.raw, str(self.type))

    def __array__(self, dtype: Any = None, copy: Optional[bool] = None) -> NDArray[Any]:
        return self.to_float() if dtype is None else self.to_float().astype(dtype)


def quantise(values: ArrayLike, type: TypeLike, *, rounding: str = "nearest", overflow: str = "saturate",
             gather: str = "ranges") -> FixedArray:
    """Casts numbers into a fixed-point type. Each is the exact number that its float64 represents.

    Parameters
    ----------
    rounding : ceiling (up), floor (down), zero (towards it), or to nearest with ties to even (convergent), up
        (nearest) or away from zero (round).
    overflow : wrap (keep the low bits), saturate, symmetric (saturate without the least value), or zero.
    gather : what is counted: nothing, counts, or ranges, which are counts and the least and greatest values.

    >>> fixed = quantise([0.3, -0.25, 9], "s8.6")
    >>> fixed.raw, fixed.to_float()
    (array([ 19, -16, 127], dtype=int8), array([ 0.296875, -0.25    ,  1.984375]))
    >>> fixed.statistics.overflows
    1
    """
    modes = {"rounding": rounding, "overflow": overflow, "gather": gather}
    raw, counts = _orvane.quantise(values, str(type), modes)
    return FixedArray(raw, FixedType(type), Statistics(*counts))


def _type_table(input: TypeLike, accumulator: Optional[TypeLike], output: Optional[TypeLike],
                product: Optional[TypeLike], sqrt: Optional[TypeLike], input_complex: bool, rounding: str,
                overflow: str, gather: str) -> dict:
    def text(type: Optional[TypeLike]) -> Optional[str]:
        return None if type is None else str(type)
    return {"input": text(input), "accumulator": text(accumulator), "output": text(output), "product": text(product),
            "sqrt": text(sqrt), "input_complex": input_complex, "rounding": rounding, "overflow": overflow,
            "gather": gather}


def _values(name: str, values: FixedArray) -> Tuple[NDArray[Any], str]:
    if not isinstance(values, FixedArray):
        raise TypeError(f"{name}: a {type(values).__name__}; it must be a FixedArray, as quantise() makes")
    return values.raw, str(values.type)


class _FixedFilter(_orvane.FixedFilter):
    """What all fixed-point filters share."""

    def run(self, input: Union[FixedArray, NDArray[Any]], out: Optional[NDArray[Any]] = None) -> FixedArray:
        """Filters `input`, values or the integers that stand for them, into `out` or into a new array."""
        return FixedArray(self._run(_raw("input", input, FixedType(self.input_type)), out), FixedType(self.output_type))

    def statistics(self) -> List[Statistics]:
        """The counts of all runs so far, sorted by label."""
        return [Statistics(*counts) for counts in self._statistics()]


def _raw(name: str, values: Union[FixedArray, NDArray[Any]], wanted: FixedType) -> NDArray[Any]:
    if not isinstance(values, FixedArray):
        return values
    if values.type != wanted:
        raise TypeError(f"{name}: values of {values.type}; they must be {wanted}")
    return values.raw


class FixedConvolution(_FixedFilter):
    """Convolution, or correlation, of fixed-point arrays of one shape with a filter.

    Each product is cast into the product type, or is exact without one; each sum into the accumulator's type, and the
    result into the output's, by the modes that `quantise` has. ``normalise="energy"`` needs the type `sqrt`, of roots.
    `statistics()` has the labels accumulator, output and product. All other parameters are those of `Convolution`, for
    1 or 2 axes.

    >>> import numpy, orvane
    >>> weights = orvane.quantise([-0.25, 1.5, -0.25], "s8.6")
    >>> sharpen = orvane.FixedConvolution(weights, (6,), input="u8.0", accumulator="s20.6", output="u8.0",
    ...                                   rounding="convergent")
    >>> sharpen.run(numpy.array([10, 10, 200, 250, 250, 30], numpy.uint8)).raw
    array([ 10,   0, 235, 255, 255,   0], dtype=uint8)
    >>> [(s.label, s.overflows, s.casts) for s in sharpen.statistics()]
    [('accumulator', 0, 18), ('output', 4, 6), ('product', 0, 18)]
    """

    def __init__(self, filter: FixedArray, shape: Union[int, Sequence[int]], *, input: TypeLike,
                 accumulator: TypeLike, output: TypeLike, product: Optional[TypeLike] = None,
                 sqrt: Optional[TypeLike] = None, input_complex: bool = False, rounding: str = "nearest",
                 overflow: str = "saturate", gather: str = "ranges", direction: str = "convolution",
                 mode: str = "same", pad: str = "replicate", pad_value: complex = 0, normalise: str = "none",
                 region: Optional[Region] = None, threads: int = 0, progress: Progress = None) -> None:
        size, values = extents("shape", shape), _values("filter", filter)
        super().__init__("convolution", [values], (), size, _type_table(
            input, accumulator, output, product, sqrt, input_complex, rounding, overflow, gather), filter_options(
            size, values[0].shape, "filtering", direction=direction, mode=mode, pad=pad, pad_value=pad_value,
            normalise=normalise, region=region, threads=threads, progress=progress))


class FixedSeparableConvolution(_FixedFilter):
    """The same with a row across and a column down, which have the same type.

    Values are cast into the output's type between the passes. With a constant pad, that type must have room for the
    sum of the row times the pad value.

    >>> import numpy, orvane
    >>> taps = orvane.quantise([0.25, 0.5, 0.25], "s8.6")
    >>> blur = orvane.FixedSeparableConvolution(taps, taps, (3, 3), input="u8.0", accumulator="s20.8", output="u10.2")
    >>> blur.run(numpy.diag([16, 16, 16]).astype(numpy.uint8)).to_float()[1]
    array([5., 6., 5.])
    """

    def __init__(self, row: FixedArray, column: FixedArray, shape: Sequence[int], *, input: TypeLike,
                 accumulator: TypeLike, output: TypeLike, product: Optional[TypeLike] = None,
                 input_complex: bool = False, rounding: str = "nearest", overflow: str = "saturate",
                 gather: str = "ranges", direction: str = "convolution", mode: str = "same", pad: str = "replicate",
                 pad_value: complex = 0, region: Optional[Region] = None, threads: int = 0,
                 progress: Progress = None) -> None:
        size, across, down = extents("shape", shape), _values("row", row), _values("column", column)
        super().__init__("separable", [across, down], (), size, _type_table(
            input, accumulator, output, product, None, input_complex, rounding, overflow, gather), filter_options(
            size, (down[0].size, across[0].size), "filtering", direction=direction, mode=mode, pad=pad,
            pad_value=pad_value, region=region, threads=threads, progress=progress))


class FixedMedian(_FixedFilter):
    """Median filter for fixed-point arrays of one shape, whose values are real.

    An even window gives half of the sum of the two middle values in the accumulator's type, by default exact. The
    result is cast into the output's type, by default the input's. `statistics()` has the label output. All other
    parameters are those of `Median`.

    >>> import numpy, orvane
    >>> orvane.FixedMedian(3, (4,), input="u8.0").run(numpy.array([1, 9, 2, 3], numpy.uint8)).raw
    array([1, 2, 3, 3], dtype=uint8)
    """

    def __init__(self, window: Union[int, Sequence[int]], shape: Union[int, Sequence[int]], *, input: TypeLike,
                 accumulator: Optional[TypeLike] = None, output: Optional[TypeLike] = None, rounding: str = "nearest",
                 overflow: str = "saturate", gather: str = "ranges", mode: str = "same", pad: str = "replicate",
                 pad_value: float = 0, region: Optional[Region] = None, threads: int = 0,
                 progress: Progress = None) -> None:
        size = extents("shape", shape)
        under = extents("window", window, len(size))
        super().__init__("median", [], under, size, _type_table(
            input, accumulator, output, None, None, False, rounding, overflow, gather), filter_options(
            size, under, "median", mode=mode, pad=pad, pad_value=pad_value, region=region, threads=threads,
            progress=progress))


class FixedMatcher(_orvane.FixedMatcher):
    """Finds a template in fixed-point images of one shape.

    The accumulator's type is that of differences and sums, the output's that of scores. Without a product type,
    products are exact. `Match.score` is the float nearest to the output's value; arrays of scores are raw values of
    `output_type`. Metrics are sad, ssd, maxad and product; all other parameters are those of `Matcher`.

    >>> import numpy, orvane
    >>> image = numpy.arange(20, dtype=numpy.uint8).reshape(4, 5)
    >>> patch = orvane.FixedArray(image[1:3, 2:4], orvane.FixedType("u8.0"))
    >>> find = orvane.FixedMatcher(patch, image.shape, input="u8.0", accumulator="s20.0", output="u16.0")
    >>> find.run(image).location
    (1, 2)
    """

    def __init__(self, template: FixedArray, shape: Sequence[int], *, input: TypeLike, accumulator: TypeLike,
                 output: TypeLike, product: Optional[TypeLike] = None, input_complex: bool = False,
                 rounding: str = "nearest", overflow: str = "saturate", gather: str = "ranges", metric: str = "sad",
                 mode: str = "valid", search: str = "exhaustive", region: Optional[Region] = None,
                 neighbourhood: int = 0, best: bool = True, map: bool = False, refine: bool = False, threads: int = 0,
                 progress: Progress = None) -> None:
        size, pattern = extents("shape", shape), _values("template", template)
        super().__init__(pattern, size, _type_table(input, accumulator, output, product, None, input_complex, rounding,
                                                    overflow, gather), {
            "metric": metric, "mode": mode, "search": search,
            "region": region_box(region, size, pattern[0].shape, mode), "neighbourhood": neighbourhood, "best": best,
            "map": map, "refine": refine, "threads": threads, "progress": reporter(progress, "matching")})

    def run(self, image: Union[FixedArray, NDArray[Any]]) -> Match:
        """Finds the template in an image, of values or of the integers that stand for them."""
        return Match(*self._run(_raw("image", image, FixedType(self.input_type))))

    def statistics(self) -> List[Statistics]:
        """The counts of all runs so far, sorted by label."""
        return [Statistics(*counts) for counts in self._statistics()]
