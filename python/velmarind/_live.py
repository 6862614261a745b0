# SPDX-License-Identifier: MIT
"""Runs that are turned, fed and watched while they go on."""

from __future__ import annotations

import os
import weakref
from collections.abc import Callable, Iterator
from types import TracebackType
from typing import Any

from velmarind import _native
from velmarind._arrays import array_of, first_date_of, is_pandas, require_upright, times_of
from velmarind._types import Setting
from velmarind._errors import Error, naming
from velmarind._feeding import Folder
from velmarind._recordings import frame_of

# How long an iteration sleeps at most before it looks at the other sinks, in seconds.
_LOOK = 0.05


class LiveRun:
    """A graph that runs in threads of its own; `Graph.start` makes one. Every operation may be called by any
    thread.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> g = velmarind.Graph("live")
    >>> g.add("wrist", "MemorySource")
    >>> g.add("scale", "FilterGain", Gain=2)
    >>> g.add("out", "MemorySink")
    >>> g.connect("wrist.x", "scale.input")
    >>> g.connect("scale.output", "out.x")
    >>> with g.start(feeds={"wrist": {"x": 1}}, rates={"wrist": 100}) as run:
    ...     run["scale.Gain"] = 10
    ...     run.feed("wrist", [[1.0], [2.0]])
    ...     run.end_feed("wrist")
    ...     for sink, rows in run:
    ...         print(sink, rows["x[0]"].tolist())
    out [10.0, 20.0]
    """

    def __init__(self, run: _native.LiveRun, folder: Folder) -> None:
        self._native = run
        self._process = os.getpid()
        self._remove = weakref.finalize(self, folder.remove)
        self._is_interrupted = False
        self._first_dates: dict[str, Any] = {}

    def __getitem__(self, name: str) -> Any:
        """What `block.Setting` holds."""
        return self._native.get(name)

    def __setitem__(self, name: str, value: Setting) -> None:
        """Writes `block.Setting`, between two steps."""
        with naming(*name.split(".", 1)):
            self._native.set(name, value)

    def fire(self, name: str) -> None:
        """Fires `block.Command`."""
        self._native.fire(name)

    def settings(self, pattern: str = "*") -> list[dict[str, Any]]:
        """Settings and commands by name, `*` and `?` for what is meant."""
        return self._native.list(pattern)

    def observe(self, pattern: str, callback: Callable[[dict[str, Any]], object]) -> _native.Watch:
        """Calls back with `name`, `value` and `text` of each setting that changes, until what comes back is
        closed."""
        if not callable(callback):
            raise Error(f"found {callback!r}; expected what can be called with the state of a setting",
                        found=repr(callback), expected="a callable")
        return self._native.observe(pattern, callback)

    def feed(self, source: str, rows: Any, t: Any = None) -> None:
        """Feeds rows to a source: an array, or a table whose time index counts; dates count from the first
        that came to the source."""
        values = array_of(rows)
        require_upright(values, "rows")
        if t is None and is_pandas(rows):
            since = first_date_of(rows)
            if since is not None:
                since = self._first_dates.setdefault(source, since)
            t = times_of(rows, since)
        with naming(source):
            self._native.feed(source, values, t)

    def end_feed(self, source: str) -> None:
        """No more rows come to that source; when no source has more, the run ends."""
        self._native.end_feed(source)

    def take(self, sink: str) -> Any:
        """The rows, as a DataFrame, that have come to a sink and weren't taken before."""
        return frame_of(self._native.take(sink))

    def read(self, sink: str) -> Any:
        """The same, and they stay."""
        return frame_of(self._native.read(sink))

    def __iter__(self) -> Iterator[tuple[str, Any]]:
        """What comes out, as it comes, until the run ends: the sink, and a DataFrame of rows."""
        ended = False
        while True:
            came = False
            for sink in self._native.sinks:
                table = self._native.take(sink)
                if len(table["time"]):
                    came = True
                    yield sink, frame_of(table)
            if ended and not came:
                return
            ended = self._native.state in ("ended", "failed")
            if not ended and not came and self._native.sinks:
                self._native.wait_rows(self._native.sinks[0], _LOOK)
            elif not ended and not self._native.sinks:
                self._native.wait(_LOOK)

    @property
    def state(self) -> str:
        """`ready`, `running`, `ending`, `ended` or `failed`."""
        return self._native.state

    @property
    def sinks(self) -> list[str]:
        """The results that are kept."""
        return list(self._native.sinks)

    def progress(self) -> dict[str, Any]:
        """How far it is: `rounds`, `rows`, `streamTime`."""
        return self._native.progress()

    def statistics(self) -> str:
        """What each block and each connection has done, for people."""
        return "\n".join(self._native.statistics())

    def stop(self, timeout: float | None = None) -> bool:
        """Ends it in order: what is under way comes out, and results are whole. True when it has ended."""
        return self._native.stop(timeout)

    def interrupt(self, reason: str = "interrupted") -> None:
        """Ends it at once. Somebody wanted that, so `with` doesn't tell of it."""
        self._is_interrupted = True
        self._native.interrupt(reason)

    def wait(self, timeout: float | None = None) -> bool:
        """Waits until it has ended; True if so."""
        return self._native.wait(timeout)

    def result(self) -> Any:
        """What came of it, with the rows that weren't taken. Raises `Error` for a run that failed, or goes
        on."""
        from velmarind._graph import result_of

        tables = {sink: self._native.read(sink) for sink in self._native.sinks}
        return result_of({"outcome": self._native.outcome(), "tables": tables})

    def __enter__(self) -> LiveRun:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        """Ends it in order, or at once where an exception comes by. Raises `Error` for a run that failed."""
        if os.getpid() != self._process:
            return  # a forked child leaves its parent's run alone
        if kind is None:
            self._native.stop()
        else:
            self.interrupt(f"{kind.__name__}: {error}")
            self._native.wait()
        self._remove()
        if self.state == "failed" and not self._is_interrupted:
            self.result()

    def __repr__(self) -> str:
        progress = self._native.progress()
        return f"LiveRun: {self.state}, {progress['rows']} rows, {progress['streamTime']:g} s"
