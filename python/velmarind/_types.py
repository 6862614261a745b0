# SPDX-License-Identifier: MIT
"""Names for types that annotations use."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import NDArray

Floats = NDArray[np.float64]
Setting = Any  # a number, a flag, a label, a text with a unit, or a matrix
