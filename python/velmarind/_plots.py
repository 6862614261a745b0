# SPDX-License-Identifier: MIT
"""Pictures, by Matplotlib, which is imported when the first one is drawn."""

from __future__ import annotations

from typing import Any

import numpy as np

from velmarind._arrays import is_pandas
from velmarind._errors import Error
from velmarind._types import Floats


def pyplot() -> Any:
    try:
        import matplotlib.pyplot
    except ImportError as error:
        raise Error(
            "found no Matplotlib; expected it for pictures; install it (python3-matplotlib), or write what"
            " you have with velmarind.write and draw it with 'quillmere plot'",
            found="no Matplotlib",
        ) from error
    return matplotlib.pyplot


def axes(ax: Any) -> Any:
    """The axes that are given, or new ones."""
    return pyplot().subplots(layout="constrained")[1] if ax is None else ax


def draw(ax: Any, value: Any, times: Floats | None, label: str) -> None:
    """Lines over time for each channel; what has other shapes isn't drawn."""
    if is_pandas(value):
        frame = value.to_frame() if value.ndim == 1 else value
        for number, column in enumerate(frame.columns):
            ax.plot(frame.index, frame.iloc[:, number].to_numpy(), label=str(column), linewidth=1)
        return
    values = np.asarray(value) if not isinstance(value, list) else np.empty((0, 0, 0))
    if values.ndim not in (1, 2) or len(values) == 0:
        return
    over = times if times is not None and len(times) == len(values) else np.arange(len(values))
    columns = values[:, None] if values.ndim == 1 else values
    for number in range(columns.shape[1]):
        name = label if columns.shape[1] == 1 else f"{label}[{number}]"
        ax.plot(over, columns[:, number], label=name, linewidth=1)


def finish(ax: Any, over: str = "time (s)") -> Any:
    if not ax.get_xlabel():
        ax.set_xlabel(over)
    if ax.get_legend_handles_labels()[1]:
        ax.legend(loc="best", fontsize="small")
    return ax
