#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What Python's steps and whole recordings cost beside scipy and numpy: medians of one run, in turns.

PYTHONPATH=build/release/python /usr/bin/python3 benchmarks/python_beside_scipy.py [--quick]
"""

import statistics
import sys
import time

import numpy as np
import scipy.signal
import velmarind

ROUNDS = 3 if "--quick" in sys.argv else 15


def seconds(act, times):
    begin = time.perf_counter()
    for _ in range(times):
        act()
    return (time.perf_counter() - begin) / times


def compare(title, ours, theirs, times):
    """Both in turns, so that whatever else the machine does falls on both."""
    took = [(seconds(ours, times), seconds(theirs, times)) for _ in range(ROUNDS)]
    mine, other = (statistics.median(column) for column in zip(*took))
    print(f"{title:48} {1e6 * mine:12.3f} us {1e6 * other:12.3f} us {other / mine:8.1f} times faster")


def main():
    rng = np.random.default_rng(1)
    few = 1 if "--quick" in sys.argv else 3
    sos = scipy.signal.butter(4, 5, output="sos", fs=100)
    row, rows = rng.normal(size=(1, 3)), rng.normal(size=(1_000_000, 3))
    frame = rng.normal(size=2000)
    state = np.repeat(scipy.signal.sosfilt_zi(sos)[:, :, None], 3, axis=2)
    block = velmarind.block("FilterButterworth", fs=100, Order=4, RelativeCutOffFreq="5 Hz")
    push, run = block.push, block.run

    def step_of_scipy():
        nonlocal state
        state = scipy.signal.sosfilt(sos, row, axis=0, zi=state)[1]

    print(f"{'':48} {'velmarind':>15} {'scipy, numpy':>15}")
    compare("a row through a block that remembers", lambda: push(row), step_of_scipy, 2000)
    compare("1,000,000 rows of 3 through a block", lambda: run(rows), lambda: scipy.signal.sosfilt(sos, rows, axis=0), few)
    compare("the same by lowpass", lambda: velmarind.lowpass(rows, cutoff=5, fs=100),
            lambda: scipy.signal.sosfilt(sos, rows, axis=0), few)
    compare("a spectrum of 2000 rows", lambda: velmarind.spectrum(frame, fs=100, window=None),
            lambda: 2 * np.abs(np.fft.rfft(frame)) / 2000, 100)


if __name__ == "__main__":
    main()
