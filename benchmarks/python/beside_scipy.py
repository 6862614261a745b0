#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What the package costs beside SciPy on the same arrays, in one run: medians of rounds in which the two take turns.

    PYTHONPATH=build/release/python /usr/bin/python3 benchmarks/python/beside_scipy.py [--quick]

A ratio above 1 says how many times as fast ours is. Times are those of the processor, so that other work on the machine
counts for less; the goals are printed beside them and nothing fails."""

import ctypes
import pathlib
import statistics
import sys
import time
from collections.abc import Callable

import numpy as np
from scipy.signal import butter, sosfilt, sosfilt_zi

import velmarind
from velmarind import _native

QUICK = "--quick" in sys.argv
ROUNDS = 3 if QUICK else 15
ROWS = 10_000 if QUICK else 1_000_000


def seconds(action, count: int) -> float:
    start = time.process_time()
    for _ in range(count):
        action()
    return (time.process_time() - start) / count


def compare(name: str, ours, theirs, counts: tuple[int, int], unit: float, goal: str) -> None:
    pairs = [(seconds(ours, counts[0]), seconds(theirs, counts[1])) for _ in range(ROUNDS)]
    mine, other = (statistics.median(column) for column in zip(*pairs))
    ratio = statistics.median(b / a for a, b in pairs)
    print(f"| {name} | {mine / unit:.3f} | {other / unit:.3f} | {ratio:.1f} | {goal} |")


def bare_loops(table: np.ndarray, relative: float) -> list[tuple[str, Callable[[], np.ndarray]]]:
    """Loops in C++ over the same rows, into a new array each time; none where they aren't built."""
    built = pathlib.Path(_native.__file__).parents[2] / "bin" / "bare_lowpass.so"
    if not built.exists():
        return []
    library = ctypes.CDLL(str(built))
    padded = np.append(table.ravel(), 0.0)  # for a lane that overhangs

    def over_rows(name: str) -> Callable[[], np.ndarray]:
        loop = getattr(library, name)
        loop.argtypes = [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_long, ctypes.c_double]
        loop.restype = None

        def run() -> np.ndarray:
            results = np.empty(padded.size)
            loop(padded.ctypes.data, results.ctypes.data, len(table), relative)
            return results[:-1].reshape(table.shape)

        return run

    return [("the bare arithmetic", over_rows("bareLowpass")), ("the engine, row by row", over_rows("engineLowpass"))]


def beside_bare(table: np.ndarray, order: int, cut: float, fs: float) -> None:
    """`lowpass` beside loops in C++: a ratio below 1 says that ours is faster."""
    loops = bare_loops(table, cut / (fs / 2))
    if not loops:
        return print("\nThe bare loops in C++ aren't built (the target bare_lowpass).")
    ours = lambda: velmarind.lowpass(table, cutoff=cut, fs=fs, order=order)  # noqa: E731
    if not np.array_equal(loops[1][1](), ours()):
        raise SystemExit("the engine and lowpass differ")
    print("\n| what | ours | C++ | ours to C++ | goal |\n| --- | --- | --- | --- | --- |")
    for name, loop in loops:
        pairs = [(seconds(ours, 1), seconds(loop, 1)) for _ in range(ROUNDS)]
        mine, other = (statistics.median(column) for column in zip(*pairs))
        ratio = statistics.median(a / b for a, b in pairs)
        print(f"| lowpass, {len(table)} rows of 3, milliseconds, to {name} | {mine * 1e3:.3f} | {other * 1e3:.3f} "
              f"| {ratio:.2f} | 1.3 |")


def main() -> None:
    order, cut, fs = 4, 5.0, 100.0
    block = _native.Block("FilterButterworth", {"Order": order, "RelativeCutOffFreq": f"{cut} Hz"}, fs=fs)
    sections = butter(order, cut, fs=fs, output="sos")
    table = np.random.default_rng(1).standard_normal((ROWS, 3))
    row = table[:1].copy()
    state = np.repeat(sosfilt_zi(sections)[:, :, np.newaxis], 3, axis=2)
    start = state * table[0]
    difference = np.abs(block.run(table) - sosfilt(sections, table, axis=0, zi=start)[0]).max()
    print(f"largest difference from SciPy's steady start: {difference:.1e}\n")
    print("| what | ours | SciPy | ratio | goal |\n| --- | --- | --- | --- | --- |")
    scale = 10 if QUICK else 1
    push = block.push
    compare("one row of 3, with state, microseconds", lambda: push(row), lambda: sosfilt(sections, row, axis=0, zi=state),
            (20_000 // scale, 2_000 // scale), 1e-6, "35")
    compare(f"{ROWS} rows of 3, milliseconds", lambda: block.push(table), lambda: sosfilt(sections, table, axis=0),
            (1, 1), 1e-3, "2")
    single = np.ascontiguousarray(table[:, :1])
    compare(f"{ROWS} rows of 1, milliseconds", lambda: block.push(single), lambda: sosfilt(sections, single, axis=0),
            (1, 1), 1e-3, "-")
    wide = np.ascontiguousarray(np.tile(table[: ROWS // 10], (1, 8)))
    compare(f"{ROWS // 10} rows of 24, milliseconds", lambda: block.push(wide), lambda: sosfilt(sections, wide, axis=0),
            (1, 1), 1e-3, "-")
    compare(f"lowpass, {ROWS} rows of 3, milliseconds", lambda: velmarind.lowpass(table, cutoff=cut, fs=fs, order=order),
            lambda: sosfilt(sections, table, axis=0, zi=start), (1, 1), 1e-3, "2")
    beside_bare(table, order, cut, fs)


if __name__ == "__main__":
    main()
