# SPDX-License-Identifier: MIT
"""What people have (lists, arrays, Series, DataFrames) as arrays and times, and the way back."""

from __future__ import annotations

import sys
from typing import Any

import numpy as np

from velmarind._errors import Error
from velmarind._types import Floats

# Recordings with at most so many rows and at least so many columns lie on their side.
_FEW_ROWS = 12
_MANY_COLUMNS = 30
# As runs judge time stamps: uneven where more than one step in twenty is off by more than half of the mean.
_ODD_STEPS = 0.05
_ODD_STEP = 0.5
# How far a stated rate and that of an index may be apart.
_SAME_RATE = 0.01


def is_pandas(x: object) -> bool:
    """Whether it is a Series or a DataFrame; pandas isn't imported to find out."""
    pandas = sys.modules.get("pandas")
    return pandas is not None and isinstance(x, (pandas.Series, pandas.DataFrame))


def is_index(x: object) -> bool:
    pandas = sys.modules.get("pandas")
    return pandas is not None and isinstance(x, pandas.Index)


def array_of(x: Any) -> Floats:
    """The numbers, in place where they are 64-bit floats one behind the other already; what a mask hides, and
    what pandas has as missing, is not-a-number. Raises `Error` for what holds other things than numbers."""
    if is_pandas(x):
        parts = [x] if x.ndim == 1 else [x.iloc[:, number] for number in range(x.shape[1])]
        strange = next((part for part in parts if not _is_numeric(part)), None)
        if strange is not None:
            raise _no_numbers(f"a column '{strange.name}' of {strange.dtype}")
        return np.ascontiguousarray(x.to_numpy(dtype=np.float64, na_value=np.nan))
    if isinstance(x, np.ma.MaskedArray):
        x = np.where(x.mask, np.nan, x.data) if x.dtype.kind in "biuf" else x
    try:
        values = np.asarray(x)
    except ValueError as error:
        raise _no_numbers(f"a {type(x).__name__} of rows of several lengths") from error
    if values.dtype.kind not in "biuf" and values.size > 0:
        raise _no_numbers(f"an array of {values.dtype}")
    if values.ndim == 0:
        raise _no_numbers(f"{x!r}", "rows; give a list or an array")
    return np.ascontiguousarray(values, dtype=np.float64)


def _is_numeric(part: Any) -> bool:
    types = sys.modules["pandas"].api.types
    return bool(types.is_numeric_dtype(part.dtype) and not types.is_complex_dtype(part.dtype))


def _no_numbers(
    found: str, expected: str = "numbers; choose its columns of numbers, or convert them"
) -> Error:
    return Error(f"found {found}; expected {expected}", found=found, expected="numbers")


def number_of(value: Any, name: str) -> float:
    """An option that is one number. Raises `Error` for others."""
    if isinstance(value, (int, float, np.integer, np.floating)) and not isinstance(value, bool):
        return float(value)
    raise Error(f"found {value!r} for {name}; expected a number", property=name, found=repr(value),
                expected="a number")


def require_upright(values: Floats, what: str = "x") -> None:
    """Refuses what has its channels down the rows."""
    if values.ndim != 2:
        return
    rows, columns = values.shape
    if rows <= _FEW_ROWS and columns >= _MANY_COLUMNS:
        raise Error(
            f"found {what} of {rows} rows and {columns} columns; expected time down the rows and channels"
            f" side by side; did you mean its transposition, {what}.T? (Rows that are really so wide go in as"
            f" {what}[:, None, :])",
            found=f"{rows} rows and {columns} columns",
            expected="time down the rows",
            nearest=f"{what}.T",
        )


def first_date_of(x: Any) -> Any:
    """The date from which `times_of` counts; None where there are no dates."""
    if not is_pandas(x) or len(x) == 0:
        return None
    return x.index[0] if isinstance(x.index, sys.modules["pandas"].DatetimeIndex) else None


def stated_times(t: Any) -> Floats:
    """Seconds that somebody gives for rows: numbers, or dates and durations of pandas."""
    if is_index(t):
        return np.asarray(t, dtype=np.float64) if (found := times_of(t)) is None else found
    if is_pandas(t) and t.ndim == 1 and t.dtype.kind in "mM":
        return stated_times(sys.modules["pandas"].Index(t))
    return np.ascontiguousarray(t, dtype=np.float64)


def times_of(x: Any, since: Any = None) -> Floats | None:
    """Seconds, where it has a time index: dates, durations, or floating-point seconds. Dates count from
    `since`, or from the first."""
    if not (is_pandas(x) or is_index(x)):
        return None
    pandas = sys.modules["pandas"]
    index = x if is_index(x) else x.index
    if isinstance(index, pandas.DatetimeIndex):
        if len(index) == 0:
            return None
        return np.asarray((index - (index[0] if since is None else since)) / pandas.Timedelta(seconds=1), dtype=np.float64)
    if isinstance(index, pandas.TimedeltaIndex):
        return np.asarray(index / pandas.Timedelta(seconds=1), dtype=np.float64)
    if pandas.api.types.is_float_dtype(index):
        return np.asarray(index, dtype=np.float64)
    return None


def rate_of_times(times: Floats) -> float:
    """Samples a second of even times. Raises `Error` where they aren't even."""
    steps = np.diff(times)
    if steps.size == 0:
        raise Error("found one time; expected two at least, which tell a rate", found="one time")
    lost = np.flatnonzero(~np.isfinite(times))
    if lost.size > 0:
        raise Error(
            f"found a time in row {lost[0]} that is no number; expected times in all rows; drop such rows",
            found="a time that is no number",
            expected="times in all rows",
        )
    back = int(np.argmin(steps))
    if not steps[back] >= 0 or times[-1] == times[0]:
        raise Error(
            f"found a time index that goes back behind row {back} (at {times[back]:g} s); expected times that"
            " grow; drop those rows, or let velmarind.read repair them (backwards='drop')",
            found="times that go back",
            expected="times that grow",
        )
    usual = float(np.median(steps[steps > 0]))
    even = steps[steps < 1.5 * usual]  # lost samples and pauses don't count; repeated stamps belong to others
    step = float(np.mean(even))
    odd = float(np.mean(np.abs(steps - step) > _ODD_STEP * step))
    if odd > _ODD_STEPS:
        raise Error(
            f"found a time index of which {100 * odd:.0f} % of the steps are off by more than half of their"
            f" mean, {step:g} s; expected even times; make them even with velmarind.resample(x, rate=...)",
            found=f"{100 * odd:.0f} % uneven steps",
            expected="even times",
        )
    return float(f"{1 / step:.6g}")


def rate_of(fs: Any) -> float | None:
    """A rate as it is given: a number, or something with a time index. Raises `Error` for others."""
    if fs is None:
        return None
    if is_pandas(fs) or is_index(fs):
        times = times_of(fs)
        if times is None:
            raise Error(
                "found an index without times for fs; expected dates, durations or seconds as floating-point"
                " numbers; give the rows a second, as fs=100",
                found="an index without times",
                expected="a rate",
            )
        return rate_of_times(times)
    try:
        rate = float(fs)
    except (TypeError, ValueError):
        rate = float("nan")
    if not (rate > 0 and np.isfinite(rate)):
        text = f"found {fs!r} for fs; expected rows a second, above 0"
        raise Error(text, found=repr(fs), expected="above 0")
    return rate


def rate_for(x: Any, fs: Any) -> float | None:
    """The rate that is stated, or that of the data's time index; both, where there are both, have to
    agree."""
    stated = rate_of(fs)
    times = times_of(x)
    if times is None or times.size < 2:
        return stated
    if stated is None:
        return rate_of_times(times)
    measured = rate_of_times(times)
    if abs(measured / stated - 1) > _SAME_RATE:
        raise Error(
            f"found a time index of {measured:g} rows a second; expected {stated:g}, as fs says",
            found=f"{measured:g} rows a second",
            expected=f"{stated:g} rows a second",
        )
    return stated


def need_rate(x: Any, fs: Any, what: str) -> float:
    """The same, where nothing can be done without."""
    rate = rate_for(x, fs)
    if rate is None:
        raise Error(
            f"found no rate for {what}; expected fs, the rows a second, or data with a time index;"
            " say fs=100",
            found="no rate",
            expected="fs",
        )
    return rate


def index_at(times: Floats, like: Any) -> Any:
    """An index of the same kind as that of `like`, for other times of the same clock."""
    pandas = sys.modules["pandas"]
    index = like.index
    if isinstance(index, pandas.DatetimeIndex):
        return (index[0] + pandas.to_timedelta(times, unit="s")).rename(index.name)
    if isinstance(index, pandas.TimedeltaIndex):
        return pandas.to_timedelta(times, unit="s").rename(index.name)
    return pandas.Index(times, name=index.name)


def columns_for(count: int, like: Any, name: str) -> list[Any]:
    """Names of so many columns: those that went in, where there are as many."""
    if is_pandas(like) and like.ndim == 2 and like.shape[1] == count:
        return list(like.columns)
    return [name] if count == 1 else [f"{name}[{number}]" for number in range(count)]


def as_given(samples: Any, times: Floats | None, like: Any, name: str) -> Any:
    """Samples in the form of what went in: with its index where there are as many, else with their own
    times."""
    if not is_pandas(like) or isinstance(samples, list) or samples.ndim > 2:
        return samples
    pandas = sys.modules["pandas"]
    if len(samples) == len(like):
        index = like.index
    elif times is not None and times_of(like) is not None:
        index = index_at(times, like)
    else:
        index = pandas.RangeIndex(len(samples))
    flat = samples[:, None] if samples.ndim == 1 else samples
    if like.ndim == 1 and flat.shape[1] == 1:
        same = len(samples) == len(like)
        return pandas.Series(flat[:, 0], index=index, name=like.name if same else name)
    frame = pandas.DataFrame(flat, index=index, columns=columns_for(flat.shape[1], like, name), copy=False)
    frame.attrs.update(like.attrs)
    return frame
