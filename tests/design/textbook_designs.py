#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes TextbookDesigns.inc: Bessel, Butterworth and Chebyshev filters of orders 1 to 10 in four band shapes.

The road is the textbook's, in 60 decimal digits (mpmath), and shares nothing with the code under test: Bessel
prototypes are the roots of the reverse Bessel polynomial found numerically and scaled for -3 dB at 1 rad/s by bisection;
bands are formed by solving the quadratics of s -> (s^2 + w0^2) / (B s); the bilinear mapping is prewarped. Each set of
poles is then compared with SciPy's own design. Run it with Debian's python3-mpmath and python3-scipy:

    tests/design/textbook_designs.py > tests/design/TextbookDesigns.inc
"""
import mpmath as mp
import numpy as np
import scipy
from scipy import signal

mp.mp.dps = 60
LOW, HIGH, RIPPLE = mp.mpf("0.2"), mp.mpf("0.35"), mp.mpf("0.5")
MODES = {"lowpass": 1, "highpass": 2, "bandpass": 4, "bandstop": 8}


def bessel_poles(n):
    coefficients = [mp.factorial(2 * n - k) / (mp.mpf(2) ** (n - k) * mp.factorial(k) * mp.factorial(n - k))
                    for k in range(n, -1, -1)]
    roots = mp.polyroots(coefficients, maxsteps=2000, extraprec=2000)
    def power(w):
        return abs(coefficients[-1] / mp.polyval(coefficients, 1j * w)) ** 2
    low, high = mp.mpf("0.1"), mp.mpf(100)
    for _ in range(250):
        middle = (low + high) / 2
        low, high = (middle, high) if power(middle) > mp.mpf(1) / 2 else (low, middle)
    return [r / low for r in roots]


def butterworth_poles(n):
    return [mp.expjpi(mp.mpf(2 * k + n + 1) / (2 * n)) for k in range(n)]


def chebyshev_poles(n):
    eps = mp.sqrt(mp.power(10, RIPPLE / 10) - 1)
    mu = mp.asinh(1 / eps) / n
    return [mp.mpc(-mp.sinh(mu) * mp.sin(t), mp.cosh(mu) * mp.cos(t))
            for t in (mp.pi * mp.mpf(2 * k + 1) / (2 * n) for k in range(n))]


def band(poles, mode):
    """The prototype's poles and no zeros, moved into the band shape."""
    w1, w2 = (2 * mp.tan(mp.pi * f / 2) for f in (LOW, HIGH))
    n, width, square = len(poles), w2 - w1, w1 * w2
    if mode == 1:
        return [w1 * p for p in poles], []
    if mode == 2:
        return [w1 / p for p in poles], [mp.mpf(0)] * n
    halves = [p * width / 2 if mode == 4 else width / p / 2 for p in poles]
    split = [h + sign * mp.sqrt(h * h - square) for h in halves for sign in (1, -1)]
    centre = mp.sqrt(square)
    return split, [mp.mpf(0)] * n if mode == 4 else [mp.mpc(0, s * centre) for s in (1, -1)] * n


def expand(roots):
    """Coefficients of the product of (z - root), rising powers."""
    c = [mp.mpf(1)]
    for r in roots:
        c = [(c[i - 1] if i else 0) - (r * c[i] if i < len(c) else 0) for i in range(len(c) + 1)]
    assert all(abs(mp.im(v)) < mp.mpf(10) ** -40 for v in c)
    return [mp.re(v) for v in c]


def design(poles, mode):
    s_poles, s_zeros = band(poles, mode)
    z_poles, z_zeros = ([(2 + s) / (2 - s) for s in roots] for roots in (s_poles, s_zeros))
    z_zeros += [mp.mpf(-1)] * (len(z_poles) - len(z_zeros))
    def response(z):
        return mp.fprod(z - r for r in z_zeros) / mp.fprod(z - r for r in z_poles)
    if mode == 8:
        gain = mp.sqrt(abs(response(1) * response(-1)))
    else:
        gain = abs(response({1: 1, 2: -1, 4: mp.expjpi((LOW + HIGH) / 2)}[mode]))
    return z_poles, gain, expand(z_zeros), [-c for c in expand(z_poles)]


def scipy_poles(family, n, mode):
    name = {1: "lowpass", 2: "highpass", 4: "bandpass", 8: "bandstop"}[mode]
    edges = float(LOW) if mode < 4 else [float(LOW), float(HIGH)]
    if family == "Bessel":
        return signal.bessel(n, edges, name, output="zpk", norm="mag")[1]
    if family == "Butterworth":
        return signal.butter(n, edges, name, output="zpk")[1]
    return signal.cheby1(n, float(RIPPLE), edges, name, output="zpk")[1]


def text(value):
    return repr(float(value))


def main():
    print("// SPDX-License-Identifier: MIT")
    print(f"// Written by textbook_designs.py with mpmath {mp.__version__} and SciPy {scipy.__version__}.")
    print(f"// Cut-offs {text(LOW)} and {text(HIGH)}, Chebyshev ripple {text(RIPPLE)} dB, bilinear mapping.")
    print("// {family, order, mode, gain, {poles with non-negative imaginary part}, {x of z^0, z^1, ...}, {y likewise}}")
    for family, prototype in (("Bessel", bessel_poles), ("Butterworth", butterworth_poles),
                              ("Chebyshev", chebyshev_poles)):
        for n in range(1, 11):
            for mode in MODES.values():
                poles, gain, x, y = design(prototype(n), mode)
                theirs = scipy_poles(family, n, mode)
                worst = max(min(abs(complex(p) - q) for q in theirs) for p in poles)
                assert worst < 1e-11, (family, n, mode, worst)
                upper = sorted((p for p in poles if mp.im(p) > -mp.mpf(10) ** -40), key=lambda p: float(mp.im(p)))
                pairs = ", ".join(f"{{{text(mp.re(p))}, {text(max(mp.im(p), 0))}}}" for p in upper)
                print(f'{{"{family}", {n}, {mode}, {text(gain)}, {{{pairs}}},')
                print(f" {{{', '.join(map(text, x))}}},")
                print(f" {{{', '.join(map(text, y))}}}}},")


main()
