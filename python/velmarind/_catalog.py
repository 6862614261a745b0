# SPDX-License-Identifier: MIT
"""What there is to build with."""

from __future__ import annotations

from typing import Any

from velmarind import _native
from velmarind._manual import page
from velmarind._recordings import pandas


def catalog() -> Any:
    """The types of blocks, with what each is for.

    Returns
    -------
    DataFrame
        A row for each type: `category`, `purpose`, `inputs`, `outputs`, `settings`, `plugin`.

    Examples
    --------
    >>> import velmarind
    >>> blocks = velmarind.catalog()
    >>> len(blocks), blocks.loc["FilterWFLC", "category"]
    (45, 'motion sensors')
    """
    rows = []
    listed = {each["type"]: each for each in _native.catalogue()["blocks"]}
    for type_name in _native.block_types():
        found = page(type_name)
        rows.append(
            {
                "type": type_name,
                "category": found.get("category") or "",
                "purpose": found.get("purpose") or "",
                "inputs": [each["name"] for each in found["inputs"]],
                "outputs": [each["name"] for each in found["outputs"]],
                "settings": [each["name"] for each in found["properties"]],
                "plugin": listed.get(type_name, found).get("plugin") or "",
            }
        )
    return pandas().DataFrame(rows).set_index("type")
