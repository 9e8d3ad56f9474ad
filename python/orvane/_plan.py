"""Plans: how the outputs of a sliding window are cut into sectors."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Optional, Sequence, Tuple, Union

from . import _orvane
from ._options import Region, Shape, extents, region_box

Slices = Tuple[slice, ...]


@dataclass(frozen=True)
class Sector:
    """Outputs whose windows meet the edges of the input alike."""

    kind: str  #: "inside", "boundary" or "outside"
    positions: Slices
    before: Shape  #: axes in which its windows can fall before the first element
    after: Shape  #: axes in which they can pass the last one


@dataclass(frozen=True)
class Plan:
    """The sectors of a geometry, in the order in which they run."""

    centre: Shape  #: the window's element that lies on the output's position
    reach: int  #: 0: inside sectors alone; 1: boundary ones too; 2: outside ones too
    output: Slices  #: all positions
    sectors: Tuple[Sector, ...]


def plan(shape: Union[int, Sequence[int]], window: Union[int, Sequence[int]], *, mode: str = "same",
         pad: str = "replicate", reach: Optional[int] = None, region: Optional[Region] = None) -> Plan:
    """How the outputs for inputs of `shape`, of 1 to 4 axes, are cut into sectors.

    `mode`, `pad` and `region` are those of `Convolution`. Positions count from the input's first element.

    >>> import orvane
    >>> for sector in orvane.plan((6,), 3).sectors:
    ...     print(sector.kind, sector.positions, sector.before, sector.after)
    inside (slice(1, 5, None),) () ()
    boundary (slice(0, 1, None),) (0,) ()
    boundary (slice(5, 6, None),) () (0,)
    """
    size = extents("shape", shape)
    under = extents("window", window, len(size))
    found = _orvane.plan(size, under, mode, pad, reach, region_box(region, size, under, mode))
    return Plan(found["centre"], found["reach"], found["output"], tuple(Sector(*s) for s in found["sectors"]))
