# SPDX-License-Identifier: MIT
"""What is given to a run as data, as what sources take: memory, or files."""

from __future__ import annotations

import os
import shutil
import tempfile
from collections.abc import Mapping
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy as np

from velmarind import _native
from velmarind._arrays import array_of, is_pandas, need_rate, rate_for, require_upright, times_of
from velmarind._errors import Error
from velmarind._names import unknown
from velmarind._values import yaml_text

if TYPE_CHECKING:
    from velmarind._native import MemoryData


@dataclass
class Feeding:
    """By source: what it sends of memory, or the file that it reads."""

    memory: dict[str, MemoryData] = field(default_factory=dict)
    files: dict[str, str] = field(default_factory=dict)
    settings: dict[str, str | None] = field(default_factory=dict)
    """Of sources whose file isn't the one that they were told of."""


class Folder:
    """A folder for tables on their way to sources of files; there is none before one is written."""

    def __init__(self) -> None:
        self._process = os.getpid()
        self._path: str | None = None

    def path(self) -> str:
        if self._path is None:
            self._path = tempfile.mkdtemp(prefix="velmarind-")
        return self._path

    def remove(self) -> None:
        if self._path is not None and os.getpid() == self._process:  # a forked child has no say
            shutil.rmtree(self._path, ignore_errors=True)
            self._path = None

    def __enter__(self) -> Folder:
        return self

    def __exit__(self, *_: object) -> None:
        self.remove()


def feeding_of(data: Any, fs: Any, description: Mapping[str, Any], folder: Folder) -> Feeding:
    """Sorts what somebody gave by the graph's sources. Tables for sources of files are written into
    `folder`."""
    feeding = Feeding()
    for source, given in _by_source(data, description).items():
        pins = _pins(source, description)
        if isinstance(given, (str, os.PathLike)):
            feeding.files[source] = os.path.abspath(os.fspath(given))
        elif is_pandas(given) and _type(source, description) != "MemorySource":
            _write(given, fs, source, description, folder, feeding)
        elif isinstance(given, Mapping):
            feeding.memory[source] = _of_pins(given, fs, source, pins)
        else:
            if len(pins) != 1:
                raise Error(
                    f"found one array for the {len(pins)} pins of '{source}' ({', '.join(pins)}); expected a"
                    f" dict by pin, as {{'{source}': {{'{(pins or ['accel'])[0]}': array}}}}",
                    block=source, found="one array", expected="a dict by pin")
            feeding.memory[source] = _of_pins({pins[0]: given}, fs, source, pins)
    return feeding


def _by_source(data: Any, description: Mapping[str, Any]) -> dict[str, Any]:
    sources = list(description["sources"])
    if data is None:
        return {}
    if isinstance(data, Mapping):
        if all(name in sources for name in data):
            return dict(data)
        strange = next(name for name in data if name not in sources)
        if len(sources) != 1 or strange not in _pins(sources[0], description):
            raise unknown("source", str(strange), sources)
    if len(sources) != 1:
        raise Error(
            f"found data for a graph with {len(sources)} sources; expected a dict by source"
            f" ({', '.join(sources)})",
            found="data", expected="a dict by source")
    return {sources[0]: data}


def _pins(source: str, description: Mapping[str, Any]) -> list[str]:
    """The pins of a source that connections name, in their order."""
    pins: list[str] = []
    for link in description["connections"]:
        block, _, pin = link["sender"].partition(".")
        if block == source and (pin or "out") not in pins:
            pins.append(pin or "out")
    return pins


def _type(source: str, description: Mapping[str, Any]) -> str:
    return next(str(block["type"]) for block in description["blocks"] if block["id"] == source)


def _of_pins(given: Mapping[str, Any], fs: Any, source: str, pins: list[str]) -> MemoryData:
    arrays: dict[str, Any] = {}
    times = None
    for pin, value in given.items():
        if pin in ("t", "fs") and pin not in pins:
            continue
        if pin not in pins:
            raise unknown("pin", str(pin), pins, source)
        arrays[pin] = array_of(value)
        require_upright(arrays[pin], pin)
        if times is None and times_of(value) is not None:
            times = _times_for(value, fs, len(value), source)
    if "t" in given and "t" not in pins:
        times = np.asarray(given["t"], dtype=np.float64)
    if times is not None:
        return {"pins": arrays, "t": times}
    stated = given.get("fs") if "fs" not in pins else None
    return {"pins": arrays, "fs": need_rate(None, fs if stated is None else stated, f"'{source}'")}


# What a source was told of the form of its own file, which isn't that of the tables that are written here.
_OF_THE_FORM = (
    "separator", "decimal", "comment", "skipLines", "headerRows", "unitsRow", "profile", "data", "rate",
    "timeUnit", "timeFormat", "timeStart", "counterBits", "wholeSeconds",
)


def _write(
    table: Any, fs: Any, source: str, description: Mapping[str, Any], folder: Folder, feeding: Feeding
) -> None:
    """A table as a file, which the source reads by its own columns and repairs; numbers come back to the
    bit."""
    frame = table.to_frame() if table.ndim == 1 else table
    values = array_of(frame)
    times = _times_for(table, fs, len(values), source)
    names = [str(name) for name in frame.columns]
    time_names = ["t", *(f"t{number}" for number in range(len(names)))]
    time_name = next(name for name in time_names if name not in names)
    units = frame.attrs.get("units", {})
    path = os.path.join(folder.path(), f"{source}.csv")
    _native.write(path, times, values, names, time_name, [units.get(name, "") for name in names])
    feeding.files[source] = path
    told = next(block["settings"] for block in description["blocks"] if block["id"] == source)
    feeding.settings[f"{source}.time"] = time_name
    feeding.settings.update({f"{source}.{name}": None for name in _OF_THE_FORM if name in told})
    feeding.settings[f"{source}.missing"] = yaml_text([""])  # not-a-number is written as an empty cell


def _times_for(table: Any, fs: Any, count: int, source: str) -> Any:
    times = times_of(table)
    if times is None:
        return np.arange(count) / need_rate(None, fs, f"'{source}'")
    if fs is not None:
        rate_for(table, fs)  # refuses another rate than that of the index
    return times
