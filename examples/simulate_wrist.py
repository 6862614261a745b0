#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Simulates two minutes of a wrist and writes it as a recording, with the truth behind it in a second file.

    simulate_wrist.py [FOLDER]      writes FOLDER/wrist.csv and FOLDER/wrist-truth.csv (FOLDER: where this script is)

Nothing here was measured. A forearm turns about its elbow from posture to posture, rests, trembles at 5 Hz in bursts and
is knocked a few times, harder than the accelerometer can tell. The sensor sits at the wrist and is sampled at 100 Hz:

  accelerometer   ax ay az   in gravities: at rest a vector of length 1 that points up; clipped at 2 on each axis
  gyroscope       gx gy gz   in radians a second, with a small constant offset
  magnetometer    mx my mz   the Earth's field scaled to length 1

All in the sensor's frame, x along the forearm. The Earth's frame has x north, y west, z up. The truth file holds, for
each row, the attitude as a quaternion that turns sensor vectors into Earth vectors (qw qx qy qz), the direction of up in
the sensor's frame as it would be without the tremor (ux uy uz), and whether the wrist is at rest, in a tremor burst, and
clipped (1 or 0).

The same seed gives the same files.
"""

import math
import os
import random
import sys

RATE = 100.0  # rows a second
SECONDS = 120.0
SEED = 20240501

FOREARM = 0.25  # metres from the elbow to the sensor
GRAVITY = 9.81  # metres a second squared
CLIP = 2.0  # gravities
ACCEL_NOISE = 0.004  # gravities
GYRO_NOISE = 0.004  # radians a second
GYRO_OFFSET = (0.010, -0.006, 0.004)  # radians a second
MAG_NOISE = 0.004
INCLINATION = math.radians(63.0)  # how steeply the Earth's field points down

TREMOR_HERTZ = 5.0
TREMOR_FLEXION = math.radians(0.5)
TREMOR_PRONATION = math.radians(1.5)
BURSTS = ((14.0, 24.0), (41.0, 49.0), (68.0, 83.0), (101.0, 110.0))  # seconds
BURST_EDGE = 0.8  # seconds in which a burst grows and fades

# Seconds at which a movement begins, and the posture that it leads to: roll, pitch, yaw in degrees.
POSTURES = (
    (0.0, (0, 0, 0)),
    (8.0, (40, -15, 10)),
    (26.0, (-50, 20, 35)),
    (36.0, (10, 45, 60)),
    (52.0, (75, 5, 20)),
    (60.0, (0, -35, -20)),
    (86.0, (-30, 10, -45)),
    (95.0, (20, 60, 0)),
    (112.0, (0, 0, 0)),
)
MOVEMENT = 2.5  # seconds from posture to posture

KNOCKS = ((12.3, 2, 3.1), (33.1, 1, -2.8), (57.7, 2, 3.4), (58.4, 0, -3.0), (92.6, 1, 2.9))  # time, axis, gravities
KNOCK_SECONDS = 0.04


def smooth(x):
    """From 0 to 1 with the first and second derivative 0 at both ends."""
    x = min(max(x, 0.0), 1.0)
    return x * x * x * (x * (6.0 * x - 15.0) + 10.0)


def product(a, b):
    """Hamilton's, of two quaternions."""
    aw, ax, ay, az = a
    bw, bx, by, bz = b
    return (
        aw * bw - ax * bx - ay * by - az * bz,
        aw * bx + ax * bw + ay * bz - az * by,
        aw * by - ax * bz + ay * bw + az * bx,
        aw * bz + ax * by - ay * bx + az * bw,
    )


def conjugate(q):
    return (q[0], -q[1], -q[2], -q[3])


def turned(q, v):
    """The vector v, turned by q."""
    return product(product(q, (0.0, *v)), conjugate(q))[1:]


def about(axis, angle):
    """The turn by an angle about one of the axes 0, 1, 2."""
    vector = [0.0, 0.0, 0.0]
    vector[axis] = math.sin(0.5 * angle)
    return (math.cos(0.5 * angle), *vector)


def posture(t):
    """Roll, pitch and yaw in degrees, without the tremor."""
    angles = POSTURES[0][1]
    for begin, target in POSTURES[1:]:
        part = smooth((t - begin) / MOVEMENT)
        angles = tuple(a + (b - a) * part for a, b in zip(angles, target))
    return angles


def burst(t):
    """How strong the tremor is, from 0 to 1."""
    return max(smooth((t - begin) / BURST_EDGE) * smooth((end - t) / BURST_EDGE) for begin, end in BURSTS)


def calm_attitude(t):
    roll, pitch, yaw = (math.radians(angle) for angle in posture(t))
    return product(product(about(2, yaw), about(1, pitch)), about(0, roll))


def attitude(t):
    strength = burst(t)
    phase = 2.0 * math.pi * TREMOR_HERTZ * t
    flexion = about(1, strength * TREMOR_FLEXION * math.sin(phase))
    pronation = about(0, strength * TREMOR_PRONATION * math.sin(phase + 0.6))
    return product(product(calm_attitude(t), flexion), pronation)


def turn_rate(t):
    """The rate in the sensor's frame, from the turn between just before and just after."""
    h = 1e-4
    w, x, y, z = product(conjugate(attitude(t - h)), attitude(t + h))
    sine = math.sqrt(x * x + y * y + z * z)
    scale = 1.0 / h if sine < 1e-12 else math.atan2(sine, w) / (h * sine)
    return (x * scale, y * scale, z * scale)


def movement(t):
    """The wrist's acceleration in the Earth's frame, in gravities: the elbow stays where it is."""
    h = 1e-3
    before, here, after = (turned(attitude(t + step), (FOREARM, 0.0, 0.0)) for step in (-h, 0.0, h))
    return tuple((a - 2.0 * b + c) / (h * h * GRAVITY) for a, b, c in zip(before, here, after))


def knock(t, axis):
    force = 0.0
    for begin, where, height in KNOCKS:
        part = (t - begin) / KNOCK_SECONDS
        if where == axis and 0.0 <= part <= 1.0:
            force += height * math.sin(math.pi * part)
    return force


def is_moving(t):
    return any(begin <= t <= begin + MOVEMENT for begin, _ in POSTURES[1:])


def is_knocked(t):
    return any(begin <= t <= begin + KNOCK_SECONDS for begin, _, _ in KNOCKS)


def rows():
    """For each row its time, what the sensors give, what is true, and the flags."""
    noise = random.Random(SEED)
    field = (math.cos(INCLINATION), 0.0, -math.sin(INCLINATION))
    for index in range(round(RATE * SECONDS)):
        t = index / RATE
        q = attitude(t)
        back = conjugate(q)
        up = turned(conjugate(calm_attitude(t)), (0.0, 0.0, 1.0))
        force = turned(back, tuple(a + g for a, g in zip(movement(t), (0.0, 0.0, 1.0))))
        force = [f + knock(t, axis) + noise.gauss(0.0, ACCEL_NOISE) for axis, f in enumerate(force)]
        accel = [min(max(f, -CLIP), CLIP) for f in force]
        gyro = [w + o + noise.gauss(0.0, GYRO_NOISE) for w, o in zip(turn_rate(t), GYRO_OFFSET)]
        mag = [m + noise.gauss(0.0, MAG_NOISE) for m in turned(back, field)]
        trembles = burst(t) > 0.0
        rests = not (trembles or is_moving(t) or is_knocked(t))
        clipped = any(abs(a) >= CLIP for a in accel)
        yield t, (*accel, *gyro, *mag), (*q, *up), (int(rests), int(trembles), int(clipped))


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    recording = os.path.join(folder, "wrist.csv")
    truth = os.path.join(folder, "wrist-truth.csv")
    note = "# Simulated by simulate_wrist.py, not measured."
    # Written beside their final names, as results are, so that nobody reads half a recording.
    with open(recording + ".partial", "w", newline="\n") as out, open(truth + ".partial", "w", newline="\n") as known:
        print(note + " Gravities, radians a second, the Earth's field at length 1.", file=out)
        print("t,ax,ay,az,gx,gy,gz,mx,my,mz", file=out)
        print(note + " What is true behind wrist.csv.", file=known)
        print("t,qw,qx,qy,qz,ux,uy,uz,rest,tremor,clipped", file=known)
        for t, sensed, actual, flags in rows():
            print(f"{t:.2f}," + ",".join(f"{value:.5f}" for value in sensed), file=out)
            print(f"{t:.2f}," + ",".join(f"{value:.6f}" for value in actual) + "," + ",".join(map(str, flags)), file=known)
    os.replace(recording + ".partial", recording)
    os.replace(truth + ".partial", truth)
    print(f"{recording} and {truth}: simulated, {round(RATE * SECONDS)} rows each")


if __name__ == "__main__":
    main()
