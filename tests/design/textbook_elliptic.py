#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes TextbookElliptic.inc: elliptic high-pass filters of orders 1 to 10, low-pass of order 1 and even orders.

The road is the textbook's, in 50 decimal digits (mpmath), and shares nothing with the code under test: the modulus
comes from the degree equation n K'(k)/K(k) = K'(k1)/K(k1) solved by bisection, the roots from mpmath's own elliptic
integrals and functions. Each set of poles is then compared with SciPy's own design. Run it with Debian's
python3-mpmath and python3-scipy:

    tests/design/textbook_elliptic.py > tests/design/TextbookElliptic.inc
"""
import mpmath as mp

mp.mp.dps = 50
CUT_OFF, PASS, STOP = mp.mpf("0.2"), mp.mpf("0.5"), mp.mpf(40)


def prototype(n):
    """Zeros and poles of the analogue low-pass with its pass-band edge at 1 rad/s."""
    eps = mp.sqrt(mp.power(10, PASS / 10) - 1)
    if n == 1:
        return [], [-1 / eps]
    m1 = (eps / mp.sqrt(mp.power(10, STOP / 10) - 1)) ** 2
    wanted = mp.ellipk(1 - m1) / mp.ellipk(m1) / n
    low, high = mp.mpf(10) ** -40, 1 - mp.mpf(10) ** -40
    for _ in range(400):
        m = (low + high) / 2
        low, high = (m, high) if mp.ellipk(1 - m) / mp.ellipk(m) > wanted else (low, m)
    k, quarter = mp.sqrt(m), mp.ellipk(m)
    u = [(n - 1 - 2 * i) * quarter / n for i in range(n)]
    zeros = [mp.mpc(0, 1 / (k * mp.ellipfun("sn", v, m))) for v in u if abs(v) > mp.mpf(10) ** -30]
    v0 = quarter / (n * mp.ellipk(m1)) * mp.ellipf(mp.atan(1 / eps), 1 - m1)
    sn1, cn1, dn1 = (mp.ellipfun(f, v0, 1 - m) for f in ("sn", "cn", "dn"))
    poles = []
    for v in u:
        sn, cn, dn = (mp.ellipfun(f, v, m) for f in ("sn", "cn", "dn"))
        d = cn1**2 + m * sn**2 * sn1**2
        poles.append(mp.mpc(-cn * dn * sn1 * cn1, sn * dn1) / d)
    return zeros, poles


def expand(roots):
    """Coefficients of the product of (1 - root / z), index the power of 1/z."""
    c = [mp.mpf(1)]
    for r in roots:
        c = [(c[i] if i < len(c) else 0) - (r * c[i - 1] if i else 0) for i in range(len(c) + 1)]
    assert all(abs(mp.im(v)) < mp.mpf(10) ** -25 for v in c)
    return [mp.re(v) for v in c]


def design(n, high_pass):
    zeros, poles = prototype(n)
    edge = mp.tan(mp.pi * CUT_OFF / 2)
    if high_pass:
        zeros, poles = [edge / z for z in zeros] + [mp.mpf(0)] * (n - len(zeros)), [edge / p for p in poles]
    else:
        zeros, poles = [edge * z for z in zeros], [edge * p for p in poles]
    z_zeros, z_poles = ([(1 + s) / (1 - s) for s in roots] for roots in (zeros, poles))
    z_zeros += [mp.mpf(-1)] * (n - len(z_zeros))
    x, y = expand(z_zeros), expand(z_poles)
    at = mp.mpf(-1 if high_pass else 1)
    level = 1 if n % 2 else mp.power(10, -PASS / 20)  # an even order starts at the bottom of the ripple
    gain = level * sum(c * at**i for i, c in enumerate(y)) / sum(c * at**i for i, c in enumerate(x))
    return z_poles, gain, [gain * c for c in x], y


def main():
    import scipy  # here, so that elliptic_bands.py does without
    from scipy import signal

    print("// SPDX-License-Identifier: MIT")
    print(f"// Written by textbook_elliptic.py with mpmath {mp.__version__} and SciPy {scipy.__version__}.")
    print(f"// Cut-off {float(CUT_OFF)!r}, pass band {float(PASS)!r} dB, stop band {float(STOP)!r} dB.")
    print("// {order, mode, gain, {poles with non-negative imaginary part}, {x of z^0, z^-1, ...}, {y likewise}}")
    for mode in (1, 2):
        for n in range(1, 11):
            if mode == 1 and n % 2 and n > 1:
                continue
            poles, gain, x, y = design(n, mode == 2)
            theirs = signal.ellip(n, float(PASS), float(STOP), float(CUT_OFF), ["lowpass", "highpass"][mode - 1], output="zpk")
            worst = max(min(abs(complex(p) - q) for q in theirs[1]) for p in poles)
            assert worst < 1e-8 and abs(theirs[2] / gain - 1) < 1e-6, (n, mode, worst, theirs[2], gain)
            upper = sorted((p for p in poles if mp.im(p) > -mp.mpf(10) ** -25), key=lambda p: float(mp.im(p)))
            pairs = ", ".join(f"{{{float(mp.re(p))!r}, {float(max(mp.im(p), 0))!r}}}" for p in upper)
            print(f"{{{n}, {mode}, {float(gain)!r}, {{{pairs}}},")
            print(f" {{{', '.join(repr(float(v)) for v in x)}}},")
            print(f" {{{', '.join(repr(float(v)) for v in y)}}}}},")


if __name__ == "__main__":
    main()
