# SPDX-License-Identifier: MIT
"""Filters of whole recordings, and even rates."""

from __future__ import annotations

import math
from typing import Any

import numpy as np

from velmarind._arrays import need_rate, number_of, stated_times, times_of
from velmarind._block import block
from velmarind._chains import SHOWN_RATE, Step, chain_graph, hertz, run_chain, task
from velmarind._errors import Error


def _low(cutoff: Any, order: int, id: str = "smooth", name: str = "cutoff") -> list[Step]:
    settings = {"Order": order, "RelativeCutOffFreq": hertz(cutoff, name), "Mode": "LowPass"}
    return [Step(id, "FilterButterworth", settings)]


def _high(cutoff: float, order: int, fs: float, name: str = "cutoff") -> list[Step]:
    """First-order high-passes in a row, which have half the power together where `cutoff` is."""
    if not (isinstance(order, (int, np.integer)) and 1 <= order <= 10):
        raise Error(f"found order {order!r}; expected a whole number from 1 to 10", found=repr(order),
                    expected="a whole number from 1 to 10")
    single = number_of(cutoff, name)
    if order > 1 and 0 < single < fs / 2:
        single = fs / math.pi * math.atan(math.tan(math.pi * single / fs) * math.sqrt(2 ** (1 / order) - 1))
    settings = {"Order": 1, "RelativeCutOffFreq": hertz(single), "Mode": "HiPass"}
    return [Step(f"high{number + 1}" if order > 1 else "high", "FilterButterworth", dict(settings))
            for number in range(order)]


@task(lambda cutoff=5.0, order=4: chain_graph("lowpass", _low(cutoff, order)))
def lowpass(x: Any, *, cutoff: float, fs: Any = None, order: int = 4) -> Any:
    """Smooths by a Butterworth low-pass, forward only, which starts in the steady state of the first row.

    Parameters
    ----------
    x : array, Series or DataFrame
        Time runs down the rows; each channel is smoothed by itself.
    cutoff : float
        Hertz, where half the power is left.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.
    order : int
        0 to 10: 6 dB an octave for each.

    Returns
    -------
    as `x`
        It lags behind by some 0.23 s (order 2) or 0.42 s (order 4) over the cut-off in hertz.

    Notes
    -----
    FilterButterworth. The same as `scipy.signal.sosfilt` of `butter(order, cutoff, output="sos", fs=fs)` that
    begins with `sosfilt_zi` times the first row.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> t = np.arange(500) / 100
    >>> slow, fast = np.sin(2 * np.pi * 1 * t), np.sin(2 * np.pi * 20 * t)
    >>> calm = velmarind.lowpass(slow + fast, cutoff=5, fs=100)
    >>> float(np.abs(calm[200:]).max().round(1))
    1.0
    """
    return run_chain(x, need_rate(x, fs, "lowpass"), _low(cutoff, order))


@task(lambda cutoff=1.0, order=1, fs=SHOWN_RATE: chain_graph("highpass", _high(cutoff, order, fs)))
def highpass(x: Any, *, cutoff: float, fs: Any = None, order: int = 1) -> Any:
    """Takes away what is slow, as offset, drift or posture; starts in the steady state of the first row.

    Parameters
    ----------
    x : array, Series or DataFrame
        Time runs down the rows.
    cutoff : float
        Hertz, where half the power is left.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.
    order : int
        1 to 10: so many first-order high-passes in a row, 6 dB an octave each.

    Returns
    -------
    as `x`

    Notes
    -----
    FilterButterworth with HiPass and order 1, `order` times, each with a cut-off that gives half the power at
    `cutoff` for all together. At order 1 that is `scipy.signal.butter(1, cutoff, "highpass", fs=fs)`; from
    order 2 on it is no Butterworth high-pass but a gentler one, which doesn't ring.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> bool(np.allclose(velmarind.highpass(np.full(10, 9.81), cutoff=0.5, fs=100), 0, atol=1e-12))
    True
    """
    rate = need_rate(x, fs, "highpass")
    return run_chain(x, rate, _high(cutoff, order, rate))


def _band(low: float, high: float, order: int, fs: float) -> list[Step]:
    if not number_of(low, "low") < number_of(high, "high"):
        raise Error(f"found a band from {low} to {high} Hz; expected low below high; exchange them",
                    found=f"{low} to {high} Hz", expected="low below high")
    return [*_high(low, order, fs, "low"), *_low(high, order, "low", "high")]


@task(lambda low=3.0, high=12.0, order=2, fs=SHOWN_RATE: chain_graph("bandpass", _band(low, high, order, fs)))
def bandpass(x: Any, *, low: float, high: float, fs: Any = None, order: int = 2) -> Any:
    """Keeps a band of frequencies: `highpass` at the low edge, then `lowpass` at the high one.

    Parameters
    ----------
    x : array, Series or DataFrame
        Time runs down the rows.
    low, high : float
        The edges in hertz.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.
    order : int
        Of either edge, 1 to 10.

    Returns
    -------
    as `x`

    Notes
    -----
    In place of the block FilterBandPass, whose low edge is no edge from order 2 on.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> t = np.arange(1000) / 100
    >>> band = velmarind.bandpass(9.81 + np.sin(2 * np.pi * 6 * t), low=3, high=12, fs=100)
    >>> float(band[500:].max().round(1))
    0.9
    """
    rate = need_rate(x, fs, "bandpass")
    return run_chain(x, rate, _band(low, high, order, rate))


@task(lambda rate=50.0, hold=False, lowpass=True, gap=1.0: chain_graph(
    "resample", [Step("even", "Resample", _even(rate, hold, lowpass, gap))]))
def resample(x: Any, *, rate: float, fs: Any = None, t: Any = None, hold: bool = False, lowpass: bool = True,
             gap: float = 1.0) -> Any:
    """Brings rows to an even rate, from any times.

    Parameters
    ----------
    x : array, Series or DataFrame
        Time runs down the rows. A time index may be uneven.
    rate : float
        Rows a second that come out.
    fs : float, optional
        Rows a second that go in, where `x` has no time index.
    t : array, optional
        Their times in seconds, in place of `fs`.
    hold : bool
        Whether a row is the newest that isn't later (for levels and labels) in place of one on the line
        between two.
    lowpass : bool
        Whether what the new rate can't hold is taken off on the way down.
    gap : float
        Seconds; nothing is made across a longer distance.

    Returns
    -------
    as `x`
        From the time of the first row on. Of an array with `t` the rows and their times, as
        `scipy.signal.resample` gives them back.

    Notes
    -----
    The block Resample. What is below 0.4 of the new rate stays within 0.1 dB, what is beyond half of it is 60
    dB lower.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> velmarind.resample(np.array([0.0, 1.0, 2.0]), fs=1, rate=2)
    array([0. , 0.5, 1. , 1.5, 2. ])
    """
    times = stated_times(t) if t is not None else times_of(x)
    if times is None:
        times = np.arange(len(x)) / need_rate(x, fs, "resample")
    got = block("Resample", **_even(rate, hold, lowpass, gap)).results(x, times)
    return (got["out"], got.times["out"]) if t is not None else got["out"]


def _even(rate: float, hold: bool, lowpass: bool, gap: float) -> dict[str, Any]:
    mode = "Hold" if hold else "Linear"
    numbers = {"Rate": number_of(rate, "rate"), "Gap": number_of(gap, "gap")}
    return {**numbers, "Mode": mode, "LowPass": bool(lowpass)}
