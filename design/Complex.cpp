// SPDX-License-Identifier: MIT
#include "design/Complex.h"

#include <limits>

namespace Design {

Complex operator/(Complex a, Complex b) {
    if (std::fabs(b.re) >= std::fabs(b.im)) {
        const double ratio = b.im / b.re; // 0/0 for a zero divisor: both parts become not-a-number
        const double divisor = b.re + b.im * ratio;
        return {(a.re + a.im * ratio) / divisor, (a.im - a.re * ratio) / divisor};
    }
    const double ratio = b.re / b.im;
    const double divisor = b.re * ratio + b.im;
    return {(a.re * ratio + a.im) / divisor, (a.im * ratio - a.re) / divisor};
}

Complex complexSqrt(Complex z) {
    const double r = std::hypot(z.re, z.im);
    const double a = 0.5 * (z.re + r);
    const double b = 0.5 * (r - z.re);
    const double re = a > 0 ? std::sqrt(a) : 0.0;
    const double im = b > 0 ? std::sqrt(b) : 0.0;
    return {re, z.im < 0 ? -im : im};
}

Complex poisonedSqrt(Complex z) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    return isNaN(z) ? Complex{kNaN, kNaN} : complexSqrt(z);
}

Complex evaluatePolynomial(std::span<const Complex> coefficients, int degree, Complex z) {
    Complex sum;
    for (int i = degree; i >= 0; --i)
        sum = sum * z + coefficients[static_cast<std::size_t>(i)];
    return sum;
}

Complex evaluateRatio(std::span<const Complex> top, int topDegree, std::span<const Complex> bottom,
                      int bottomDegree, Complex z) {
    return evaluatePolynomial(top, topDegree, z) / evaluatePolynomial(bottom, bottomDegree, z);
}

void expandRoots(std::span<const Complex> roots, int count, std::span<Complex> coefficients) {
    const auto size = static_cast<std::size_t>(count);
    coefficients[0] = {1.0, 0.0};
    for (std::size_t i = 1; i <= size; ++i)
        coefficients[i] = {};
    for (std::size_t n = 0; n < size; ++n) {
        const Complex factor = -roots[n];
        for (std::size_t i = size; i >= 1; --i)
            coefficients[i] = coefficients[i] * factor + coefficients[i - 1];
        coefficients[0] = coefficients[0] * factor;
    }
}

} // namespace Design
