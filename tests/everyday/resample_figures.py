#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes ResampleFigures.inc: 600 samples at 100 Hz brought to 25 Hz by scipy.signal.resample_poly.

The signal has 2.3 and 7.1 Hz, which pass, and 16.9 and 31 Hz, which don't. SciPy's filter is another one, three times
as long as its default, so the two agree as far as both let everything pass. Run it with Debian's python3-numpy and
python3-scipy:

    tests/everyday/resample_figures.py > tests/everyday/ResampleFigures.inc
"""
import numpy as np
import scipy
from scipy import signal

time = np.arange(600) / 100.0
course = sum(a * np.sin(2 * np.pi * f * time + p) for a, f, p in
             ((1.0, 2.3, 0.4), (0.5, 7.1, 1.0), (0.7, 16.9, 2.0), (0.4, 31.0, 0.1)))
down = signal.resample_poly(course, 1, 4, window=signal.firwin(481, 0.225, window=("kaiser", 7.0)))
print(f"// SPDX-License-Identifier: MIT\n// Written by resample_figures.py with SciPy {scipy.__version__}.\n"
      "// {{samples at 100 Hz}, {samples at 25 Hz}}")
print("{{" + ", ".join(map(repr, course.tolist())) + "},\n {" + ", ".join(map(repr, down.tolist())) + "}}")
