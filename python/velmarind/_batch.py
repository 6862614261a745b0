# SPDX-License-Identifier: MIT
"""Many recordings at once: the command `quillmere batch`, called from Python."""

from __future__ import annotations

import os
import re
import signal
import subprocess
import sys
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import Any

from velmarind import _native
from velmarind._errors import Error
from velmarind._values import yaml_text

Path = str | os.PathLike[str]
NOTHING_RUN = 2


@dataclass(frozen=True)
class BatchResult:
    """What came of a batch.

    Attributes
    ----------
    out : str
        The folder with the results.
    done, failed, left : int
        Recordings that are done, that have failed, and that were not reached.
    messages : str
        What the command has said of failures and doubts.
    """

    out: str
    done: int
    failed: int
    left: int
    messages: str

    @property
    def whole(self) -> bool:
        """Whether all are done."""
        return self.failed == 0 and self.left == 0

    @property
    def summary(self) -> Any:
        """`summary.csv` as a DataFrame: a row for each recording below `out`."""
        import pandas

        return pandas.read_csv(os.path.join(self.out, "summary.csv"))

    @property
    def failures(self) -> Any:
        """The rows of the summary that are not done."""
        summary = self.summary
        return summary[summary["state"] != "done"]


def batch(
    graph: Path,
    recordings: Path | Sequence[Path],
    out: Path,
    *,
    engine: str | None = None,
    ship: bool = False,
    jobs: int | None = None,
    resume: bool = False,
    keep_changed: bool = False,
    table: Path | None = None,
    source: str | None = None,
    set: Mapping[str, Any] | None = None,
    params: Mapping[str, Any] | None = None,
    inputs: Mapping[str, str] | None = None,
    statistic: str | Sequence[str] = (),
    picture: str | None = None,
    report: str | None = None,
    watch: Sequence[str] = (),
    plugins: Sequence[Path] = (),
    strict: bool = False,
    overwrite: bool = False,
    progress: bool = False,
) -> BatchResult:
    """Runs a graph over many recordings, each in a process and a folder of its own, as docs/studies.md tells.

    Control-C ends it in order, and keeps what is done.

    Parameters
    ----------
    graph : path
        The graph file.
    recordings : str or list
        Patterns, as in `'study/**/*.csv'`.
    out : path
        The folder of the results.
    engine : str, optional
        `'dask://HOST:PORT'` for the workers of a scheduler, `'dask'` for some of Dask's here; else processes of
        the command's own.
    ship : bool
        Send recordings to workers of Dask and bring results back, where there is no folder that all share.
    jobs : int, optional
        So many at once.
    resume, keep_changed, table, source, set, params, inputs, statistic, picture, report, watch, plugins
        The options of `quillmere batch` that are called so.
    strict, overwrite : bool
        Take warnings for errors; let results replace files that no run has written.
    progress : bool
        Print how far it is, to standard error.

    Raises
    ------
    Error
        When nothing was run.

    Examples
    --------
    >>> import tempfile, velmarind
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     made = velmarind.batch("examples/rest-tremor.yaml", "examples/recordings/*.csv", folder, statistic="mean")
    ...     made.whole, list(made.summary["recording"])
    (True, ['examples/recordings/rest-tremor.csv'])
    """
    def of(option: str, values: Path | Iterable[Path] | None) -> list[str]:
        several = [values] if isinstance(values, (str, os.PathLike)) else values or ()
        return [word for value in several for word in (option, os.fspath(value))]

    def pairs(option: str, values: Mapping[str, Any] | None, text: Any = yaml_text) -> list[str]:
        return of(option, [f"{name}={text(value)}" for name, value in (values or {}).items()])

    flags = {"--ship": ship, "--resume": resume, "--keep-changed": keep_changed, "--strict": strict,
             "--overwrite": overwrite}
    words = [
        os.fspath(graph), *of("--in", recordings), *of("--out", out), *of("--engine", engine),
        *of("--jobs", None if jobs is None else str(jobs)), *of("--table", table), *of("--source", source),
        *pairs("--set", set), *pairs("--param", params), *pairs("--input", inputs, str),
        *of("--statistic", statistic), *of("--picture", picture), *of("--report", report), *of("--watch", watch),
        *of("--plugin", plugins), *(option for option, wanted in flags.items() if wanted),
    ]
    code, printed, messages = _call(words, progress)
    counts = {word: int(number) for number, word in re.findall(r"(\d+) (done|failed|left)\b", printed)}
    if code == NOTHING_RUN or not counts:
        raise Error(messages.strip().removeprefix("quillmere: "))
    return BatchResult(os.fspath(out), counts["done"], counts["failed"], counts.get("left", 0), messages)


def _call(words: list[str], progress: bool) -> tuple[int, str, str]:
    """The end of `quillmere batch`, and what it has printed."""
    command = _native.command_path()
    if not command:
        raise Error("found no command quillmere beside the package; expected it in the wheel or the build")
    environment = {"QUILLMERE_PYTHON": sys.executable, **os.environ}
    # A session of its own: it hears of Control-C from here alone, and once.
    with subprocess.Popen([command, "batch", *words], env=environment, text=True, errors="replace",
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          start_new_session=True) as process:
        assert process.stderr is not None and process.stdout is not None
        told: list[str] = []
        try:
            for line in process.stderr:
                told.append(line)
                if progress:
                    sys.stderr.write(line)
        except KeyboardInterrupt:
            process.send_signal(signal.SIGINT)
            process.wait()
            raise
        return process.wait(), process.stdout.read(), "".join(told)
