# SPDX-License-Identifier: MIT
"""Docstrings in NumPy's form, made of the pages of the manual."""

from __future__ import annotations

import functools
import textwrap
from typing import Any

from velmarind import _native
from velmarind._names import identifier


@functools.lru_cache(maxsize=None)
def page(type: str) -> dict[str, Any]:
    """What the manual and the living block say of a type. Raises `Error` for an unknown one."""
    return _native.describe(type)


def setting_names(type: str) -> list[str]:
    return [str(setting["name"]) for setting in page(type)["properties"]]


def docstring(type: str) -> str:
    """The page of a type as a docstring."""
    found = page(type)
    parts = [str(found.get("purpose") or type), _filled(found.get("text"))]
    settings = [_setting(one) for one in found["properties"] if one["kind"] != "command"]
    parts += [_section("Parameters", settings)]
    parts += [_section("Inputs", [_pin(one) for one in found["inputs"]])]
    parts += [_section("Outputs", [_pin(one) for one in found["outputs"]])]
    commands = [_entry(one["name"], "command", _filled(one.get("meaning"))) for one in found["properties"]
                if one["kind"] == "command"]
    parts += [_section("Commands", commands)]
    parts += [_section("Notes", [_formula(found.get("formula")), _list(found.get("odd"))], "\n\n")]
    parts += [_section("Common mistakes", [_list(found.get("mistakes"))])]
    parts += [_section("See Also", [", ".join(found.get("related") or [])])]
    return "\n\n".join(part for part in parts if part) + "\n"


def _filled(text: str | None) -> str:
    return textwrap.fill(" ".join((text or "").split()), 100)


def _entry(name: str, kind: str, text: str) -> str:
    alias = identifier(name)
    title = name if alias == name else f"{alias} ('{name}')"
    return f"{title} : {kind}\n" + textwrap.indent(text, "    ")


def _setting(setting: dict[str, Any]) -> str:
    kind = str(setting["kind"])
    labels = setting.get("labels")
    if labels:
        kind = "{" + ", ".join(repr(str(label)) for label in labels) + "}"
    elif setting.get("minimum") is not None and setting.get("maximum") is not None:
        kind += f" from {setting['minimum']:.15g} to {setting['maximum']:.15g}"
    default = setting.get("default")
    if labels and isinstance(default, int) and default < len(labels):
        default = labels[default]
    unit = setting.get("unit")
    text = _filled(setting.get("meaning"))
    if unit and unit != "none":
        text += f"\nUnit: {_filled(unit)}."
    if setting.get("why"):
        text += "\n" + _filled("Default: " + str(setting["why"]))
    return _entry(setting["name"], f"{kind}, default {default!r}", text)


def _pin(pin: dict[str, Any]) -> str:
    return _entry(pin["name"], _filled(pin.get("shape")) or "any", _filled(pin.get("meaning")))


def _formula(formula: str | None) -> str:
    return "::\n\n" + textwrap.indent(formula.rstrip(), "    ") if formula else ""


def _list(lines: list[str] | None) -> str:
    return "\n".join(
        textwrap.fill(line, 100, initial_indent="- ", subsequent_indent="  ") for line in lines or []
    )


def _section(title: str, entries: list[str], between: str = "\n") -> str:
    filled = [entry for entry in entries if entry]
    return f"{title}\n{'-' * len(title)}\n" + between.join(filled) if filled else ""
