# SPDX-License-Identifier: MIT
"""Literal names of settings and pins, and the identifiers that stand for them in Python."""

from __future__ import annotations

import difflib
import keyword
import re
from collections.abc import Iterable, Mapping
from typing import TypeVar

from velmarind._errors import Error

Value = TypeVar("Value")


def identifier(name: str) -> str:
    """The identifier that stands for a literal name of a setting or a pin.

    Letters, digits and `_` stay, each run of other characters becomes one `_`, and none is left at an end. A
    digit in front gets a `_` before it, a word that Python keeps for itself one behind it. Case counts.

    Examples
    --------
    >>> from velmarind import identifier
    >>> [identifier(name) for name in ("Order", "Low Cutoff Freq. (relative)", "3bias", "in")]
    ['Order', 'Low_Cutoff_Freq_relative', '_3bias', 'in_']
    """
    text = re.sub(r"\W+", "_", name, flags=re.ASCII)
    if not name.startswith("_"):
        text = text.lstrip("_")
    if not name.endswith("_"):
        text = text.rstrip("_")
    if text[:1].isdigit():
        text = "_" + text
    return text + "_" if keyword.iskeyword(text) else text


def literal(name: str, names: Iterable[str]) -> str | None:
    """Which of the literal names somebody means by that one, or by its identifier."""
    known = list(names)
    if name in known:
        return name
    return next((one for one in known if identifier(one) == name), None)


def literals(given: Mapping[str, Value], names: Iterable[str]) -> dict[str, Value]:
    """The same by literal names. What isn't known stays as it is, for whoever refuses it."""
    known = list(names)
    return {literal(name, known) or name: value for name, value in given.items()}


def unknown(what: str, name: str, names: Iterable[str], block: str | None = None) -> Error:
    """The refusal of a name that isn't there."""
    known = list(names)
    nearest = next(iter(difflib.get_close_matches(name, known, 1, 0.5)), None)
    expected = f"one of {', '.join(known)}" if known else "none, since there is none"
    text = f"found {what} '{name}'; expected {expected}"
    if nearest is not None:
        text += f"; did you mean {nearest}?"
    found = f"{what} '{name}'"
    return Error(text, block=block, property=name, found=found, expected=expected, nearest=nearest)
