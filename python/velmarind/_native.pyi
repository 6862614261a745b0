# SPDX-License-Identifier: MIT
"""The extension that the package `velmarind` stands on: blocks, graphs and recordings of the host, without
pandas, plots or conveniences.

Time runs down the rows everywhere. A sample is one row (1 x channels) of an array with two axes, one element
of an array with one axis, or one matrix of an array with three (n, rows, columns). Arrays are float64; one
that is C-contiguous already is read where it lies. Times are seconds.

A setting is given as a graph file gives it, as text (`"5 Hz"`, `"LowPass"`, `"[[1, 2], [3, 4]]"`), or as a
`bool`, an `int`, a `float` or an array.

The interpreter's lock is released while blocks, runs and files are at work on more than a few samples. After
a fork, the child may use everything but live runs of its parent, which are refused.
"""

from collections.abc import Callable, Mapping, Sequence
from typing import Any, Literal, TypedDict, final

import numpy as np
from numpy.typing import ArrayLike, NDArray

from velmarind._errors import Error as Error

Floats = NDArray[np.float64]
Setting = str | bool | int | float | ArrayLike
Samples = Floats | list[Floats]
"""All samples of one shape: an array (n, columns) where each has one row, else (n, rows, columns); a list of
matrices where the shapes differ."""
TimedSamples = tuple[Floats, Samples]
"""Times in seconds, and as many samples."""

__version__: str

# Whatever is refused, and whatever a block raises, comes as `Error(text, complaints=..., block=..., property=...,
# file=..., line=..., column=..., found=..., expected=..., nearest=...)`: `complaints` are all parts, the
# others are those of the first, and None where it says nothing of that.

class ComplaintParts(TypedDict):
    """What is wrong, or doubtful, part by part; what there is nothing to say of is None."""

    severity: Literal["error", "warning"]
    file: str | None
    line: int | None
    column: int | None
    part: str | None
    found: str | None
    expected: str | None
    nearest: str | None
    sentence: str

# What there is.

def block_types() -> list[str]:
    """The types of blocks of all plug-ins, in their order."""

def host_types() -> list[str]:
    """The types of sources and sinks."""

def catalogue() -> dict[str, Any]:
    """All types, with their plug-ins and what their pages say they are for."""

def describe(type: str) -> dict[str, Any]:
    """A block type with its page: what `quillmere blocks TYPE --json` prints. Raises `Error` for an unknown
    type, which names the nearest."""

def load_plugin(path: str) -> None:
    """Adds the types of a plug-in, by its file. Raises `Error`."""

def recording_forms() -> list[str]:
    """The forms of recordings that can be read, as users name them."""

def library_folder() -> str:
    """The folder of the libraries, the plug-ins and their manuals."""

def command_path() -> str:
    """The command `quillmere` that goes with the package; empty when it isn't there."""

# Blocks.

class PropertyState(TypedDict):
    """A setting of a living block."""

    name: str
    kind: Literal["flag", "whole number", "count", "number", "matrix", "choice", "command", "unknown"]
    value: Any
    """As `Block.get` gives it; None for a command."""
    text: str
    """The same as a graph file would give it; empty for a command."""
    default: Any
    """What a new block of the type holds."""
    minimum: float | None
    maximum: float | None
    labels: list[str]
    """Of a choice, else empty."""
    writable: bool
    expected: str
    """What may be written: `a whole number from 0 to 10`."""
    unit: str
    help: str
    """`meaning` and `why` of the type's page, or empty."""

class Conversion(TypedDict):
    """A number that was made of hertz or seconds."""

    target: str
    written: str
    number: float
    sentence: str

class Response(TypedDict):
    """What a block does to each frequency, as output over input. What couldn't be measured is not-a-number."""

    frequency: Floats
    """As a fraction of half the rate, 0 to 1."""
    sine: NDArray[np.complex128]
    """Measured by cosines."""
    impulse: NDArray[np.complex128]
    """Measured by a single 1."""
    design: NDArray[np.complex128] | None
    """Promised by the coefficients that the block publishes."""

class Block:
    """A living block, fed row by row in the caller's thread; may be derived from. Used by one thread at a time; another one that
    comes while a call is under way gets an `Error`.

    Parameters
    ----------
    type : the name of its type.
    settings : by literal name. Refused all at once, with the nearest names.
    fs : rows a second; None where nobody says. Needed for settings in hertz and seconds, and for the times of
        rows of blocks that reckon with them, where no times are given.
    id : what messages call it.
    """

    def __init__(
        self, type: str, settings: Mapping[str, Setting] | None = None, fs: float | None = None, id: str = "block"
    ) -> None: ...
    @property
    def type(self) -> str: ...
    @property
    def id(self) -> str: ...
    @property
    def fs(self) -> float | None: ...
    @property
    def inputs(self) -> list[str]:
        """Names of the input pins."""
    @property
    def outputs(self) -> list[str]:
        """Names of the output pins."""
    @property
    def main_input(self) -> str | None:
        """The input that a step waits on, to which `x` goes; None for a block that makes samples."""
    @property
    def main_output(self) -> str:
        """`out`, or the first output: what `push` and `run` give."""
    @property
    def reads_times(self) -> bool:
        """Whether it reckons with the times of rows, so that it needs `fs` or `t`."""
    @property
    def conversions(self) -> list[Conversion]:
        """Of settings that stand in hertz or seconds."""
    @property
    def commands(self) -> list[str]:
        """What was fired before the first row, in order; a `fresh()` block gets it, too."""
    @property
    def warnings(self) -> list[str]:
        """What is doubtful about the settings it began with."""

    def push(self, x: ArrayLike | int, t: ArrayLike | float | None = None, /) -> Samples:
        """Feeds rows and gives back what they made of the main output; what the block remembers stays.

        Row i has the time `t[i]`; where `t` is one number, `t + i / fs`; without `t`, `(rows fed so far + i)
        / fs`. For a block without inputs `x` is a number of steps.

        An array with one axis is one channel, and gives one axis back where each sample has one element. No
        row may come out, or several for one that goes in, as the block has it.
        """
    def push_all(
        self,
        x: ArrayLike | int,
        t: ArrayLike | float | None = None,
        inputs: Mapping[str, ArrayLike] | None = None,
        /,
    ) -> dict[str, TimedSamples]:
        """The same with other inputs, by name, and with all outputs and the times that the block stamps.

        An input has a row for each row of `x`, which goes in with it, or a single row (or number), which goes
        in with the first. A row of not-a-numbers alone is none: nothing goes in there.
        """
    def finish(self) -> Samples:
        """What the block holds back for more rows, where there are none: Resample, Join and Durations hold
        some. Nothing of others."""
    def finish_all(self) -> dict[str, TimedSamples]:
        """The same of all outputs, and with times."""
    def run(self, x: ArrayLike | int, t: ArrayLike | float | None = None, /) -> Samples:
        """What `push` of a `fresh()` block gives, and `finish` behind it. This one stays as it is."""
    def run_all(
        self,
        x: ArrayLike | int,
        t: ArrayLike | float | None = None,
        inputs: Mapping[str, ArrayLike] | None = None,
        /,
    ) -> dict[str, TimedSamples]:
        """What `push_all` of a `fresh()` block gives, and `finish_all` behind it. This one stays as it is."""
    def fresh(self) -> Block:
        """A new block with the settings that were given to this one, which remembers nothing. Commands that
        were fired before the first row are fired again."""
    def reset(self) -> None:
        """Makes this one as a fresh one; rows count from 0 again."""

    def get(self, name: str) -> Any:
        """What a setting holds: `bool`, `int`, `float`, an array, or the label of a choice."""
    def set(self, name: str, value: Setting) -> None:
        """Writes a setting. Raises `Error` for a value that it doesn't take, and keeps what it had."""
    def fire(self, name: str) -> None:
        """Fires a command."""
    def property(self, name: str) -> PropertyState: ...
    def properties(self) -> list[PropertyState]:
        """All settings and commands, in the block's order."""

    def response(self, points: int = 100, input: str = "", output: str = "") -> Response:
        """Measures a fresh one at 0 and `points` frequencies above it. Raises `Error` for a block that
        doesn't answer sample by sample."""
    def response_svg(self, title: str = "", points: int = 100, input: str = "", output: str = "") -> str:
        """The same as a picture."""
    def graph_text(self) -> str:
        """A block in YAML as a graph file has it: `id`, `type` and the settings that were given."""

# Recordings.

class Table(TypedDict):
    """Rows with times."""

    time: Floats
    """Seconds, one for each row."""
    time_name: str
    columns: list[str]
    """As a result file would call them, without units."""
    units: list[str]
    """Of each column; empty where nobody says."""
    pins: list[str]
    """The pin that each column belongs to; of a recording that is read, the column's own name."""
    values: Floats
    """(rows, columns); not-a-number where a pin had no sample in a row."""

class Reading(TypedDict):
    """A recording that was read."""

    table: Table
    rate: float | None
    """Rows a second, as stated or as measured; None for times that aren't even."""
    rate_is_measured: bool
    origin: int | None
    """Nanoseconds since 1970 (or since midnight where times are those of a day) that times count from; None
    where they count from no date."""
    form: list[str]
    """What the file was taken for and why."""
    source: dict[str, Any]
    """What was noted, repaired and left out: a member of `sources` of a run summary (docs/own-host.md)."""
    warnings: list[str]

def read(
    path: str,
    settings: Mapping[str, Setting] | None = None,
    columns: Sequence[str] | None = None,
    progress: Callable[[dict[str, Any]], object] | None = None,
) -> Reading:
    """Reads a recording by a `RecordingSource` with these settings (`time`, `rate`, `missing`, `repair` and so
    on, as docs/graphs.md has them; lists and maps as YAML texts), all columns of numbers if none are named.

    Raises `Error`, and `KeyboardInterrupt` in order."""

def inspect(path: str, settings: Mapping[str, Setting] | None = None) -> dict[str, Any]:
    """What is in a recording: what `quillmere inspect --json` prints."""

def write(
    path: str,
    time: ArrayLike,
    values: ArrayLike,
    columns: Sequence[str],
    time_name: str = "t",
    units: Sequence[str] | None = None,
    overwrite: bool = False,
) -> None:
    """Writes a table as a result is written: beside its final name, renamed when it is whole, and over nothing
    that no run has made unless `overwrite`. Not-a-number is an empty cell. A name
    that ends with its unit gets no other."""

# Graphs.

class MemoryData(TypedDict, total=False):
    """What a source sends that is fed from memory: a sample on each pin at each time."""

    pins: Mapping[str, ArrayLike]
    """Arrays of as many samples each."""
    t: ArrayLike
    """Seconds; this or `fs`."""
    fs: float
    """Samples a second, the first at 0 s."""

class RunResult(TypedDict):
    outcome: dict[str, Any]
    """What `quillmere run --summary-json` writes; docs/own-host.md has the table of its members."""
    tables: dict[str, Table]
    """Of the sinks that were kept in memory, by id."""

Mode = Literal["offline", "live", "unsaid"]

@final
class Graph:
    """A description of a graph: a value that no block stands behind until it is checked or run."""

    def __init__(self, name: str = "") -> None: ...
    @staticmethod
    def load(path: str) -> Graph:
        """From a graph file. What is wrong with it `check` and `run` tell, with all else; only a file that
        can't be understood at all raises `Error` here."""
    @staticmethod
    def from_text(text: str, path: str = "") -> Graph:
        """From a text; `path` is the file that it would stand in, which messages name."""
    def add(self, id: str, type: str, settings: Mapping[str, Any] | None = None, layout: str = "") -> None:
        """Adds a block. Settings may also be lists and maps of what settings are."""
    def connect(
        self,
        sender: str,
        receiver: str,
        buffer: int | None = None,
        newest_first: bool | None = None,
        overflow: Literal["drop", "wait"] | None = None,
    ) -> None:
        """Connects `block.pin` with `block.pin`, or `block` where it has one pin only."""
    def at(self, seconds: float, set: Mapping[str, Any] | None = None, fire: Sequence[str] = ()) -> None:
        """Adds an entry to the timeline: settings `block.Setting` and commands `block.Command`."""
    def parameter(self, name: str, value: Any) -> None:
        """Adds a parameter, which `${name}` stands for."""
    def changed(
        self,
        set: Mapping[str, Any] | None = None,
        params: Mapping[str, Any] | None = None,
        inputs: Mapping[str, str] | None = None,
        outputs: Mapping[str, str] | None = None,
    ) -> Graph:
        """The same with other settings (`block.Setting`), parameters, recordings and results (by id)."""
    def copy(self) -> Graph: ...
    @property
    def name(self) -> str: ...
    @property
    def path(self) -> str: ...
    def text(self) -> str:
        """The graph file that says this."""
    def describe(self) -> dict[str, Any]:
        """`name`, `path`, `blocks` (`id`, `type`, `settings` as texts, `layout`), `connections` (`sender`,
        `receiver`), `layouts` and `parameters`; `sources` and `sinks` are the ids of those."""
    def __eq__(self, other: object) -> bool: ...

    def check(
        self,
        data: Mapping[str, MemoryData] | None = None,
        keep: bool | Sequence[str] = False,
        mode: Mode = "unsaid",
        strict: bool = False,
    ) -> dict[str, Any]:
        """What is wrong and doubtful: what `quillmere check --json` prints, `complaints` and `warnings` as
        `ComplaintParts` among it. `data` and `keep` are those of `run`."""
    def run(
        self,
        data: Mapping[str, MemoryData] | None = None,
        keep: bool | Sequence[str] = True,
        progress: Callable[[dict[str, Any]], object] | None = None,
        rounds: int | None = None,
        seconds: float | None = None,
        strict: bool = False,
        overwrite: bool = False,
        report: str = "",
        summary: str = "",
    ) -> RunResult:
        """Runs it offline to its end, in a thread of its own, with the interpreter's lock released.

        data : what sources send instead of what the graph says, by id; of such a source only its id counts.
            A `MemorySource` needs it.
        keep : sinks whose tables come back instead of being written to files, all or by id; their names of
            columns count, their files don't.
        progress : called now and then in the calling thread with `rounds`, `rows`, `bytesRead`, `bytes` and
            `streamTime`. What it raises ends the run in order and comes out here.
        report, summary : files to be written, as the options of `quillmere run`.

        Raises `Error` for a graph that is refused; `KeyboardInterrupt` when somebody interrupts it, which ends
        it in order. A run that fails midway comes back, with `outcome["state"] == "failed"`.
        """
    def start(
        self,
        data: Mapping[str, MemoryData] | None = None,
        feeds: Mapping[str, Mapping[str, int]] | None = None,
        rates: Mapping[str, float] | None = None,
        keep: bool | Sequence[str] = True,
        speed: float = 1.0,
        overflow: Literal["drop", "wait"] | None = None,
        rounds: int | None = None,
        seconds: float | None = None,
        strict: bool = False,
        overwrite: bool = False,
    ) -> LiveRun:
        """Starts it live, in threads of its own.

        feeds : sources that rows are fed to while it runs, by id: for each of its pins the number of columns.
        rates : rows a second of such sources, for settings in hertz and seconds and for times.
        speed : of recordings and `data`, as a multiple of their own pace; infinite for as fast as they can.
        """

@final
class Watch:
    """Settings that are observed, until it is closed or its run is over."""

    def close(self) -> None:
        """Nothing is called any more when this has come back, unless it is called by the callback itself."""
    @property
    def missed(self) -> int:
        """Changes that weren't told since the callback lagged behind by thousands."""

@final
class LiveRun:
    """A graph that runs in threads of its own. All operations may be called by any thread, and by callbacks.

    One that nobody refers to any more is interrupted; one that lives when the interpreter exits is stopped in
    order first. In a forked child every operation raises `Error`.
    """

    @property
    def state(self) -> Literal["ready", "running", "ending", "ended", "failed"]: ...
    def progress(self) -> dict[str, Any]:
        """`rounds`, `rows`, `bytesRead`, `bytes` and `streamTime`."""
    def list(self, pattern: str = "*") -> list[dict[str, Any]]:
        """Settings and commands by name, `*` and `?` for what is meant: `name`, `kind`, `value`, `text`,
        `expected`, `writable`."""
    def get(self, name: str) -> Any:
        """What `block.Setting` holds, as `Block.get` gives it."""
    def set(self, name: str, value: Setting) -> None: ...
    def fire(self, name: str) -> None: ...
    def observe(self, pattern: str, callback: Callable[[dict[str, Any]], object]) -> Watch:
        """Calls back with the new state of each setting that changes, as a member of `list`, one after the
        other, in a thread of the run's own that holds no gate: a callback may do whatever it likes. What it
        raises goes to `sys.unraisablehook`."""
    def feed(self, source: str, rows: ArrayLike, t: ArrayLike | float | None = None) -> None:
        """Feeds rows (n, columns of all its pins) to a source of `feeds`. Without `t` rows are timed by its
        rate, else by the time of the run when they are fed."""
    def end_feed(self, source: str) -> None:
        """No more rows come; when no source has more, the run ends."""
    def take(self, sink: str) -> Table:
        """The rows that have come to a kept sink since the last call."""
    def read(self, sink: str, first: int = 0) -> Table:
        """All its rows that haven't been taken, from that one on; they stay."""
    def wait_rows(self, sink: str, timeout: float | None = None) -> bool:
        """Waits until the sink has rows that weren't taken; False when the time is over, or the run."""
    @property
    def sinks(self) -> Sequence[str]:
        """The kept ones."""
    def statistics(self) -> Sequence[str]:
        """Lines for people: what each block and link has done."""
    def stop(self, timeout: float | None = None) -> bool:
        """Ends it in order: what was fed goes its way, sources give no more, what is in the links comes out,
        results are whole. Waits for that so many seconds; True when it has ended."""
    def interrupt(self, reason: str = "interrupted") -> None:
        """Ends it at once."""
    def wait(self, timeout: float | None = None) -> bool:
        """Waits until it has ended; True if so. `KeyboardInterrupt` comes through and leaves it running."""
    def outcome(self) -> dict[str, Any]:
        """As of `Graph.run`. Raises `Error` as long as it runs."""
