#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes MovingFigures.inc: statistics of a trace of two columns over its last 7 samples, by numpy and scipy.

Of the first rows as many samples as there are count. Run it with Debian's python3-numpy and python3-scipy:

    tests/everyday/moving_figures.py > tests/everyday/MovingFigures.inc
"""
import numpy as np
import scipy
from scipy import stats

WINDOW = 7
RULES = {
    "Mean": lambda x: np.mean(x),
    "StandardDeviation": lambda x: np.std(x),
    "RMS": lambda x: np.sqrt(np.mean(np.square(x))),
    "Minimum": lambda x: np.min(x),
    "Maximum": lambda x: np.max(x),
    "Median": lambda x: np.median(x),
    "Range": lambda x: np.ptp(x),
}

random = np.random.default_rng(15)
trace = np.column_stack([random.normal(1000.0, 0.25, 40), random.laplace(0.0, 3.0, 40)])
print(f"// SPDX-License-Identifier: MIT\n// Written by moving_figures.py with NumPy {np.__version__} and SciPy "
      f"{scipy.__version__}: the last {WINDOW} samples.\n// {{kind, {{trace, row by row}}, {{statistic, row by row}}}}")
for number, (name, rule) in enumerate(RULES.items()):
    windows = [trace[max(0, n + 1 - WINDOW):n + 1] for n in range(len(trace))]
    figures = [rule(window[:, column]) for window in windows for column in range(2)]
    if name == "StandardDeviation":
        assert np.allclose(figures[20:], [stats.tstd(w[:, c], ddof=0) for w in windows[10:] for c in range(2)])
    print(f'{{"{name}", {number}, {{' + ", ".join(map(repr, trace.ravel().tolist())) + "},\n {"
          + ", ".join(repr(float(x)) for x in figures) + "}},")
