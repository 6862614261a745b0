# SPDX-License-Identifier: MIT
"""Graphs of blocks: from files or in code, over files or over what is in memory."""

from __future__ import annotations

import os
from collections.abc import Iterator, Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Literal

from velmarind import _native
from velmarind._drawing import svg_of
from velmarind._errors import Error
from velmarind._feeding import Feeding, Folder, feeding_of
from velmarind._live import LiveRun
from velmarind._log import warn_of
from velmarind._manual import setting_names
from velmarind._names import literals
from velmarind._progress import shown
from velmarind._recordings import frame_of
from velmarind._values import yaml_text

Link = Literal["drop", "wait"]
_PARTS = ("file", "line", "column", "found", "expected", "nearest")


@dataclass(frozen=True)
class Complaint:
    """Something that is wrong with a graph (`severity` is `error`), or doubtful (`warning`)."""

    severity: str
    sentence: str
    file: str | None = None
    line: int | None = None
    column: int | None = None
    part: str | None = None
    found: str | None = None
    expected: str | None = None
    nearest: str | None = None

    def __str__(self) -> str:
        return self.sentence


class RunResult(Mapping[str, Any]):
    """What came of a run: a DataFrame for each result that was kept, by the id of its sink.

    Attributes
    ----------
    outcome : dict
        All there is to know of the run, as docs/own-host.md tells it.
    tables : dict
        The results as arrays, for who has no pandas: `time`, `columns`, `units`, `values`.
    """

    def __init__(self, outcome: Mapping[str, Any], tables: Mapping[str, Any]) -> None:
        self.outcome = dict(outcome)
        self.tables = dict(tables)
        self._frames: dict[str, Any] = {}

    def __getitem__(self, sink: str) -> Any:
        if sink not in self.tables:
            known = ", ".join(self.tables) or "none"
            raise KeyError(f"found no result '{sink}' in memory; expected one of {known}")
        if sink not in self._frames:
            self._frames[sink] = frame_of(self.tables[sink])
        return self._frames[sink]

    def __iter__(self) -> Iterator[str]:
        return iter(self.tables)

    def __len__(self) -> int:
        return len(self.tables)

    @property
    def state(self) -> str:
        """`whole`, `failed` or `refused`."""
        return str(self.outcome["state"])

    @property
    def losses(self) -> list[dict[str, Any]]:
        """Connections on which samples got lost."""
        return [link for link in self.outcome.get("links", []) if link["lost"]]

    @property
    def repairs(self) -> dict[str, Any]:
        """For each source what was skipped, mended, left out or filled."""
        return {
            source["id"]: {name: source[name] for name in ("repairs", "timeRepairs") if name in source}
            for source in self.outcome.get("sources", [])
        }

    @property
    def conversions(self) -> list[str]:
        """What became of hertz and seconds."""
        return [f"{each['target']}: {each['sentence']}" for each in self.outcome.get("conversions", [])]

    def plot(self, ax: Any = None) -> Any:
        """Draws the results over time into `ax`, or into new axes. The axes come back."""
        from velmarind import _plots

        ax = _plots.axes(ax)
        for table in self.tables.values():
            for number, name in enumerate(table["columns"]):
                _plots.draw(ax, table["values"][:, number], table["time"], name)
        return _plots.finish(ax)

    def __repr__(self) -> str:
        rows = self.outcome.get("rows", 0)
        lines = [f"{self.outcome.get('graph') or 'graph'}: {self.state}, {rows} rows"]
        for sink, table in self.tables.items():
            lines.append(f"  {sink}: {len(table['time'])} rows of {', '.join(table['columns'])}")
        lines += [f"  {link['from']} -> {link['to']}: {link['lost']} samples lost" for link in self.losses]
        lines += [f"  {sentence}" for sentence in self.conversions]
        return "\n".join(lines)


class Graph:
    """A graph of blocks, from sources to sinks.

    Examples
    --------
    >>> import numpy as np, velmarind
    >>> g = velmarind.Graph("calm")
    >>> g.add("wrist", "MemorySource")
    >>> g.add("smooth", "FilterButterworth", Order=2, RelativeCutOffFreq="5 Hz")
    >>> g.add("calm", "MemorySink")
    >>> g.connect("wrist.accel", "smooth.in")
    >>> g.connect("smooth.out", "calm.accel")
    >>> result = g.run(np.ones((500, 3)), fs=100)
    >>> result["calm"].shape
    (500, 3)
    >>> result.conversions
    ["smooth.RelativeCutOffFreq: 5 Hz is 0.1 of half the rate (100 samples/s, as stated for 'wrist')"]
    """

    def __init__(self, name: str = "", *, description: _native.Graph | None = None) -> None:
        self.native = _native.Graph(name) if description is None else description

    @classmethod
    def load(cls, path: str | os.PathLike[str]) -> Graph:
        """Reads a graph file."""
        return cls(description=_native.Graph.load(os.path.abspath(path)))

    @classmethod
    def from_text(cls, text: str, path: str = "") -> Graph:
        """Reads a graph from a text; files in it are relative to the folder of `path`."""
        return cls(description=_native.Graph.from_text(text, path))

    @property
    def description(self) -> dict[str, Any]:
        """What there is: `blocks`, `connections`, `sources`, `sinks`, `parameters`."""
        return self.native.describe()

    @property
    def name(self) -> str:
        return self.native.name

    @property
    def path(self) -> str:
        """The file that it was read from, or an empty text."""
        return self.native.path

    @property
    def text(self) -> str:
        """The graph file that says this."""
        return self.native.text()

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes a graph file, over nothing that is there."""
        with open(path, "x", encoding="utf-8") as file:
            file.write(self.text)

    def add(self, id: str, type: str, /, *, layout: str = "", **settings: Any) -> None:
        """Adds a block; its settings by identifier or literal name, as a graph file has them."""
        names = setting_names(type) if type in _native.block_types() else []
        self.native.add(id, type, literals(settings, names), layout)

    def connect(
        self, sender: str, receiver: str, *, buffer: int | None = None, newest_first: bool | None = None,
        overflow: Link | None = None,
    ) -> None:
        """Connects `block.pin` with `block.pin`; the pin may be left out where a block has one only."""
        self.native.connect(sender, receiver, buffer, newest_first, overflow)

    def at(self, seconds: float, *, set: Mapping[str, Any] | None = None, fire: Sequence[str] = ()) -> None:
        """Lets settings be written (`{"smooth.Order": 4}`) and commands be fired at a time of the
        recording."""
        self.native.at(seconds, set, [fire] if isinstance(fire, str) else list(fire))

    def parameter(self, name: str, value: Any) -> None:
        """Adds a parameter, for which `${name}` stands among settings."""
        self.native.parameter(name, value)

    def changed(
        self,
        *,
        set: Mapping[str, Any] | None = None,
        params: Mapping[str, Any] | None = None,
        inputs: Mapping[str, str | os.PathLike[str]] | None = None,
        outputs: Mapping[str, str | os.PathLike[str]] | None = None,
    ) -> Graph:
        """The same graph with other settings (`{"smooth.Order": 4}`), parameters, recordings and results."""
        return Graph(
            description=self.native.changed(
                {name: yaml_text(value) for name, value in (set or {}).items()},
                {name: yaml_text(value) for name, value in (params or {}).items()},
                {name: os.fspath(value) for name, value in (inputs or {}).items()},
                {name: os.fspath(value) for name, value in (outputs or {}).items()},
            )
        )

    def check(self, data: Any = None, *, fs: Any = None, set: Mapping[str, Any] | None = None,
              params: Mapping[str, Any] | None = None, live: bool = False) -> list[Complaint]:
        """Everything that is wrong and doubtful, at once. Nothing is run or written. Arguments as for
        `run`."""
        graph = self.changed(set=set, params=params)
        with Folder() as folder:
            feeding = graph._feeding(data, fs, folder)
            found = graph.changed(set=feeding.settings, inputs=feeding.files).native.check(
                feeding.memory, graph._kept(feeding), "live" if live else "offline")
        parts = Complaint.__annotations__
        return [
            Complaint(**{name: value for name, value in each.items() if name in parts})
            for each in [*found["complaints"], *found["warnings"]]
        ]

    def run(
        self,
        data: Any = None,
        *,
        fs: Any = None,
        set: Mapping[str, Any] | None = None,
        params: Mapping[str, Any] | None = None,
        outputs: Mapping[str, str | os.PathLike[str]] | None = None,
        progress: Any = False,
        strict: bool = False,
        overwrite: bool = False,
        keep: bool | Sequence[str] | None = None,
        rounds: int | None = None,
        seconds: float | None = None,
        report: str | os.PathLike[str] = "",
    ) -> RunResult:
        """Runs it to its end, as fast as it can. Control-C ends it in order.

        Parameters
        ----------
        data : path, DataFrame, array or dict, optional
            What comes in, in place of what the graph says: a file or a table for the graph's source, an array
            for its pin; of several sources or pins a dict by their names.
        fs : float, optional
            Rows a second of arrays and of tables without a time index.
        set, params, outputs : dict, optional
            Settings (`{"smooth.Order": 4}`), parameters, and files of results, by sink, as for `quillmere
            run`.
        progress : bool or callable
            Whether a bar is shown, or what is called with how far it is.
        strict : bool
            Whether warnings are errors.
        overwrite : bool
            Whether results in files may replace what no run has made.
        keep : bool or list of str, optional
            Results that come back in place of being written to files, all or by sink; without it all that
            `outputs` doesn't name.
        rounds, seconds : optional
            Where a run without sources ends.
        report : path, optional
            A page for a browser is written there.

        Returns
        -------
        RunResult
            A DataFrame for each result, by sink. What is doubtful is warned of. A run that fails midway
            raises `Error`, whose `result` has what came until then.
        """
        graph = self.changed(set=set, params=params, outputs=outputs)
        with Folder() as folder:
            feeding = graph._feeding(data, fs, folder)
            graph = graph.changed(set=feeding.settings, inputs=feeding.files)
            kept = graph._kept(feeding, outputs) if keep is None else keep
            with shown(progress, self.name or "run") as told:
                found = graph.native.run(feeding.memory, kept, told, rounds, seconds, strict, overwrite,
                                          os.fspath(report), "")
        return result_of(found)

    def start(
        self,
        data: Any = None,
        *,
        fs: Any = None,
        feeds: Mapping[str, Mapping[str, int]] | None = None,
        rates: Mapping[str, float] | None = None,
        set: Mapping[str, Any] | None = None,
        params: Mapping[str, Any] | None = None,
        outputs: Mapping[str, str | os.PathLike[str]] | None = None,
        keep: bool | Sequence[str] | None = None,
        speed: float = 1.0,
        overflow: Link | None = None,
        strict: bool = False,
        overwrite: bool = False,
    ) -> LiveRun:
        """Runs it live, in threads of its own, open to be turned meanwhile. To be used with `with`, which
        ends it.

        Parameters
        ----------
        data, fs, set, params, outputs, keep, strict, overwrite
            As for `run`.
        feeds : dict, optional
            Sources that rows are fed to while it runs: for each of its pins the number of columns, as
            `{"wrist": {"accel": 3}}`.
        rates : dict, optional
            Rows a second of such sources.
        speed : float
            Of recordings and data, as a multiple of their own pace; `float("inf")` doesn't wait.
        overflow : {'drop', 'wait'}, optional
            What a full connection between layouts does that says nothing.
        """
        graph = self.changed(set=set, params=params, outputs=outputs)
        folder = Folder()
        try:
            feeding = graph._feeding(data, fs, folder)
            graph = graph.changed(set=feeding.settings, inputs=feeding.files)
            kept = graph._kept(feeding, outputs) if keep is None else keep
            run = graph.native.start(feeding.memory, feeds, rates, kept, speed, overflow, strict=strict,
                                      overwrite=overwrite)
        except BaseException:
            folder.remove()
            raise
        return LiveRun(run, folder)

    def _feeding(self, data: Any, fs: Any, folder: Folder) -> Feeding:
        description = self.description
        if data is not None and not description["sources"]:
            wrong = self.native.check()["complaints"]  # which may be why there are none
            if wrong:
                raise Error("\n".join(each["sentence"] for each in wrong), complaints=wrong,
                            **{name: wrong[0].get(name) for name in _PARTS})
        return feeding_of(data, fs, description, folder)

    def _kept(self, feeding: Feeding, outputs: Mapping[str, Any] | None = None) -> Sequence[str]:
        return [sink for sink in self.description["sinks"] if sink not in (outputs or {})]

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Graph) and self.native == other.native

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> tuple[Any, ...]:
        return Graph.from_text, (self.text, self.path)

    def __repr__(self) -> str:
        found = self.description
        lines = [f"Graph {found['name'] or 'without a name'}: {len(found['blocks'])} blocks"]
        for block in found["blocks"]:
            to = [f"{link['sender']} -> {link['receiver']}" for link in found["connections"]
                  if link["sender"].split(".", 1)[0] == block["id"]]
            settings = ", ".join(f"{name}: {text}" for name, text in block["settings"].items())
            lines.append(f"  {block['id']}: {block['type']}" + (f" {{{settings}}}" if settings else ""))
            lines += [f"    {line}" for line in to]
        return "\n".join(lines)

    def _repr_svg_(self) -> str:
        return svg_of(self.description)


def result_of(found: Mapping[str, Any], doubts: Sequence[str] = ("doubts", "warnings")) -> RunResult:
    """The result of a run, warned of its doubts; raises `Error` for one that failed."""
    outcome = found["outcome"]
    result = RunResult(outcome, found["tables"])
    warn_of(outcome, doubts)
    if result.state != "whole":
        raise failure_of(outcome, result)
    return result


def failure_of(outcome: Mapping[str, Any], result: RunResult) -> Error:
    spot = outcome.get("failedBlock") or {}
    complaints = outcome.get("complaints") or []
    first: Mapping[str, Any] = complaints[0] if complaints else {}
    error = Error(
        outcome.get("failure") or "the run failed",
        complaints=complaints,
        block=spot.get("block"),
        **{name: first.get(name) for name in _PARTS},
    )
    error.result = result  # type: ignore[attr-defined]
    return error


__all__ = ["Complaint", "Graph", "RunResult"]
