# SPDX-License-Identifier: MIT
"""What the package raises. A module of its own, since the extension needs it before all else."""

from __future__ import annotations

import contextlib
from collections.abc import Iterator, Sequence
from typing import Any


class Error(ValueError):
    """Whatever is refused, and whatever a block, a recording or a run raises.

    The text says what was found, what was expected and what to do. Its parts are attributes, None where
    there is nothing to say.

    Attributes
    ----------
    block, property : str or None
        What it is about in a graph, or the block that was made.
    file, line, column : str, int, int or None
        Where it stands.
    found, expected, nearest : str or None
        What was found, what was expected in its place, and the nearest name that there is.
    complaints : tuple of dict
        All parts, where several things are wrong at once; the attributes above are those of the first. Each
        has `severity`, `file`, `line`, `column`, `part`, `found`, `expected`, `nearest` and `sentence`.

    Examples
    --------
    >>> import velmarind
    >>> try:
    ...     velmarind.block("FilterButterworth", fs=100, Ordr=4)
    ... except velmarind.Error as error:
    ...     print(error.nearest)
    Order
    """

    def __init__(
        self,
        *args: object,
        complaints: Sequence[Any] = (),
        block: str | None = None,
        property: str | None = None,
        file: str | None = None,
        line: int | None = None,
        column: int | None = None,
        found: str | None = None,
        expected: str | None = None,
        nearest: str | None = None,
    ) -> None:
        super().__init__(*args)
        self.complaints = tuple(complaints)
        self.block = block
        self.property = property
        self.file = file
        self.line = line
        self.column = column
        self.found = found
        self.expected = expected
        self.nearest = nearest

    def __reduce__(self) -> tuple[Any, ...]:
        # Errors cross processes, with what they carry.
        return (type(self), self.args, self.__dict__)


@contextlib.contextmanager
def naming(block: str, property: str | None = None) -> Iterator[None]:
    """Lets errors know what they are about, where they come from somebody who doesn't."""
    try:
        yield
    except Error as error:
        error.block = error.block or block
        error.property = error.property or property
        raise
