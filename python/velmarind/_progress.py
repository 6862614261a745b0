# SPDX-License-Identifier: MIT
"""How far a run has come: a bar by tqdm where it is there, else a line now and then on standard error."""

from __future__ import annotations

import contextlib
import sys
import time
from collections.abc import Callable, Iterator
from typing import Any

Told = Callable[[dict[str, Any]], object]


@contextlib.contextmanager
def shown(wish: bool | Told, what: str) -> Iterator[Told | None]:
    """What is to be called with how far it is: what was wished for, a bar, or None."""
    if callable(wish):
        yield wish
    elif not wish:
        yield None
    else:
        try:
            from tqdm.auto import tqdm
        except ImportError:
            yield _lines(what)
        else:
            with tqdm(desc=what, unit="B", unit_scale=True, leave=False) as bar:
                yield lambda progress: _advance(bar, progress)


def _advance(bar: Any, progress: dict[str, Any]) -> None:
    if progress.get("bytes"):
        bar.total = progress["bytes"]
        bar.n = min(progress["bytesRead"], progress["bytes"])
    else:
        bar.unit = " rows"
        bar.n = progress["rows"]
    bar.set_postfix_str(f"{progress['streamTime']:.0f} s", refresh=False)
    bar.refresh()


def _lines(what: str) -> Told:
    last = time.monotonic()

    def told(progress: dict[str, Any]) -> None:
        nonlocal last
        if time.monotonic() - last >= 1.0:
            last = time.monotonic()
            print(f"{what}: {progress['rows']} rows, {progress['streamTime']:.0f} s", file=sys.stderr)

    return told
