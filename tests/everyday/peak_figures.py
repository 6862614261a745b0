#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes PeakFigures.inc: peaks of random courses without flat tops, by scipy.signal.find_peaks.

Heights and prominences are SciPy's; distances are left out, since SciPy compares all peaks of a course, which a stream
never has. Run it with Debian's python3-numpy and python3-scipy:

    tests/everyday/peak_figures.py > tests/everyday/PeakFigures.inc
"""
import numpy as np
import scipy
from scipy import signal

random = np.random.default_rng(8)
print(f"// SPDX-License-Identifier: MIT\n// Written by peak_figures.py with SciPy {scipy.__version__}.\n"
      "// {height, prominence, {course}, {places of the peaks}}")
for course in (np.cumsum(random.normal(0, 1, 150)), random.normal(0, 1, 100), np.sin(np.arange(120) / 5.0)
               + 0.2 * random.normal(0, 1, 120)):
    course = np.round(course, 6)
    for height, prominence in ((-100.0, 0.0), (-100.0, 0.7), (0.5, 1.5), (-0.5, 3.0)):
        # A peak at an end of the course has no lower value on one side.
        places, _ = signal.find_peaks(course, height=height, prominence=prominence)
        print(f"{{{height}, {prominence},\n {{" + ", ".join(map(repr, course.tolist())) + "},\n {"
              + ", ".join(map(str, places.tolist())) + "}},")
