"""Sliding-window filters with the same bits on every machine: convolution, medians and template matching.

Functions run once, objects are made once and run for each array. NumPy's last axis is the one whose neighbours are
neighbours in memory. Filters default to mode "same" and pad "replicate", matching to mode "valid".

>>> import numpy, orvane
>>> picture = numpy.zeros((5, 5), numpy.uint8)
>>> picture[2, 2] = 16
>>> orvane.convolve(picture, numpy.array([[1, 2, 1], [2, 4, 2], [1, 2, 1]]) / 16, dtype=numpy.uint8)
array([[0, 0, 0, 0, 0],
       [0, 1, 2, 1, 0],
       [0, 2, 4, 2, 0],
       [0, 1, 2, 1, 0],
       [0, 0, 0, 0, 0]], dtype=uint8)
"""

from ._filters import Convolution, Median, SeparableConvolution, convolve, correlate, median, separable
from ._fixed import (FixedArray, FixedConvolution, FixedMatcher, FixedMedian, FixedSeparableConvolution, FixedType,
                     Statistics, quantise)
from ._matching import Match, Matcher, Peak, match, matches
from ._orvane import Cancelled
from ._orvane import version as __version__
from ._plan import Plan, Sector, plan

__all__ = ["Cancelled", "Convolution", "FixedArray", "FixedConvolution", "FixedMatcher", "FixedMedian",
           "FixedSeparableConvolution", "FixedType", "Match", "Matcher", "Median", "Peak", "Plan", "Sector",
           "SeparableConvolution", "Statistics", "convolve", "correlate", "match", "matches", "median", "plan",
           "quantise", "separable"]
