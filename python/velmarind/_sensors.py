# SPDX-License-Identifier: MIT
"""What motion sensors tell: rest, limits, directions."""

from __future__ import annotations

from typing import Any

import numpy as np

from velmarind._arrays import array_of, as_given, need_rate, number_of, require_upright
from velmarind._block import block
from velmarind._chains import SHOWN_RATE, Step, chain_graph, clock_of, column_of, run_chain, seconds, task
from velmarind._errors import Error
from velmarind._graph import Graph
from velmarind._results import Result


@task(
    lambda low=-2.0, high=2.0, steady=None: chain_graph("detect_saturation", _saturation(low, high, steady))
)
def detect_saturation(x: Any, *, low: float, high: float, steady: float | None = None, fs: Any = None) -> Any:
    """Flags what is at a sensor's limits.

    Parameters
    ----------
    x : array, Series or DataFrame
        As the sensor sent it, unfiltered.
    low, high : float
        Values at them or beyond are flagged.
    steady : float, optional
        Seconds that a value has to stand still at a limit, which tells a stuck sensor from a strong movement;
        without it each value counts by itself.
    fs : float, optional
        Rows a second; needed for `steady` unless `x` has a time index.

    Returns
    -------
    as `x`, of bool

    Notes
    -----
    FilterSaturationDetector, which flags not-a-number too; with `steady` FilterSmartSaturationDetector, which
    doesn't, and misses the first rows of each run.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> velmarind.detect_saturation(np.array([0.5, 2.0, -2.0, 1.9]), low=-2, high=2)
    array([False,  True,  True, False])
    """
    rate = need_rate(x, fs, "steady") if steady is not None else None
    return run_chain(x, rate, _saturation(low, high, steady)) > 0


def _saturation(low: float, high: float, steady: float | None) -> list[Step]:
    if steady is None:
        limits = {"Threshold Low": number_of(low, "low"), "Threshold High": number_of(high, "high")}
        return [Step("limit", "FilterSaturationDetector", limits)]
    return [Step("stuck", "FilterSmartSaturationDetector",
                 {"MinThreshold": number_of(low, "low"), "MaxThreshold": number_of(high, "high"),
                  "SteadySamples": seconds(steady, "steady")})]


def _rest_graph(window: float = 0.5, noise: float = 1.0, threshold: float = 5.0) -> Graph:
    graph = Graph("detect_rest")
    graph.add("x", "MemorySource")
    graph.add("rest", "FilterFlagStatic", **_rest_settings(window, noise, threshold))
    graph.add("result", "MemorySink")
    graph.connect("x.gyro", "rest.3g")
    graph.connect("x.bias", "rest.3bias")
    graph.connect("rest.FlagStatic", "result.rest")
    graph.connect("rest.StdDev", "result.noise")
    return graph


def _rest_settings(window: float, noise: float, threshold: float) -> dict[str, Any]:
    return {
        "Windows Size": seconds(window, "window"),
        "StdDevIni": number_of(noise, "noise"),
        "FlagThreshold": number_of(threshold, "threshold"),
    }


@task(_rest_graph)
def detect_rest(
    x: Any,
    *,
    fs: Any = None,
    bias: Any = (0.0, 0.0, 0.0),
    window: float = 0.5,
    noise: float = 1.0,
    threshold: float = 5.0,
) -> Result:
    """Tells where a gyroscope is at rest.

    Parameters
    ----------
    x : array or DataFrame
        Three turn rates a row. The recording should begin with a second of rest.
    fs : float, optional
        Rows a second; needed unless `x` has a time index.
    bias : three floats
        The gyroscope's offset, in the unit of `x`.
    window : float
        Seconds over which the noise is measured.
    noise : float
        More than the noise can be, in the unit of `x`: 1 does in rad/s, 40 in degrees a second.
    threshold : float
        How many times the noise still counts as rest.

    Returns
    -------
    Result
        `rest`, True where it rests, and `noise`, the deviation of each axis that has been learned so far. Of
        the first row nothing is known: False, and not-a-number.

    Notes
    -----
    FilterFlagStatic, whose page tells how it learns.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> turn = np.random.default_rng(1).normal(0, 0.01, (400, 3))
    >>> turn[200:300, 0] += np.sin(np.arange(100) / 5) + 2
    >>> rest = velmarind.detect_rest(turn, fs=100).rest
    >>> int(rest[100:200].sum()), int(rest[200:300].sum())
    (100, 0)
    """
    rate = need_rate(x, fs, "detect_rest")
    values = _three(x, "x")
    times = clock_of(x, len(values), rate)
    made = block("FilterFlagStatic", fs=rate, **_rest_settings(window, noise, threshold))
    offset = np.ascontiguousarray(np.broadcast_to(array_of(bias), values.shape))
    got = made.run_all(values, times, {"3bias": offset})
    rest = np.zeros(len(values), dtype=bool)
    noises = np.full((len(values), 3), np.nan)
    told = len(got["FlagStatic"][0])  # of all rows but the first
    rest[len(rest) - told :] = np.reshape(got["FlagStatic"][1], told) > 0
    noises[len(rest) - told :] = np.reshape(got["StdDev"][1], (told, 3))
    return Result(
        {"rest": as_given(rest, times, column_of(x), "rest"), "noise": as_given(noises, times, x, "noise")},
        {"rest": times, "noise": times},
    )


def _three(x: Any, name: str) -> Any:
    values = array_of(x)
    require_upright(values, name)
    if values.ndim != 2 or values.shape[1] != 3:
        shape = " by ".join(map(str, values.shape))
        text = f"found an array of {shape} for {name}; expected three columns, one for each axis"
        raise Error(text, found=shape, expected="three columns")
    return values


def _vectors_graph(gain: float = 0.05, fs: float = SHOWN_RATE) -> Graph:
    graph = Graph("smooth_vectors")
    graph.add("x", "MemorySource")
    graph.add("smooth", "FilterSphericalFiltering", **_vector_settings(gain, fs))
    graph.add("result", "MemorySink")
    for source, pin in (("accel", "3a"), ("magnet", "3m"), ("gyro", "3g")):
        graph.connect(f"x.{source}", f"smooth.{pin}")
    for name, pin in _VECTORS.items():
        graph.connect(f"smooth.{pin}", f"result.{name}")
    return graph


_VECTORS = {
    "accel": "3a_filtered",
    "magnet": "3m_filtered",
    "earth_accel": "3a_Terrefiltered",
    "earth_magnet": "3m_Terrefiltered",
    "rotation": "Rot_Gyro",
    "cutoffs": "Fc",
}


def _vector_settings(gain: float, fs: float) -> dict[str, Any]:
    return {"Frequency": fs, "Filter Gain": number_of(gain, "gain")}


@task(_vectors_graph)
def smooth_vectors(
    accel: Any, *, gyro: Any, magnet: Any = None, fs: Any = None, gain: float = 0.05
) -> Result:
    """Smooths the directions of gravity and of the magnetic field while the sensor turns.

    Parameters
    ----------
    accel : array or DataFrame
        Three accelerations a row in g, 1 at rest and pointing up; a row of not-a-numbers is none.
    gyro : array or DataFrame
        Three turn rates a row in rad/s.
    magnet : array or DataFrame, optional
        The field, scaled to length 1.
    fs : float, optional
        Rows a second; needed unless `accel` has a time index.
    gain : float
        Scales the cut-offs. 0.05 is a good begin; less where the gyroscope's offset has been taken off.

    Returns
    -------
    Result
        `accel` and `magnet` in the sensor's frame, `earth_accel` and `earth_magnet` in that of the begin,
        `rotation` (n, 3, 3) from the sensor's frame to that, and `cutoffs` as fractions of half the rate.

    Notes
    -----
    FilterSphericalFiltering; docs/motion.md tells how well it does.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> up, still = np.tile([0.0, 0.0, 1.0], (200, 1)), np.zeros((200, 3))
    >>> velmarind.smooth_vectors(up, gyro=still, fs=100).accel[-1].round(3).tolist()
    [0.0, 0.0, 1.0]
    """
    rate = need_rate(accel, fs, "smooth_vectors")
    values = _three(accel, "accel")
    others = {"3a": values}
    if magnet is not None:
        others["3m"] = _three(magnet, "magnet")
    times = clock_of(accel, len(values), rate)
    made = block("FilterSphericalFiltering", fs=rate, **_vector_settings(gain, rate))
    got = made.run_all(_three(gyro, "gyro"), times, others)
    found = {name: got[pin] for name, pin in _VECTORS.items() if magnet is not None or "magnet" not in name}
    return Result({name: as_given(samples, stamps, accel, name) for name, (stamps, samples) in found.items()},
                  {name: stamps for name, (stamps, _) in found.items()})
