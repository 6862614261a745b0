# SPDX-License-Identifier: MIT
"""Values as a graph file has them."""

from __future__ import annotations

import json
import math
import os
from typing import Any

import numpy as np


def yaml_text(value: Any) -> Any:
    """Lists, maps and matrices as texts in YAML's flow form; what the extension takes as it is stays."""
    if isinstance(value, os.PathLike):
        return os.fspath(value)
    if isinstance(value, np.ndarray):
        value = value.tolist()
    return _flow(value) if isinstance(value, (list, tuple, dict)) else value


def _flow(value: Any) -> str:
    if isinstance(value, dict):
        return "{" + ", ".join(f"{_flow(str(name))}: {_flow(one)}" for name, one in value.items()) + "}"
    if isinstance(value, (list, tuple)):
        return "[" + ", ".join(map(_flow, value)) + "]"
    if isinstance(value, (bool, np.bool_)):
        return "true" if value else "false"
    if isinstance(value, (float, np.floating)) and not math.isfinite(value):
        return ".nan" if math.isnan(value) else ".inf" if value > 0 else "-.inf"
    if isinstance(value, (int, float, np.integer, np.floating)):
        return repr(value.item() if isinstance(value, np.generic) else value)
    return json.dumps(str(value))  # a text in quotes is the same in JSON and in YAML
