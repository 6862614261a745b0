#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Simulates a tremor under voluntary movement as a watch would record it, with the truth in a second file.

    simulate_tremor.py [--tremor A] [--voluntary V] [--seed N] [FOLDER]

writes FOLDER/tremor-wrist.csv and FOLDER/tremor-wrist-truth.csv (FOLDER: where this script is). Nothing here was measured.
One turn rate in radians a second, 100 rows a second for two minutes, is the sum of

  tremor       A (default 0.05) times a sine of 4.7 to 5.3 Hz, whose frequency swings in 23 s and whose size swings by a
               quarter in 3.7 s, with a fifth of its second harmonic; from 15 to 35 s, 55 to 75 s and 95 to 110 s, growing
               and fading over 0.8 s
  voluntary    reaching movements one after the other, each of a bell-shaped speed as hands have it, of 0.5 to 1.5 s, up to
               V (default 5) fast to either side, with pauses of 0.4 s in the mean; all through the recording
  noise        of 0.003, and an offset of 0.01

The truth file says of each row whether it trembles (1 or 0) and at how many hertz. The same seed gives the same files.
"""

import argparse
import math
import os
import random

RATE = 100.0  # rows a second
SECONDS = 120.0
BURSTS = ((15.0, 35.0), (55.0, 75.0), (95.0, 110.0))  # seconds
BURST_EDGE = 0.8  # seconds in which a burst grows and fades
NOISE = 0.003  # radians a second, as is the offset
OFFSET = 0.010


def strength(t):
    """How far a burst has grown, from 0 to 1."""
    return max(min(max(min(t - begin, end - t) / BURST_EDGE, 0.0), 1.0) for begin, end in BURSTS)


def hertz(t):
    return 5.0 + 0.3 * math.sin(2.0 * math.pi * t / 23.0)


def movements(chance):
    """Of each reaching movement its begin, how long it takes and its greatest speed, as a part of the fastest."""
    begin = 2.0
    while begin < SECONDS - 2.0:
        length = chance.uniform(0.5, 1.5)
        yield begin, length, chance.uniform(0.3, 1.0) * chance.choice((-1.0, 1.0))
        begin += length + chance.expovariate(1.0 / 0.4)


def reaching(t, movement):
    """The speed of the smoothest way from one place to another, 1 at its greatest."""
    begin, length, speed = movement
    part = (t - begin) / length
    return speed * 16.0 * part * part * (1.0 - part) * (1.0 - part) if 0.0 < part < 1.0 else 0.0


def rows(tremor, voluntary, seed):
    """Of each row its time, what the sensor gives, whether it trembles, and the frequency."""
    chance = random.Random(seed)
    reaches = list(movements(chance))
    current = 0
    phase = 0.0
    for index in range(round(RATE * SECONDS)):
        t = index / RATE
        phase += 2.0 * math.pi * hertz(t) / RATE
        swing = 1.0 + 0.25 * math.sin(2.0 * math.pi * t / 3.7)
        trembling = strength(t) * swing * (math.sin(phase) + 0.2 * math.sin(2.0 * phase + 1.0))
        while current + 1 < len(reaches) and t >= reaches[current + 1][0]:
            current += 1
        reach = reaching(t, reaches[current])
        turn = tremor * trembling + voluntary * reach + chance.gauss(0.0, NOISE) + OFFSET
        yield t, turn, int(tremor > 0.0 and strength(t) > 0.0), hertz(t)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--tremor", type=float, default=0.05)
    parser.add_argument("--voluntary", type=float, default=5.0)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("folder", nargs="?", default=os.path.dirname(os.path.abspath(__file__)))
    options = parser.parse_args()
    recording = os.path.join(options.folder, "tremor-wrist.csv")
    truth = os.path.join(options.folder, "tremor-wrist-truth.csv")
    note = "# Simulated by simulate_tremor.py, not measured."
    # Written beside their final names, as results are, so that nobody reads half a recording.
    with open(recording + ".partial", "w", newline="\n") as out, open(truth + ".partial", "w", newline="\n") as known:
        print(note, f"Tremor {options.tremor:g}, voluntary movement {options.voluntary:g} rad/s.", file=out)
        print("t,turn [rad/s]", file=out)
        print(note, "What is true behind tremor-wrist.csv.", file=known)
        print("t,tremor,hertz", file=known)
        for t, turn, trembles, frequency in rows(options.tremor, options.voluntary, options.seed):
            print(f"{t:.2f},{turn:.6f}", file=out)
            print(f"{t:.2f},{trembles},{frequency:.4f}", file=known)
    os.replace(recording + ".partial", recording)
    os.replace(truth + ".partial", truth)
    print(f"{recording} and {truth}: simulated, {round(RATE * SECONDS)} rows each")


if __name__ == "__main__":
    main()
