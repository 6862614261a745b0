# SPDX-License-Identifier: MIT
"""Several things that come of one call, by name."""

from __future__ import annotations

from collections.abc import Iterator, Mapping
from typing import Any

import numpy as np

from velmarind._names import identifier, literal, unknown
from velmarind._types import Floats


class Result(Mapping[str, Any]):
    """What came of a call, by name: as a mapping by literal names, as attributes by identifiers.

    Attributes
    ----------
    times : dict
        For each name the times of its samples in seconds, where they have any.

    Examples
    --------
    >>> import velmarind
    >>> count = velmarind.block("FilterPeriodCounter", Nb_Period=2)
    >>> result = count([-1.0, 1.0, -1.0, 1.0])
    >>> list(result), result.Is_Counting is result["Is Counting"]
    (['Nb Period', 'Is Counting'], True)
    """

    def __init__(self, values: Mapping[str, Any], times: Mapping[str, Floats] | None = None) -> None:
        self._values = dict(values)
        self.times = dict(times or {})

    def __getitem__(self, name: str) -> Any:
        found = literal(name, self._values)
        if found is None:
            raise KeyError(str(unknown("result", name, self._values)))
        return self._values[found]

    def __getattr__(self, name: str) -> Any:
        if name.startswith("__") or name == "_values":
            raise AttributeError(name)
        found = literal(name, self._values)
        if found is None:
            raise AttributeError(str(unknown("result", name, map(identifier, self._values))))
        return self._values[found]

    def __iter__(self) -> Iterator[str]:
        return iter(self._values)

    def __len__(self) -> int:
        return len(self._values)

    def __dir__(self) -> list[str]:
        return [*super().__dir__(), *map(identifier, self._values)]

    def __repr__(self) -> str:
        return "\n".join(["Result", *(f"  {name}: {_short(value)}" for name, value in self._values.items())])

    def plot(self, ax: Any = None) -> Any:
        """Draws what can be drawn over time into `ax`, or into new axes. The axes come back."""
        from velmarind import _plots

        ax = _plots.axes(ax)
        for name, value in self._values.items():
            if self.times and name not in self.times:
                continue  # a table of something else
            _plots.draw(ax, value, self.times.get(name), name)
        return _plots.finish(ax)


def _short(value: Any) -> str:
    if isinstance(value, (int, float, bool, str, np.generic)):
        return str(value)
    if isinstance(value, list):
        return f"{len(value)} samples of several shapes"
    shape = getattr(value, "shape", None)
    return f"{type(value).__name__} of {' by '.join(map(str, shape))}" if shape is not None else str(value)
