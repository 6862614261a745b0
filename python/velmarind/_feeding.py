# SPDX-License-Identifier: MIT
"""What is given to a run as data, as what sources take: memory, or files."""

from __future__ import annotations

import os
from collections.abc import Mapping
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any

import numpy as np

from velmarind import _native
from velmarind._arrays import array_of, is_pandas, need_rate, rate_of, require_upright, times_of
from velmarind._errors import Error
from velmarind._names import unknown

if TYPE_CHECKING:
    from velmarind._native import MemoryData


@dataclass
class Feeding:
    """By source: what it sends of memory, or the file that it reads."""

    memory: dict[str, MemoryData] = field(default_factory=dict)
    files: dict[str, str] = field(default_factory=dict)


def feeding_of(data: Any, fs: Any, description: Mapping[str, Any], folder: str) -> Feeding:
    """Sorts what somebody gave by the graph's sources. Tables for sources of files are written into
    `folder`."""
    feeding = Feeding()
    for source, given in _by_source(data, description).items():
        pins = _pins(source, description)
        if isinstance(given, (str, os.PathLike)):
            feeding.files[source] = os.path.abspath(os.fspath(given))
        elif is_pandas(given) and _type(source, description) != "MemorySource":
            feeding.files[source] = _written(given, fs, source, description, folder)
        elif isinstance(given, Mapping):
            feeding.memory[source] = _of_pins(given, fs, source, pins)
        else:
            if len(pins) != 1:
                raise Error(
                    f"found one array for the {len(pins)} pins of '{source}' ({', '.join(pins)}); expected a dict"
                    f" by pin, as {{'{source}': {{'{(pins or ['accel'])[0]}': array}}}}",
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
        times = times_of(value) if times is None else times
    if "t" in given and "t" not in pins:
        times = np.asarray(given["t"], dtype=np.float64)
    if times is not None:
        return {"pins": arrays, "t": times}
    rate = rate_of(given.get("fs") if "fs" not in pins else None) or rate_of(fs)
    if rate is None:
        rate = need_rate(None, None, f"'{source}'")
    return {"pins": arrays, "fs": rate}


def _written(table: Any, fs: Any, source: str, description: Mapping[str, Any], folder: str) -> str:
    """A table as a file, which the source reads by its own settings; numbers come back to the same bits."""
    frame = table.to_frame() if table.ndim == 1 else table
    values = array_of(frame)
    times = times_of(frame)
    if times is None:
        rate = rate_of(fs)
        if rate is None:
            rate = need_rate(None, None, f"'{source}'")
        times = np.arange(len(values)) / rate
    path = os.path.join(folder, f"{source}.csv")
    units = frame.attrs.get("units", {})
    names = [str(name) for name in frame.columns]
    settings = next(block["settings"] for block in description["blocks"] if block["id"] == source)
    time_name = settings.get("time") or frame.index.name or "t"  # the graph says which column it reads
    _native.write(path, times, values, names, str(time_name), [units.get(name, "") for name in names])
    return path
