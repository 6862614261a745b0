# SPDX-License-Identifier: MIT
"""Where a turn rate trembles, and how fast."""

from __future__ import annotations

import math
from typing import Any

import numpy as np

from velmarind._arrays import as_given, need_rate
from velmarind._chains import at_rows, clock_of, column_of, one_channel, spells_of, tables_of, task
from velmarind._errors import Error
from velmarind._filters import resample
from velmarind._graph import Graph
from velmarind._results import Result

# The graph is told for that many rows a second; rows of another rate are made into these.
_RATE = 100.0
_FRAME, _HOP = 300, 200  # rows of a frame, 3 s, and from one to the next
_FIRST, _LAST = 10, 27   # values of a spectrum that lie in the band: 3.3 to 9 Hz, a third of a hertz each
_HERTZ = _RATE / (2 * math.pi)  # of radians a row
_HIGH_PASSES = 6


def _graph(least: float = 0.002, steady: float = 0.28, going: float = 0.23) -> Graph:
    graph = Graph("track_tremor")
    graph.add("x", "MemorySource")
    graph.add("frames", "MemorySource")
    _add_band(graph)
    _add_tracker(graph)
    _add_decision(graph, least, steady, going)
    _add_begin(graph)
    graph.add("spells", "Durations", Least=1.0, Gap=1.0)
    graph.add("result", "MemorySink")
    graph.add("table", "MemorySink")
    for sender, receiver in (
        ("tremor", "spells"),
        ("spells", "table.spell"),
        ("tremor", "result.tremor"),
        ("hertz", "result.frequency"),
        ("strength.out", "result.strength"),
    ):
        graph.connect(sender, receiver)
    return graph


def _add_band(graph: Graph) -> None:
    """Six gentle slopes make a steep one that doesn't ring when a reaching movement begins."""
    sender = "x.turn"
    for number in range(1, _HIGH_PASSES + 1):
        settings: dict[str, Any] = {"Mode": "HighPass", "Order": 1, "LowRelativeCutOffFreq": "3 Hz"}
        graph.add(f"high{number}", "FilterButterworthV2", **settings)
        graph.connect(sender, f"high{number}.in")
        sender = f"high{number}.out"
    graph.add("band", "FilterButterworth", Order=4, RelativeCutOffFreq="9 Hz")
    graph.connect(sender, "band.in")


def _add_tracker(graph: Graph) -> None:
    """The tracker wants a signal of about 1, whatever the tremor's size."""
    graph.add("strength", "MovingStatistics", Kind="RMS", Samples="1 s")
    graph.add("track", "FilterWFLC", Order=1, Mu=0.05, Mu0=0.001, MuB=0.0, Wf0="6 Hz")
    graph.add("hertz", "FilterGain", Gain=_HERTZ)
    graph.connect("band", "strength")
    graph.connect("strength.scaled", "track.Input")
    graph.connect("track.FreqWeight", "hertz")


def _add_decision(graph: Graph, least: float, steady: float, going: float) -> None:
    """Tremor is what is strong enough, steady enough to be tracked, and at a frequency that tremors have."""
    graph.add("strong", "FilterThreshold", Threshold=least)
    graph.add("misfit", "MovingStatistics", Kind="RMS", Samples="3 s", OnlyFull=True)
    graph.add("explained", "Affine", Matrix=[[-1.0]], Offset=[[1.0]])
    graph.add("steady", "FilterHysteresis", HighThreshold=steady, LowThreshold=going)
    graph.add("above", "FilterThreshold", Threshold=4.0)
    graph.add("below", "FilterThreshold", Mode="Low Level", Threshold=8.7)
    for name in ("and1", "and2", "tremor"):
        graph.add(name, "Logic", Operation="And")
    for sender, receiver in (
        ("track.Error", "misfit"),
        ("strength.out", "strong"),
        ("misfit.out", "explained"),
        ("explained", "steady.input"),
        ("hertz", "above"),
        ("hertz", "below"),
        ("strong", "and1.b"),
        ("steady", "and1.a"),
        ("above", "and2.b"),
        ("below", "and2.a"),
        ("and1", "tremor.b"),
        ("and2", "tremor.a"),
    ):
        graph.connect(sender, receiver)


def _add_begin(graph: Graph) -> None:
    """Where there is none the tracker begins anew every two seconds, at the highest peak of the spectrum in
    the band."""
    step = _RATE / _FRAME
    graph.add("taper", "FilterHanningWindow")
    graph.add("spectrum", "FilterFFT", Pause=False)
    graph.add("inBand", "FilterAbsoluteErode", TopErode=_FIRST, BottomErode=_FRAME // 2 - 1 - _LAST)
    graph.add("peak", "Peaks", Axis="Frequency", Step=step, Most=1)
    graph.add("highest", "Columns", Pick=[[0]])
    graph.add("radians", "Affine", Matrix=[[1 / _HERTZ]], Offset=[[_FIRST * step / _HERTZ]])
    graph.add("calm", "Logic", Operation="Not")
    graph.add("again", "Logic", Operation="And")
    for sender, receiver in (
        ("frames.turn", "taper"),
        ("taper", "spectrum"),
        ("spectrum", "inBand"),
        ("inBand", "peak"),
        ("peak", "highest"),
        ("highest", "radians"),
        ("radians", "track.Wf0"),
        ("tremor", "calm.a"),
        ("calm", "again.b"),
        ("highest", "again.a"),
        ("again", "track.Reset"),
    ):
        graph.connect(sender, receiver)


@task(_graph)
def track_tremor(
    x: Any, *, fs: Any = None, least: float = 0.002, steady: float = 0.28, going: float = 0.23
) -> Result:
    """Says where a turn rate trembles, and how fast, also under voluntary movement a hundred times as strong.

    Parameters
    ----------
    x : array, Series or DataFrame
        One turn rate, three seconds at least. Rows of another rate than 100 a second are made into these by
        `resample`, and results have a row for each of them.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.
    least : float
        What is weaker is no tremor, in the unit of `x`: some three times what the sensor shows on a table.
        0.002 is for rad/s.
    steady, going : float
        How much of the movement in the band has to be one steady tremor for one to begin, and to go on, from
        0 to 1.

    Returns
    -------
    Result
        `tremor`, True where it trembles; `frequency` in hertz, which counts there alone; `strength`, the
        movement in the band of tremors as RMS of the last second; `spells`, a row for each time it trembled:
        begin, end and length in seconds.

    Notes
    -----
    The graph of examples/tremor-real.yaml; docs/motion.md tells how it goes about it, how well it does, and
    where it fails.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> t = np.arange(2000) / 100
    >>> turn = 0.3 * np.sin(2 * np.pi * 5 * t) + np.random.default_rng(1).normal(0, 0.003, 2000)
    >>> found = velmarind.track_tremor(turn, fs=100)
    >>> bool(found.tremor[1000:].all()), float(found.frequency[1000:].mean().round(1))
    (True, 5.0)
    """
    rate = need_rate(x, fs, "track_tremor")
    values = one_channel(x, "track_tremor")
    if len(values) < 2:
        raise Error(f"found {len(values)} rows; expected three seconds of them at least",
                    found=f"{len(values)} rows", expected="three seconds of rows")
    times = clock_of(x, len(values), rate)
    like = column_of(x)
    if abs(rate / _RATE - 1) > 1e-6:
        values, times = resample(values, rate=_RATE, t=times)
    data: dict[str, Any] = {"x": {"turn": values, "t": times}}
    count = max((len(values) - _FRAME) // _HOP + 1, 0)
    frames = [values[begin : begin + _FRAME] for begin in range(0, count * _HOP, _HOP)]
    ends = np.arange(count) * _HOP + _FRAME - 1
    data["frames"] = {"turn": np.reshape(frames, (count, _FRAME, 1)), "t": times[ends]}
    got = tables_of(_graph(least, steady, going), data)
    table = at_rows(got["result"], times)
    columns = list(got["result"]["columns"])
    found = {name: table[:, columns.index(f"{name}[0]")] for name in ("tremor", "frequency", "strength")}
    results = {name: as_given(column, times, like, name) for name, column in found.items()}
    results["tremor"] = as_given(found["tremor"] > 0, times, like, "tremor")
    results["spells"] = spells_of(got["table"], x)
    return Result(results, dict.fromkeys(found, times))
