# SPDX-License-Identifier: MIT
"""Tasks as graphs: a function of the package carries the graph that it runs."""

from __future__ import annotations

from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from typing import Any, ParamSpec, Protocol, TypeVar, cast

import numpy as np

from velmarind._arrays import array_of, as_given, is_pandas, number_of, require_upright, times_of
from velmarind._block import block
from velmarind._errors import Error
from velmarind._feeding import Folder, feeding_of
from velmarind._graph import Graph, result_of
from velmarind._manual import page
from velmarind._types import Floats

P = ParamSpec("P")
R_co = TypeVar("R_co", covariant=True)

# The rate that graphs of tasks are shown for.
SHOWN_RATE = 100.0


class Task(Protocol[P, R_co]):
    """A function that runs a graph. `graph` is that graph for the function's own defaults (at 100 rows a
    second), `graph_of(...)` the one for other options."""

    graph_of: Callable[..., Graph]

    def __call__(self, *args: P.args, **kwargs: P.kwargs) -> R_co: ...

    @property
    def graph(self) -> Graph: ...


def task(graph_of: Callable[..., Graph]) -> Callable[[Callable[P, R_co]], Task[P, R_co]]:
    """Makes a task of a function, whose graph that one makes of the options."""

    def made(function: Callable[P, R_co]) -> Task[P, R_co]:
        carrier: Any = function
        carrier.graph_of = graph_of
        carrier.graph = LazyGraph(graph_of)
        return cast("Task[P, R_co]", function)

    return made


class LazyGraph:
    """The graph of a task, which is made when somebody looks at it: the extension is loaded by then."""

    def __init__(self, make: Callable[..., Graph]) -> None:
        self._make = make
        self._graph: Graph | None = None

    def _made(self) -> Graph:
        if self._graph is None:
            self._graph = self._make()
        return self._graph

    def __getattr__(self, name: str) -> Any:
        return getattr(self._made(), name)

    def __repr__(self) -> str:
        return repr(self._made())

    def _repr_svg_(self) -> str:
        return self._made()._repr_svg_()


@dataclass(frozen=True)
class Step:
    """A block of a chain: what comes to its main input and leaves by its main output."""

    id: str
    type: str
    settings: dict[str, Any] = field(default_factory=dict)


def hertz(value: Any, name: str = "cutoff") -> str:
    """A frequency in hertz as settings take it; `name` is the option's."""
    return f"{number_of(value, name)!r} Hz"


def seconds(value: Any, name: str) -> str:
    """A time in seconds as settings take it; `name` is the option's."""
    return f"{number_of(value, name)!r} s"


def chain_graph(name: str, steps: Sequence[Step]) -> Graph:
    """A graph of blocks in a row, from the source `x` to the sink `result`."""
    graph = Graph(name)
    graph.add("x", "MemorySource")
    sender = "x.x"
    for step in steps:
        graph.add(step.id, step.type, **step.settings)
    graph.add("result", "MemorySink")
    for step in steps:
        found = page(step.type)
        main = next((each for each in found["inputs"] if each.get("blocking")), found["inputs"][0])
        outputs = [each["name"] for each in found["outputs"]]
        graph.connect(sender, f"{step.id}.{main['name']}")
        sender = f"{step.id}.{'out' if 'out' in outputs else outputs[0]}"
    graph.connect(sender, "result.x")
    return graph


def run_chain(x: Any, fs: float | None, steps: Sequence[Step]) -> Any:
    """The same blocks over `x`, one behind the other: the bits of that graph, without a row's way through
    it."""
    values: Any = array_of(x)
    require_upright(values)
    for step in steps:
        values = block(step.type, fs=fs, id=step.id, **step.settings).push(values)
    return as_given(values, None, x, "out")


def tables_of(graph: Graph, data: dict[str, Any]) -> Any:
    """The results of a graph of a task over what is in memory. That one of them is empty is no surprise here,
    and not warned of."""
    description = graph.description
    feeding = feeding_of(data, None, description, Folder())
    return result_of(graph.native.run(feeding.memory, list(description["sinks"])), ()).tables


def one_channel(x: Any, name: str) -> Floats:
    """The values of a single channel. Raises `Error` for several."""
    values = array_of(x)
    if values.ndim == 2 and values.shape[1] == 1:
        return values[:, 0].copy()
    if values.ndim != 1:
        shape = " by ".join(map(str, values.shape))
        raise Error(
            f"found an array of {shape} for {name}; expected one channel; choose a column, as x[:, 0]",
            found=shape, expected="one channel")
    return values


def clock_of(x: Any, count: int, fs: float) -> Floats:
    """Times of so many rows: those of a time index, else counted."""
    times = times_of(x)
    return times if times is not None else np.arange(count) / fs


def column_of(x: Any) -> Any:
    """What a single column has the index of."""
    return x.iloc[:, 0] if is_pandas(x) and x.ndim == 2 else x


def at_rows(table: Any, times: Floats) -> Floats:
    """The rows of a table at these times; not-a-number where it has none."""
    if len(table["time"]) == len(times):
        return np.asarray(table["values"], dtype=np.float64)
    values = np.full((len(times), table["values"].shape[1]), np.nan)
    values[np.searchsorted(times, table["time"])] = table["values"]
    return values


def spells_of(table: Any, x: Any) -> Any:
    """Begin, end and length of what Durations found, in the form of `x`."""
    found = table["values"] if table["values"].shape[1] == 3 else np.empty((0, 3))
    if not is_pandas(x):
        return found
    from velmarind._recordings import pandas

    return pandas().DataFrame(found, columns=["begin", "end", "seconds"])
