#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes ButterworthFigures.h: what the textbook bilinear Butterworth low-pass makes of a test signal.

The design is the zero-pole form of any textbook: prototype poles on the unit circle, scaled by the prewarped cut-off,
mapped by z = (1 + s) / (1 - s); as many zeros at -1; unit gain at zero frequency. The recursion runs in direct form over
60 digits, its past being the first input for ever. Each design is checked against scipy.signal.butter on the way.

    tests/design/butterworth_figures.py > tests/design/ButterworthFigures.h
"""
import mpmath
import numpy
import scipy
import scipy.signal
from mpmath import mp, mpf

mp.dps = 60
ORDERS = range(1, 11)
CUT_OFFS = ["0.05", "0.2", "0.5", "0.8"]
STEPS = [1, 2, 5, 17, 40]


def signal(n):
    return mpf((37 * n * n + 11 * n + 5) % 64) / 32 - 1


def polynomial(roots):
    coefficients = [mpf(1)]
    for root in roots:
        shifted = coefficients + [mpf(0)]
        for i, c in enumerate(coefficients):
            shifted[i + 1] -= root * c
        coefficients = shifted
    return [mpmath.re(c) for c in coefficients]


def design(order, cut_off):
    # The cut-off is the double that the filter gets, not the decimal fraction.
    warped = mpmath.tan(mp.pi * mpf(float(cut_off)) / 2)
    prototype = [mpmath.expjpi(mpf(2 * k + order + 1) / (2 * order)) for k in range(order)]
    poles = [(1 + warped * s) / (1 - warped * s) for s in prototype]
    a = polynomial(poles)
    b = polynomial([mpf(-1)] * order)
    gain = sum(a) / sum(b)
    expected = sorted(scipy.signal.butter(order, float(cut_off), output="zpk")[1], key=lambda z: (z.real, z.imag))
    ours = sorted((complex(p) for p in poles), key=lambda z: (z.real, z.imag))
    assert numpy.allclose(numpy.sort_complex(numpy.round(ours, 10)), numpy.sort_complex(numpy.round(expected, 10)), atol=1e-9)
    return [gain * c for c in b], a


def trace(order, cut_off):
    b, a = design(order, cut_off)
    x = [signal(0)] * order
    y = [signal(0)] * order
    for n in range(max(STEPS) + 1):
        x.append(signal(n))
        y.append(sum(b[i] * x[-1 - i] for i in range(order + 1)) - sum(a[i] * y[-i] for i in range(1, order + 1)))
    assert abs(y[order] - signal(0)) < mpf(10) ** -45
    return [y[order + n] for n in STEPS]


print("// SPDX-License-Identifier: MIT")
print("#pragma once")
print()
print("#include <array>")
print()
print("// Written by butterworth_figures.py, which tells the formulas; "
      f"mpmath {mpmath.__version__}, poles checked with scipy {scipy.__version__}.")
print()
print("/// The textbook low-pass at a few steps of the signal x(n) = ((37 n n + 11 n + 5) mod 64) / 32 - 1.")
print("struct ButterworthFigures {")
print("    int order;")
print("    double cutOff;")
print(f"    std::array<double, {len(STEPS)}> output;")
print("};")
print()
print(f"inline constexpr std::array<int, {len(STEPS)}> kButterworthSteps = {{{', '.join(map(str, STEPS))}}};")
print()
print("// clang-format off")
print(f"inline constexpr std::array<ButterworthFigures, {len(ORDERS) * len(CUT_OFFS)}> kButterworthFigures = {{{{")
for order in ORDERS:
    for cut_off in CUT_OFFS:
        values = ", ".join(mpmath.nstr(v, 17, min_fixed=-1, max_fixed=1) for v in trace(order, cut_off))
        print(f"    {{{order}, {cut_off}, {{{{{values}}}}}}},")
print("}};")
print("// clang-format on")
