# SPDX-License-Identifier: MIT
"""A graph as an SVG for notebooks: blocks in columns, each behind all that it gets samples from."""

from __future__ import annotations

from collections.abc import Mapping
from html import escape
from typing import Any

_WIDTH, _HEIGHT, _GAP_X, _GAP_Y, _MARGIN = 150, 44, 70, 22, 12  # of a box, between boxes, around all


def svg_of(description: Mapping[str, Any]) -> str:
    ids = [str(block["id"]) for block in description["blocks"]]
    types = {str(block["id"]): str(block["type"]) for block in description["blocks"]}
    links = [(_split(link["sender"]), _split(link["receiver"])) for link in description["connections"]]
    links = [(sender, receiver) for sender, receiver in links if sender[0] in types and receiver[0] in types]
    places = _places(ids, [(sender[0], receiver[0]) for sender, receiver in links])
    width = _MARGIN * 2 + max((x for x, _ in places.values()), default=0) + _WIDTH
    height = _MARGIN * 2 + max((y for _, y in places.values()), default=0) + _HEIGHT
    drawn = [_curve(places[sender[0]], places[receiver[0]], sender[1]) for sender, receiver in links]
    drawn += [_box(places[id], id, types[id]) for id in ids]
    return (
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}"'
        f' viewBox="0 0 {width} {height}" font-family="sans-serif" font-size="12">'
        f"<title>{escape(str(description['name']))}</title>" + "".join(drawn) + "</svg>"
    )


def _split(end: str) -> tuple[str, str]:
    block, _, pin = end.partition(".")
    return block, pin


def _places(ids: list[str], links: list[tuple[str, str]]) -> dict[str, tuple[int, int]]:
    columns = dict.fromkeys(ids, 0)
    for _ in ids:  # as many passes as a road can be long; a loop of connections ends there too
        for sender, receiver in links:
            if ids.index(sender) < ids.index(receiver) or (receiver, sender) not in links:
                columns[receiver] = min(max(columns[receiver], columns[sender] + 1), len(ids) - 1)
    taken: dict[int, int] = {}
    places = {}
    for id in ids:
        row = taken.get(columns[id], 0)
        taken[columns[id]] = row + 1
        places[id] = (columns[id] * (_WIDTH + _GAP_X), row * (_HEIGHT + _GAP_Y))
    return places


def _box(place: tuple[int, int], id: str, type_name: str) -> str:
    x, y = place[0] + _MARGIN, place[1] + _MARGIN
    return (
        f'<rect x="{x}" y="{y}" width="{_WIDTH}" height="{_HEIGHT}" rx="6" fill="#f4f6f8" stroke="#56707f"/>'
        f'<text x="{x + 8}" y="{y + 18}" font-weight="bold">{escape(id)}</text>'
        f'<text x="{x + 8}" y="{y + 34}" fill="#56707f" font-size="10"'
        f' textLength="{min(_WIDTH - 16, 6 * len(type_name))}" lengthAdjust="spacingAndGlyphs">'
        f"{escape(type_name)}</text>"
    )


def _curve(begin: tuple[int, int], end: tuple[int, int], pin: str) -> str:
    x1, y1 = begin[0] + _MARGIN + _WIDTH, begin[1] + _MARGIN + _HEIGHT // 2
    x2, y2 = end[0] + _MARGIN, end[1] + _MARGIN + _HEIGHT // 2
    middle = (x1 + x2) // 2
    return (
        f'<path d="M{x1} {y1}C{middle} {y1} {middle} {y2} {x2} {y2}" fill="none" stroke="#0072b2"/>'
        f'<text x="{x1 + 4}" y="{y1 - 4}" fill="#0072b2" font-size="9">{escape(pin)}</text>'
    )
