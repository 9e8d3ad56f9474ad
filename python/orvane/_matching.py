"""Template matching."""

from __future__ import annotations

import math
from dataclasses import dataclass
from typing import Any, List, Optional, Sequence, Tuple, Union

import numpy
from numpy.typing import ArrayLike, DTypeLike, NDArray

from . import _orvane
from ._options import Progress, Region, as_array, extents, region_box, reporter, taps

Slices = Tuple[slice, slice]
Score = Union[int, float, complex]


@dataclass(frozen=True, eq=False)
class Match:
    """The best match of a template, and what else was asked for."""

    found: bool  #: whether there is a best match; otherwise location, window and score are 0
    location: Tuple[int, int]  #: row and column of the template's middle element, the lower one of two
    window: Slices  #: what of the image lies under the template: ``image[match.window]``
    score: Score  #: int for bool, complex for complex elements
    refined: Tuple[float, float]  #: the location, between positions if `refine` was chosen
    region_valid: bool  #: whether the whole region consists of positions
    neighbourhood_valid: bool  #: whether the whole neighbourhood lies in the region and has positions only
    positions: Slices  #: the positions in the region
    neighbourhood: Optional[NDArray[Any]]  #: the scores around the location
    map: Optional[NDArray[Any]]  #: the score of each of `positions`


@dataclass(frozen=True)
class Peak:
    """One of several matches."""

    location: Tuple[int, int]  #: row and column of the template's middle element, the lower one of two
    window: Slices  #: what of the image lies under the template: ``image[peak.window]``
    score: Score
    refined: Tuple[float, float]  #: the location, between positions if `refine` was chosen


class Matcher(_orvane.Matcher):
    """Finds a template in images of one shape: made once, run for each image.

    The score of a position, with a of the window and t of the template::

        sad          sum of |a - t|
        ssd          sum of (a - t)^2
        maxad        greatest |a - t|
        product      sum of a * t, the template turned by 180 degrees
        cosine       sum of a * t / (root of sum of a^2 * root of sum of t^2)
        coefficient  the same of a and t less their means

    The best match has the least score, by cosine and coefficient the greatest; of equal scores the first, row by row.
    Each score is one sum in the order of the template, in its own type: the bits are the same on every machine.

    Parameters
    ----------
    template : 2 axes of float32, float64, complex64, complex128 or bool; or integers, which take the precision of the
        images exactly.
    shape : the shape of images.
    dtype : the element type of images: that of the template, of the same precision, or, if it is real, integers of 8
        and 16 bits, with float64 also of 32 bits. Default: that of the template.
    metric : a name of the list above.
    mode : ``"valid"``: the template lies in the image; ``"same"``, ``"full"``: see `Convolution`. Where it crosses an
        edge the score is 0.
    search : ``"exhaustive"``, or ``"three-step"``, which looks at few positions and can miss the best.
    region : the positions to look at, as for `Convolution`.
    neighbourhood : how many rows and columns of scores around the best match are returned.
    best, map : whether the best match is searched, and whether the scores of all positions are returned.
    refine : whether to estimate by parabolas where between positions the best match lies.
    threads, progress : those of `Convolution`.

    Raises
    ------
    ValueError for values, TypeError for types that do not fit.

    >>> import numpy, orvane
    >>> image = numpy.arange(20, dtype=numpy.uint8).reshape(4, 5)
    >>> find = orvane.Matcher(image[1:3, 2:4], image.shape, image.dtype)
    >>> match = find.run(image)
    >>> match.location, match.score, match.window
    ((1, 2), 0.0, (slice(1, 3, None), slice(2, 4, None)))
    """

    def __init__(self, template: ArrayLike, shape: Sequence[int], dtype: DTypeLike = None, *, metric: str = "sad",
                 mode: str = "valid", search: str = "exhaustive", region: Optional[Region] = None,
                 neighbourhood: int = 0, best: bool = True, map: bool = False, refine: bool = False, threads: int = 0,
                 progress: Progress = None) -> None:
        given = numpy.asarray(template).dtype
        dtype = (given if given.kind in "fcb" else numpy.float64) if dtype is None else dtype
        pattern, size = taps("template", template, dtype), extents("shape", shape)
        if pattern.ndim != 2 or len(size) != 2:
            raise ValueError(f"template and image: {pattern.ndim} and {len(size)} axes; they must have 2")
        super().__init__(pattern, size, dtype, {
            "metric": metric, "mode": mode, "search": search, "region": region_box(region, size, pattern.shape, mode),
            "neighbourhood": neighbourhood, "best": best, "map": map, "refine": refine, "threads": threads,
            "progress": reporter(progress, "matching")})

    def run(self, image: ArrayLike, *, copy: Optional[bool] = None) -> Match:
        """Finds the template in an image of the shape and the dtype that the object was made for."""
        return Match(*self._run(image, copy))

    def set_template(self, template: ArrayLike) -> None:
        """Copies the elements of another template of the same shape and type for later runs."""
        self._set_template(template)

    def set_region(self, region: Optional[Region]) -> None:
        """Sets another region, or none, for later runs."""
        self._set_region(region_box(region, *self._geometry))


def match(image: ArrayLike, template: ArrayLike, *, metric: str = "sad", mode: str = "valid",
          search: str = "exhaustive", region: Optional[Region] = None, neighbourhood: int = 0, best: bool = True,
          map: bool = False, refine: bool = False, copy: Optional[bool] = None, threads: int = 0,
          progress: Progress = None) -> Match:
    """Finds where `image` holds `template`. All parameters are those of `Matcher`.

    >>> import numpy, orvane
    >>> image = numpy.zeros((5, 6), numpy.float32)
    >>> image[2, 4] = 1
    >>> found = orvane.match(image, [[0, 0, 0], [0, 1, 0], [0, 0, 0]], metric="ssd", map=True)
    >>> found.location, found.map.shape
    ((2, 4), (3, 4))
    """
    array = as_array(image)
    return Matcher(template, array.shape, array.dtype, metric=metric, mode=mode, search=search, region=region,
                   neighbourhood=neighbourhood, best=best, map=map, refine=refine, threads=threads,
                   progress=progress).run(array, copy=copy)


def matches(image: ArrayLike, template: ArrayLike, count: int, *, distance: float = 1, refine: bool = False,
            metric: str = "sad", mode: str = "valid", region: Optional[Region] = None, copy: Optional[bool] = None,
            threads: int = 0, progress: Progress = None) -> List[Peak]:
    """The best matches of `template` in `image`, at least `distance` apart, the best one first.

    The choice is greedy: the best score, then the best one that is far enough from it, and so on. Of equal scores the
    first wins, row by row; scores of NaN are left out, so there can be fewer matches than `count`. All other
    parameters are those of `Matcher`.

    >>> import numpy, orvane
    >>> image = numpy.zeros((4, 9), numpy.uint8)
    >>> image[1, 2] = image[2, 6] = 200
    >>> [peak.location for peak in orvane.matches(image, image[:3, 1:4], 2, distance=3)]
    [(1, 2), (2, 6)]
    """
    array = as_array(image)
    finder = Matcher(template, array.shape, array.dtype, metric=metric, mode=mode, region=region, best=False, map=True,
                     threads=threads, progress=progress)
    return [Peak(*found) for found in finder._run_peaks(array, count, distance, refine, copy)]


def offset(before: float, at: float, after: float, greatest: bool) -> float:
    """Where between -0.5 and 0.5 a parabola through three scores has its extremum."""
    best = (at >= before and at >= after) if greatest else (at <= before and at <= after)
    curvature = before - 2 * at + after
    return (before - after) / (2 * curvature) if best and curvature != 0 and math.isfinite(curvature) else 0.0
