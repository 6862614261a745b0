# SPDX-License-Identifier: MIT
"""What is told beside results: doubts as warnings, and what was done as a log, which is silent unless asked
for."""

from __future__ import annotations

import logging
import sys
import warnings
from collections.abc import Iterable, Mapping
from typing import Any

log = logging.getLogger("velmarind")
log.addHandler(logging.NullHandler())


class DataWarning(UserWarning):
    """What went well in form and may well not be what was meant: rows that were left out, samples that got
    lost, settings that contradict each other. `warnings.simplefilter("error", velmarind.DataWarning)` refuses
    such runs."""


def warn(sentence: str) -> None:
    """Warns at the line outside the package that called into it."""
    level, frame = 2, sys._getframe(1)
    while frame.f_back is not None and frame.f_globals.get("__name__", "").partition(".")[0] == "velmarind":
        level, frame = level + 1, frame.f_back
    warnings.warn(sentence.removeprefix("warning: "), DataWarning, stacklevel=level)


def warn_of(outcome: Mapping[str, Any], members: Iterable[str]) -> None:
    """Warns of what an outcome doubts, and logs what it noted."""
    for conversion in outcome.get("conversions") or []:
        log.info("%s: %s", conversion["target"], conversion["sentence"])
    for source in outcome.get("sources") or []:
        for note in source.get("notes") or []:
            log.info("%s: %s", source.get("id", ""), note)
    for member in members:
        for doubt in outcome.get(member) or []:
            warn(doubt["sentence"] if isinstance(doubt, Mapping) else str(doubt))
