#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the results of tremor.yaml, flags.yaml and vectors.yaml with what is true behind the simulated wrist.

    compare_with_truth.py FOLDER    FOLDER holds tremor.csv, flags.csv and vectors.csv

The recording and its truth are read from where this script is. Prints Markdown tables.
"""

import csv
import math
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
RATE = 100.0
TREMOR_HERTZ = 5.0  # as simulate_wrist.py has it
# What FilterBandPass makes of 5 Hz: its lower edge takes a low-pass off the signal, which lifts what lies just above.
BAND_GAIN = 1.215
TREMOR_RATE = 2.0 * math.pi * TREMOR_HERTZ * math.radians(1.5)  # radians a second, about the forearm


def table(path):
    with open(path, newline="") as lines:
        for row in csv.DictReader(line for line in lines if not line.startswith("#")):
            yield {name: float(cell) if cell else None for name, cell in row.items()}


def degrees_between(a, b):
    dot = sum(x * y for x, y in zip(a, b))
    cross = math.dist((a[1] * b[2], a[2] * b[0], a[0] * b[1]), (a[2] * b[1], a[0] * b[2], a[1] * b[0]))
    return math.degrees(math.atan2(cross, dot))


def sensed(q, v):
    """An Earth vector in the sensor's frame: v turned back by the attitude."""
    w, x, y, z = q
    u = (-x, -y, -z)
    t = [2.0 * c for c in (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])]
    c = (u[1] * t[2] - u[2] * t[1], u[2] * t[0] - u[0] * t[2], u[0] * t[1] - u[1] * t[0])
    return [v[i] + w * t[i] + c[i] for i in range(3)]


def share(part, whole):
    return f"{100.0 * part / whole:.1f} %" if whole else "-"


def flag_line(name, pairs):
    """pairs: (flagged, true) of each row."""
    pairs = list(pairs)
    true = sum(1 for _, t in pairs if t)
    hit = sum(1 for f, t in pairs if f and t)
    wrong = sum(1 for f, t in pairs if f and not t)
    print(f"| {name} | {len(pairs)} | {true} | {share(hit, true)} | {share(wrong, len(pairs) - true)} |")


def error_line(name, errors):
    errors = sorted(errors)
    rms = math.sqrt(sum(e * e for e in errors) / len(errors))
    print(f"| {name} | {rms:.2f} | {errors[len(errors) // 2]:.2f} | {errors[int(0.95 * len(errors))]:.2f} |")


def compare_flags(folder, truth):
    rows = list(table(os.path.join(folder, "flags.csv")))
    print("| flag | rows | truly so | flagged of those | flagged of the others |\n|---|---|---|---|---|")
    flag_line("rest", ((r["rest"] == 1, t["rest"]) for r, t in zip(rows, truth) if r["rest"] is not None))
    for name, columns in (("at a limit, any axis", ("lx", "ly", "lz")), ("stuck at a limit, any axis", ("sx", "sy", "sz"))):
        flag_line(name, ((any(r[c] == 1 for c in columns), t["clipped"]) for r, t in zip(rows, truth)))


def compare_tremor(folder, truth):
    rows = list(table(os.path.join(folder, "tremor.csv")))
    begin = None
    print("| burst, s | within 0.2 Hz after | frequency from 3 s on, Hz | size from 3 s on, of the true one |\n|---|---|---|---|")
    for i in range(len(rows) + 1):
        trembles = i < len(rows) and truth[i]["tremor"]
        if trembles and begin is None:
            begin = i
        if not trembles and begin is not None:
            burst = rows[begin:i]
            hertz = [r["w"] * RATE / (2.0 * math.pi) for r in burst]
            edge = int(0.8 * RATE)  # a burst fades at its end
            last = max((k for k, f in enumerate(hertz[:-edge]) if abs(f - TREMOR_HERTZ) > 0.2), default=-1)
            middle = slice(int(3 * RATE), len(burst) - edge)
            sizes = [math.hypot(r["sine"], r["cosine"]) / (TREMOR_RATE * BAND_GAIN) for r in burst[middle]]
            print(f"| {rows[begin]['t']:.0f} to {rows[i - 1]['t']:.0f} | {(last + 1) / RATE:.2f} s | "
                  f"{min(hertz[middle]):.2f} to {max(hertz[middle]):.2f} | {min(sizes):.2f} to {max(sizes):.2f} |")
            begin = None


def compare_vectors(folder, truth):
    rows = list(table(os.path.join(folder, "vectors.csv")))
    wrist = list(table(os.path.join(HERE, "wrist.csv")))
    inclination = math.radians(63.0)
    north = (math.cos(inclination), 0.0, -math.sin(inclination))
    print("| direction | root mean square, degrees | median | 95 % are below |\n|---|---|---|---|")

    def up(q):
        return sensed(q, (0.0, 0.0, 1.0))

    q = [(t["qw"], t["qx"], t["qy"], t["qz"]) for t in truth]
    pick = lambda source, *names: [[r[n] for n in names] for r in source]
    for name, vectors, true in (
        ("up, accelerometer as it is", pick(wrist, "ax", "ay", "az"), [up(a) for a in q]),
        ("up, ordinary low-pass", pick(rows, "px", "py", "pz"), [up(a) for a in q]),
        ("up, smoothed in the Earth's frame", pick(rows, "ux", "uy", "uz"), [up(a) for a in q]),
        ("field, magnetometer as it is", pick(wrist, "mx", "my", "mz"), [sensed(a, north) for a in q]),
        ("field, smoothed in the Earth's frame", pick(rows, "mx", "my", "mz"), [sensed(a, north) for a in q]),
    ):
        error_line(name, [degrees_between(v, t) for v, t in zip(vectors, true)])


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__.split("\n\n")[1])
    truth = list(table(os.path.join(HERE, "wrist-truth.csv")))
    for compare in (compare_tremor, compare_flags, compare_vectors):
        compare(sys.argv[1], truth)
        print()


if __name__ == "__main__":
    main()
