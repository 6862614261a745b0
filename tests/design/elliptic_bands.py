#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes EllipticBands.inc: elliptic band-pass and band-stop filters of orders 1 to 10, as `EllipticDesigner` says that
it makes them, which is not the textbook's way: a real divisor in the quadratic of a band, surplus roots, and its own
reference value.

Prototypes are the textbook's, by the script beside this one; the rest follows the class comment in 50 decimal digits
(mpmath) and shares nothing with the code under test. The gain is a quotient of two sums that cancel in part, so with
it goes how many times larger their terms are: what doubles lose there. A band-pass of odd order from 3 on divides by
a zero; its gain is given as 0. Run it with Debian's python3-mpmath:

    tests/design/elliptic_bands.py > tests/design/EllipticBands.inc
"""
import mpmath as mp

from textbook_elliptic import PASS, STOP, expand, prototype

LOW, HIGH = mp.mpf("0.3"), mp.mpf("0.6")
NOTHING = mp.mpf(10) ** -25
WC = mp.tan((HIGH - LOW) * mp.pi / 2)
CGAM = mp.cos((HIGH + LOW) * mp.pi / 2) / mp.cos((HIGH - LOW) * mp.pi / 2)


def with_conjugate(z):
    return [z, mp.conj(z)] if abs(mp.im(z)) > NOTHING else [mp.mpc(mp.re(z))]


def mapped(root):
    w = WC * root
    square_root = mp.sqrt(4 * CGAM**2 - 4 * (1 - w * w))
    divisor = 2 * (1 - mp.re(w))  # without the imaginary part
    first = (2 * CGAM + square_root) / divisor
    roots = with_conjugate(first)
    if abs(mp.im(root)) > NOTHING or abs(mp.im(first)) <= NOTHING:
        roots += with_conjugate((2 * CGAM - square_root) / divisor)
    return roots


def reference(c, mode):
    if mode == 8:
        return sum(c)
    angle, middle = mp.acos(CGAM), (len(c) - 1) // 2
    if middle % 2 == 0:
        return c[middle] + sum(mp.cos(angle * j) * (c[middle + j] + c[middle - j]) for j in range(1, middle + 1))
    return sum(mp.sin(angle * j) * (c[middle + j] - c[middle - j]) for j in range(1, middle + 1))


def design(n, mode):
    zeros, poles = prototype(n)
    zeros, poles = zeros[: n // 2], poles[: (n + 1) // 2]  # one of each pair
    if mode == 8:
        # Each root over the square of its size, which is the reciprocal's conjugate.
        zeros, poles = ([r / abs(r) ** 2 for r in roots] for roots in (zeros, poles))
        zeros += [mp.mpc(0)] * (len(poles) - len(zeros))
    z_poles = [z for p in poles for z in mapped(p)]
    surplus = len(zeros)  # as many roots at 0 follow the zeros as there are zeros
    z_zeros = [z for r in zeros + [mp.mpc(0)] * surplus for z in mapped(r)][: len(z_poles)]
    while len(z_zeros) < len(z_poles):
        z_zeros += [mp.mpf(-1), mp.mpf(1)]
    x, y = expand(z_zeros), expand(z_poles)
    if abs(reference(x, mode)) < NOTHING:
        return 0, 0, x, y
    scale = 1 if n % 2 else mp.power(10, PASS / 20)
    gain = reference(y, mode) / (reference(x, mode) * scale)
    loss = sum(sum(abs(c) for c in terms) / abs(reference(terms, mode)) for terms in (x, y))
    return gain, loss, x, y


def main():
    print("// SPDX-License-Identifier: MIT")
    print(f"// Written by elliptic_bands.py with mpmath {mp.__version__}.")
    print(f"// Edges {float(LOW)!r} and {float(HIGH)!r}, pass band {float(PASS)!r} dB, stop band {float(STOP)!r} dB.")
    print("// {order, mode, gain, terms over sums, {x over gain, of z^0, z^-1, ...}, {y likewise}}; gain 0: rounding noise")
    for mode in (4, 8):
        for n in range(1, 11):
            gain, loss, x, y = design(n, mode)
            print(f"{{{n}, {mode}, {float(gain)!r}, {float(loss):.3g},")
            print(f" {{{', '.join(repr(float(v)) for v in x)}}},")
            print(f" {{{', '.join(repr(float(v)) for v in y)}}}}},")


main()
