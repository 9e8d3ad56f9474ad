"""How objects travel to other processes, and are copied."""

from __future__ import annotations

from typing import Any


def rebuild(cls: Any, base: Any, arguments: tuple) -> Any:
    """An object of `cls` whose compiled part, of `base`, is made of `arguments`."""
    job = cls.__new__(cls)
    base.__init__(job, *arguments)
    return job
