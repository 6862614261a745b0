# SPDX-License-Identifier: MIT
"""Recordings of every form that the host reads, as tables."""

from __future__ import annotations

import os
import re
from collections.abc import Callable, Mapping, Sequence
from typing import Any

import numpy as np

from velmarind import _native
from velmarind._arrays import array_of, is_pandas, need_rate, require_upright, times_of
from velmarind._errors import Error
from velmarind._log import log, warn
from velmarind._names import unknown
from velmarind._progress import shown
from velmarind._values import yaml_text


def pandas() -> Any:
    try:
        import pandas as module
    except ImportError as error:
        raise Error(
            "found no pandas; expected it for tables; install it (python3-pandas)", found="no pandas"
        ) from error
    return module


def frame_of(table: Mapping[str, Any]) -> Any:
    """A table as a DataFrame over its times in seconds, with the units of columns in `attrs`."""
    index = pandas().Index(table["time"], name=table["time_name"], dtype=np.float64)
    frame = pandas().DataFrame(table["values"], index=index, columns=list(table["columns"]), copy=False)
    frame.attrs["units"] = {name: unit for name, unit in zip(table["columns"], table["units"]) if unit}
    return frame


def read(
    path: str | os.PathLike[str],
    *,
    columns: Sequence[str] | None = None,
    dates: bool = False,
    progress: bool | Callable[[dict[str, Any]], object] = False,
    **settings: Any,
) -> Any:
    """Reads a recording, as `quillmere run` does.

    Parameters
    ----------
    path : path
        A table of text, MAT, HDF5, WAV or BIDS motion, as its first bytes say.
    columns : list of str, optional
        Those that are wanted, by names or patterns, as `acc*`; without it all columns of numbers.
    dates : bool
        Whether the index has dates, where the recording's times count from one; else seconds.
    progress : bool or callable
        Whether a bar is shown.
    **settings
        How to read it, as the properties of a RecordingSource in docs/recordings.md: `time="t"`, `rate=100`,
        `missing=["NA"]`, `duplicates="drop"`, `backwards="drop"`, `gaps="nan"`, `gapLimit="50 ms"`,
        `resample="100 Hz"`, `start="2 s"`, `end="5 min"`, `units={"acc*": "g"}`.

    Returns
    -------
    DataFrame
        Rows over their times in seconds. `attrs` has `rate` (rows a second; None where times aren't even),
        `units`, `source` (the file, what it was taken for, what was guessed) and `repairs` (rows that were
        left out, mended or filled). What was repaired is warned of as well.

    Examples
    --------
    >>> import velmarind
    >>> hand = velmarind.read("examples/recordings/rest-tremor.csv")
    >>> hand.shape, hand.attrs["rate"]
    ((862, 9), 92.7743)
    """
    texts = {name: yaml_text(value) for name, value in settings.items() if value is not None}
    wanted = None if columns is None else list(columns)
    has_patterns = wanted is not None and any(sign in name for name in wanted for sign in "*?")
    with shown(progress, os.fspath(path)) as told:
        found = _native.read(os.fspath(path), texts, None if has_patterns else wanted, told)
    frame = frame_of(found["table"])
    if wanted is not None and has_patterns:
        frame = _chosen(frame, wanted)
    source = found["source"]
    frame.attrs["rate"] = found["rate"]
    frame.attrs["source"] = {"file": os.fspath(path), "form": found["form"], "notes": source.get("notes", [])}
    frame.attrs["repairs"] = {
        name: source[name]
        for name in ("repairs", "timeRepairs", "timesBackward", "timesEqual", "timesJumping")
        if name in source
    }
    for note in frame.attrs["source"]["notes"]:
        log.info("%s: %s", path, note)
    for sentence in found["warnings"]:
        warn(sentence)
    if dates:
        if found["origin"] is None:
            raise Error(
                f"found times in {os.fspath(path)} that count from no date; expected dates;"
                " leave out dates=True",
                file=os.fspath(path),
                found="times that count from no date",
                expected="dates",
            )
        since = pandas().to_timedelta(np.round(frame.index.to_numpy() * 1e9).astype(np.int64), unit="ns")
        frame.index = (pandas().Timestamp(found["origin"]) + since).rename(frame.index.name)
    return frame


def _chosen(frame: Any, wanted: Sequence[str]) -> Any:
    """The columns that names and patterns mean, in their order."""
    chosen: list[str] = []
    for pattern in wanted:
        signs = {"*": ".*", "?": "."}
        form = re.compile("".join(signs.get(letter, re.escape(letter)) for letter in pattern), re.DOTALL)
        meant = [name for name in frame.columns if form.fullmatch(name)]
        if not meant:
            raise unknown("column", pattern, frame.columns)
        chosen += [name for name in meant if name not in chosen]
    units = frame.attrs["units"]
    frame = frame[chosen]
    frame.attrs["units"] = {name: units[name] for name in chosen if name in units}
    return frame


def inspect(path: str | os.PathLike[str], **settings: Any) -> dict[str, Any]:
    """Tells what is in a recording: form, times, columns with their ranges, and what is odd.

    Parameters
    ----------
    path : path
    **settings
        How to read it, as for `read`.

    Returns
    -------
    dict
        What `quillmere inspect --json` prints.

    Examples
    --------
    >>> import velmarind
    >>> found = velmarind.inspect("examples/recordings/rest-tremor.csv")
    >>> found["rows"], found["times"]["measuredRate"], [each["name"] for each in found["columns"]][:3]
    (862, 92.7743, ['timestamp', 'gx', 'gy'])
    """
    return _native.inspect(os.fspath(path), {name: yaml_text(value) for name, value in settings.items()})


def write(
    path: str | os.PathLike[str],
    data: Any,
    *,
    fs: float | None = None,
    columns: Sequence[str] | None = None,
    units: Mapping[str, str] | None = None,
    overwrite: bool = False,
) -> None:
    """Writes a table that `read(path)` reads back to the same bits.

    What is not-a-number is written as an empty cell; `read(path, missing=[""])` has it back. Times of a
    rate of few hertz may need `timeUnit="s"`, since steps as long could be those of another unit.

    Parameters
    ----------
    path : path
        A CSV. It is written beside its final name and renamed when it is whole; a file that no run has made
        is replaced with `overwrite` only.
    data : DataFrame, Series or array
        Rows over a time index; without one `fs` counts their times.
    fs : float, optional
        Rows a second.
    columns : list of str, optional
        Names in place of those of the data.
    units : dict, optional
        Of columns; without it `data.attrs["units"]`.

    Examples
    --------
    >>> import numpy as np, tempfile, velmarind
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     velmarind.write(f"{folder}/calm.csv", np.eye(3), fs=100, columns=["x", "y", "z"])
    ...     velmarind.read(f"{folder}/calm.csv").index[1]
    0.01
    """
    table = data.to_frame() if is_pandas(data) and data.ndim == 1 else data
    values = array_of(table)
    require_upright(values, "data")
    values = values[:, None] if values.ndim == 1 else values
    times = times_of(data)
    if times is None:
        if fs is None:
            raise Error(
                "found rows without times; expected a time index, or fs, the rows a second; say fs=100",
                found="rows without times",
                expected="fs",
            )
        times = np.arange(len(values)) / need_rate(None, fs, "write")
    if columns is None:
        columns = [str(name) for name in table.columns] if is_pandas(table) else [
            f"x[{number}]" for number in range(values.shape[1])]
    broken = next((name for name in columns if "\n" in name or "\r" in name), None)
    if broken is not None:
        raise Error(f"found a column {broken!r}; expected names of one line", found=repr(broken))
    known = dict(getattr(data, "attrs", {}).get("units", {})) if units is None else dict(units)
    twice = next((name for number, name in enumerate(columns) if name in columns[:number]), None)
    if twice is not None:
        raise Error(f"found two columns called '{twice}'; expected a name of its own for each; say columns=...",
                    found=f"two columns called '{twice}'", expected="a name of its own for each")
    time_name = str(data.index.name or "t") if is_pandas(data) else "t"
    while time_name in columns:
        time_name += "_"
    _native.write(os.fspath(path), times, values, list(columns), time_name,
                  [known.get(name, "") for name in columns], overwrite)
