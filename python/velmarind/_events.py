# SPDX-License-Identifier: MIT
"""Levels, periods and peaks."""

from __future__ import annotations

import sys
from typing import Any

import numpy as np

from velmarind._arrays import as_given, need_rate, number_of, rate_for
from velmarind._block import block
from velmarind._chains import (
    Step,
    at_rows,
    chain_graph,
    clock_of,
    column_of,
    one_channel,
    spells_of,
    tables_of,
    task,
)
from velmarind._graph import Graph
from velmarind._log import warn
from velmarind._results import Result

# The counter of periods ends there.
_MOST_PERIODS = 200


def _periods_graph(threshold: float = 0.0, tolerance: float = 0.0, most: int = _MOST_PERIODS) -> Graph:
    step = Step("count", "FilterPeriodCounter", _periods(threshold, tolerance, most))
    graph = chain_graph("count_periods", [step])
    graph.connect("count.Is Counting", "result.counting")
    graph.at(0, fire=["count.Reset"])
    return graph


def _periods(threshold: float, tolerance: float, most: int) -> dict[str, Any]:
    return {
        "Threshold": number_of(threshold, "threshold"),
        "Absolute Tolerance": number_of(tolerance, "tolerance"),
        "Nb Period": int(number_of(most, "most")),
    }


@task(_periods_graph)
def count_periods(
    x: Any, *, threshold: float = 0.0, tolerance: float = 0.0, most: int = _MOST_PERIODS
) -> Result:
    """Counts periods, as strides or cycles of a tremor: from one rise through a band to the next.

    Parameters
    ----------
    x : array, Series or DataFrame
        One channel, free of offset.
    threshold, tolerance : float
        The middle of the band and how far it reaches to each side: several times the noise, less than half
        the swing.
    most : int
        How many are counted, 200 at most.

    Returns
    -------
    Result
        `count`; `rows`, the row of each rise, from the one that begins the first period on; `counting`, True
        from there to the end of the last of `most`.

    Notes
    -----
    FilterPeriodCounter, whose Reset is fired before the first row.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> wave = -np.cos(2 * np.pi * 2 * np.arange(500) / 100)
    >>> found = velmarind.count_periods(wave, tolerance=0.5)
    >>> found.count, found.rows[:3].tolist()
    (9, [17, 67, 117])
    """
    values = one_channel(x, "count_periods")
    made = block("FilterPeriodCounter", **_periods(threshold, tolerance, most))
    made.fire("Reset")
    got = made.push_all(values, np.arange(len(values), dtype=np.float64))
    counting = np.reshape(got["Is Counting"][1], len(values)) > 0
    stamps, counts = got["Nb Period"]
    sent = np.reshape(counts, len(stamps))
    rows = np.empty(0, dtype=np.intp)
    if counting.any():
        begin = int(np.flatnonzero(sent == 0)[-1])  # a 0 for every row up to the first rise, and one at it
        rows = stamps[begin:].astype(np.intp)
    count = max(len(rows) - 1, 0)
    if count >= most and len(values) > rows[-1] + 1:
        warn(f"found {most} periods by row {rows[-1]}, where counting ends; more may follow")
    flags = as_given(counting, None, column_of(x), "counting")
    return Result({"count": count, "rows": rows, "counting": flags})


def _levels_graph(
    above: float = 1.0, below: float | None = None, least: float = 0.0, bridge: float = 0.0
) -> Graph:
    graph = Graph("detect_levels")
    graph.add("x", "MemorySource")
    high = number_of(above, "above")
    low = high if below is None else number_of(below, "below")
    graph.add("level", "FilterHysteresis", HighThreshold=high, LowThreshold=low)
    graph.add("spells", "Durations", Least=number_of(least, "least"), Gap=number_of(bridge, "bridge"))
    graph.add("result", "MemorySink")
    graph.add("table", "MemorySink")
    graph.connect("x.x", "level.input")
    graph.connect("level.output", "spells.in")
    graph.connect("level.output", "result.level")
    graph.connect("spells.out", "table.spell")
    return graph


@task(_levels_graph)
def detect_levels(
    x: Any,
    *,
    above: float,
    below: float | None = None,
    least: float = 0.0,
    bridge: float = 0.0,
    fs: Any = None,
) -> Result:
    """Finds where a signal is up: it rises above one threshold, and falls only below another.

    Parameters
    ----------
    x : array, Series or DataFrame
        One channel, as a strength or a load.
    above, below : float
        Where it is up, and where it is no more; without `below` the same.
    least, bridge : float
        Seconds: what lasts less isn't told among the spells, and a pause as long as that or shorter ends
        none.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.

    Returns
    -------
    Result
        `level`, True where it is up, and `spells`, a row for each time it was: begin, end and length in
        seconds. What is still up when the rows end ends with the last of them.

    Notes
    -----
    FilterHysteresis, then Durations.

    Examples
    --------
    >>> import velmarind
    >>> found = velmarind.detect_levels([0, 2, 5, 3, 2, 0, 0], above=4, below=1, fs=10)
    >>> found.level.tolist(), found.spells.tolist()
    ([False, False, True, True, True, False, False], [[0.2, 0.5, 0.3]])
    """
    rate = need_rate(x, fs, "detect_levels")
    values = one_channel(x, "detect_levels")
    times = clock_of(x, len(values), rate)
    got = tables_of(_levels_graph(above, below, least, bridge), {"x": {"x": values, "t": times}})
    level = at_rows(got["result"], times)[:, 0] > 0
    flags = as_given(level, times, column_of(x), "level")
    return Result({"level": flags, "spells": spells_of(got["table"], x)}, {"level": times})


@task(lambda height=None, prominence=None, interval=None: chain_graph(
    "find_peaks", [Step("peaks", "Peaks", _peaks(height, prominence, interval))]))
def find_peaks(
    x: Any,
    *,
    height: float | None = None,
    prominence: float | None = None,
    interval: float | None = None,
    fs: Any = None,
) -> tuple[Any, dict[str, Any]]:
    """Finds peaks, as steps in an acceleration.

    Parameters
    ----------
    x : array, Series or DataFrame
        One channel.
    height : float, optional
        The least value of a peak.
    prominence : float, optional
        How far the course comes down on both sides, before something higher or an end, at least.
    interval : float, optional
        Seconds that two peaks are apart at least; of nearer ones the higher stays.
    fs : float, optional
        Rows a second; needed for `interval` unless `x` has a time index.

    Returns
    -------
    peaks : array
        Their rows.
    properties : dict
        `peak_heights`, and `peak_times` in seconds where a rate is known.

    Notes
    -----
    The block Peaks. By `height` and `prominence` it finds what `scipy.signal.find_peaks` does, but of a flat
    top the first row and not the middle; a peak needs rows behind it that decide, those of `interval` too.
    `distance`, which scipy counts in rows, isn't taken: `interval` is in seconds, and each peak is compared
    with the one that stayed before it.

    Examples
    --------
    >>> import velmarind
    >>> peaks, found = velmarind.find_peaks([0, 1, 3, 1.5, 1.75, 0, 2.5, 0.5, 0], prominence=1)
    >>> peaks.tolist(), found["peak_heights"].tolist()
    ([2, 6], [3.0, 2.5])
    """
    rate = need_rate(x, fs, "interval") if interval is not None else rate_for(x, fs)
    values = one_channel(x, "find_peaks")
    times = np.arange(len(values), dtype=np.float64) if rate is None else clock_of(x, len(values), rate)
    got = block("Peaks", **_peaks(height, prominence, interval)).run_all(values, times)["out"][1]
    found = np.reshape(np.asarray(got, dtype=np.float64), (-1, 2))
    properties = {"peak_heights": found[:, 1].copy()}
    if rate is not None:
        properties["peak_times"] = found[:, 0].copy()
    rows = np.searchsorted(times, found[:, 0])
    for number in np.flatnonzero(values[rows] != found[:, 1]):  # of rows with one stamp not the first
        same = np.flatnonzero(times == found[number, 0])
        rows[number] = same[values[same] == found[number, 1]][0]
    return rows, properties


def _peaks(height: float | None, prominence: float | None, interval: float | None) -> dict[str, Any]:
    return {
        "Height": -sys.float_info.max if height is None else number_of(height, "height"),
        "Prominence": 0.0 if prominence is None else number_of(prominence, "prominence"),
        "Distance": 0.0 if interval is None else number_of(interval, "interval"),
    }
