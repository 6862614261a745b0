# SPDX-License-Identifier: MIT
"""Spectra of whole recordings or of frames of them."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

import numpy as np

from velmarind._arrays import array_of, is_pandas, need_rate, number_of, require_upright
from velmarind._chains import Step, chain_graph, clock_of, run_chain, task
from velmarind._errors import Error
from velmarind._types import Floats
from velmarind._results import Result

# What a window leaves of a sinusoid, which a gain puts back (docs/spectra.md).
_WINDOWS = {
    "hanning": ("FilterHanningWindow", 1 / 0.5),
    "hamming": ("FilterHammingWindow", 1 / 0.54),
    "blackman": ("FilterBlackmanWindow", 1 / 0.42),
}
# A transform takes rows times the largest prime factor of their number: more than seconds' worth is refused.
_MOST_WORK = 2e9


class Spectrum(Result):
    """Amplitudes over frequency: `frequency`, `amplitude` and, of frames, `time`."""

    def __init__(
        self, frequency: Floats, amplitude: Any, time: Floats | None, names: list[Any] | None
    ) -> None:
        values: dict[str, Any] = {"frequency": frequency, "amplitude": amplitude}
        if time is not None:
            values["time"] = time
        super().__init__(values)
        self._columns = names

    def plot(self, ax: Any = None) -> Any:
        """Draws amplitudes over frequency, of frames as a map over time, of the first channel. The axes come
        back."""
        from velmarind import _plots

        ax = _plots.axes(ax)
        frequency, amplitude = self["frequency"], np.asarray(self["amplitude"])
        if "time" in self:
            one = amplitude if amplitude.ndim == 2 else amplitude[:, :, 0]
            mesh = ax.pcolormesh(self["time"], frequency[1:], one[:, 1:].T, shading="nearest", cmap="cividis")
            ax.figure.colorbar(mesh, ax=ax, label="amplitude")
            ax.set_ylabel("frequency (Hz)")
            return _plots.finish(ax)
        columns = amplitude[:, None] if amplitude.ndim == 1 else amplitude
        names = self._columns or [str(number) for number in range(columns.shape[1])]
        for number, name in enumerate(names):
            ax.plot(frequency, columns[:, number], linewidth=1, label=str(name) if len(names) > 1 else None)
        ax.set_ylabel("amplitude")
        return _plots.finish(ax, "frequency (Hz)")


def _frames_of(columns: Floats, rate: float, frame: float | None, hop: float | None) -> tuple[Floats, Any]:
    """Frames (frames, rows, channels), and the number of the last row of each."""
    count = len(columns)
    rows = count if frame is None else round(number_of(frame, "frame") * rate)
    step = max(rows // 2, 1) if hop is None else round(number_of(hop, "hop") * rate)
    if rows < 2 or step < 1 or count < rows:
        raise Error(
            f"found {count} rows for frames of {rows}; expected 2 rows a frame at least, and as many as a"
            " frame has; choose another frame or hop", found=f"{count} rows", expected="rows for a frame")
    begins = np.arange(0, count - rows + 1, step)
    windows = np.lib.stride_tricks.sliding_window_view(columns, rows, axis=0)[begins]
    return np.moveaxis(windows, 2, 1), begins + rows - 1


def _require_factors(rows: int) -> None:
    largest, rest, factor = 1, rows, 2
    while factor * factor <= rest:
        while rest % factor == 0:
            largest, rest = factor, rest // factor
        factor += 1
    largest = max(largest, rest)
    if float(rows) * largest > _MOST_WORK:
        raise Error(
            f"found {rows} rows, whose largest prime factor is {largest}, so that a transform takes hours;"
            " expected numbers with small factors; give a frame in seconds, or leave out some rows",
            found=f"{rows} rows", expected="small prime factors")


def _spectrum_steps(window: str | None) -> list[Step]:
    steps = []
    if window is not None:
        if window not in _WINDOWS:
            raise Error(f"found window {window!r}; expected one of {', '.join(_WINDOWS)}, or None",
                        found=repr(window), expected=", ".join(_WINDOWS))
        type_name, gain = _WINDOWS[window]
        steps = [Step("taper", type_name), Step("regain", "FilterGain", {"Gain": gain})]
    return [*steps, Step("spectrum", "FilterFFT", {"Pause": False})]


@task(lambda window="hanning": chain_graph("spectrum", _spectrum_steps(window)))
def spectrum(x: Any, *, fs: Any = None, window: str | None = "hanning", frame: float | None = None,
             hop: float | None = None) -> Spectrum:
    """Amplitudes over frequency: a sinusoid of amplitude a reads a.

    Parameters
    ----------
    x : array, Series or DataFrame
        Time runs down the rows; each channel has a spectrum.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.
    window : {'hanning', 'hamming', 'blackman'} or None
        What fades the frame at its ends.
    frame, hop : float, optional
        Seconds of a frame, and from the begin of one to the begin of the next (without it half a frame).
        Without `frame` all of `x` is one.

    Returns
    -------
    Spectrum
        `frequency` in hertz and `amplitude`; with `frame` also `time`, the last row of each frame in seconds,
        and amplitudes with a row for each frame.

    Notes
    -----
    A window, a FilterGain that puts back what it takes of a sinusoid, and FilterFFT. Amplitude k is
    `2 * abs(numpy.fft.rfft(x * w))[k] / n` over the mean of the window w as docs/spectra.md has it; of an odd
    number of rows the last is left out. Amplitude 0 is the mean and what alternates from row to row in one:
    sqrt(mean² + half²).

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> t = np.arange(400) / 100
    >>> found = velmarind.spectrum(3 * np.sin(2 * np.pi * 6 * t), fs=100, window=None)
    >>> k = int(found.amplitude.argmax())
    >>> float(found.frequency[k]), float(found.amplitude[k].round(6))
    (6.0, 3.0)
    """
    rate = need_rate(x, fs, "spectrum")
    values = array_of(x)
    require_upright(values)
    columns = values[:, None] if values.ndim == 1 else values
    frames, ends = _frames_of(columns, rate, frame, hop)
    rows = frames.shape[1] - frames.shape[1] % 2
    _require_factors(rows)
    steps = _spectrum_steps(window)
    # No block of these remembers a frame, so those of all channels go in one behind the other.
    queue = np.ascontiguousarray(np.moveaxis(frames, 2, 0)).reshape(-1, frames.shape[1], 1)
    amplitudes = np.reshape(run_chain(queue, None, steps), (columns.shape[1], len(frames), rows // 2))
    amplitudes = np.moveaxis(amplitudes, 0, -1)
    if values.ndim == 1:
        amplitudes = amplitudes[..., 0]
    times = clock_of(x, len(columns), rate)
    names = list(x.columns) if is_pandas(x) and x.ndim == 2 else None
    return Spectrum(np.arange(rows // 2) * rate / rows, amplitudes[0] if frame is None else amplitudes,
                    times[ends] if frame is not None else None, names)
