# SPDX-License-Identifier: MIT
"""What a block does to each frequency."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

import numpy as np

from velmarind._types import Floats


class Response:
    """What a block does to each frequency, measured by running it.

    Attributes
    ----------
    frequency : array
        In hertz; as fractions of half the rate where no rate is known.
    gain : array
        What is left of an amplitude.
    phase : array
        In radians, by how much a wave is ahead.
    fs : float or None
    complex : array
        Both in one number.
    design : array of complex or None
        What the coefficients promise that the block publishes.

    Examples
    --------
    >>> import velmarind
    >>> block = velmarind.block("FilterButterworth", fs=100, Order=2, RelativeCutOffFreq="5 Hz")
    >>> response = block.response(points=10)
    >>> [f"{gain:.3f}" for gain in response.gain[:3]], response.frequency[1]
    (['1.000', '0.707', '0.231'], 5.0)
    """

    def __init__(self, measured: Mapping[str, Any], fs: float | None, title: str) -> None:
        self.fs = fs
        self.frequency: Floats = np.asarray(measured["frequency"]) * (1.0 if fs is None else fs / 2)
        self.complex = np.asarray(measured["sine"])
        self.impulse = np.asarray(measured["impulse"])
        self.design = measured["design"]
        self.gain: Floats = np.abs(self.complex)
        self.phase: Floats = np.angle(self.complex)
        self._title = title

    def plot(self, ax: Any = None) -> Any:
        """Draws gain over frequency into `ax`, or into new axes. The axes come back."""
        from velmarind import _plots

        ax = _plots.axes(ax)
        ax.plot(self.frequency, self.gain, label="measured")
        if self.design is not None:
            ax.plot(self.frequency, np.abs(self.design), "--", label="designed")
        ax.set_title(self._title, fontsize="medium")
        ax.set_ylabel("gain")
        return _plots.finish(ax, "frequency (Hz)" if self.fs else "frequency (of half the rate)")

    def __repr__(self) -> str:
        return f"Response of {self._title}: {len(self.frequency)} frequencies"
