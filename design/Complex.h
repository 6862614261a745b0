// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <cstddef>
#include <span>

namespace Design {

/// A complex number as a plain pair. The standard library's type repairs not-a-number products into
/// infinities and gives infinities for a division by zero; a design that has gone wrong must stay
/// not-a-number instead.
struct Complex {
    double re = 0.0;
    double im = 0.0;
};

inline Complex operator-(Complex a) {
    return {-a.re, -a.im};
}
inline Complex operator+(Complex a, Complex b) {
    return {a.re + b.re, a.im + b.im};
}
inline Complex operator-(Complex a, Complex b) {
    return {a.re - b.re, a.im - b.im};
}
inline Complex operator*(Complex a, Complex b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline Complex operator*(double a, Complex b) {
    return {a * b.re, a * b.im};
}
inline Complex conjugate(Complex a) {
    return {a.re, -a.im};
}
inline double magnitude(Complex a) {
    return std::hypot(a.re, a.im);
}
inline bool isNaN(Complex a) {
    return std::isnan(a.re) || std::isnan(a.im);
}

/// The quotient by Smith's method (R. L. Smith, "Algorithm 116: Complex division", 1962), which neither
/// overflows nor underflows on its way. A division by zero is not-a-number in both parts.
Complex operator/(Complex a, Complex b);

/// The root with non-negative real part, its imaginary part carrying the sign of z's. A not-a-number radicand
/// counts as not positive and gives 0; `poisonedSqrt` is for where that would hide a design that has no
/// solution.
Complex complexSqrt(Complex z);

/// `complexSqrt`, except that not-a-number in either part makes both parts not-a-number.
Complex poisonedSqrt(Complex z);

/// The polynomial with `coefficients[i]` at z^i, by Horner's rule from `degree` down. A negative degree gives
/// 0.
Complex evaluatePolynomial(std::span<const Complex> coefficients, int degree, Complex z);

/// The quotient of two polynomials at z.
Complex evaluateRatio(std::span<const Complex> top, int topDegree, std::span<const Complex> bottom,
                      int bottomDegree, Complex z);

/// Writes the coefficients of the product of (z - root) over `count` roots, `coefficients[i]` belonging to
/// z^i. All arithmetic is complex; nothing checks that imaginary parts cancel. Requires: room for `count` + 1
/// coefficients.
void expandRoots(std::span<const Complex> roots, int count, std::span<Complex> coefficients);

} // namespace Design
