// SPDX-License-Identifier: MIT
#include "design/EllipticFunctions.h"

#include "design/Constants.h"

#include <array>
#include <cmath>
#include <limits>

namespace Design {

namespace {
constexpr double kLargest = std::numeric_limits<double>::max(); // stands for the pole of an integral

/// Cephes' coefficients of K, highest power first.
constexpr std::array<double, 11> kIntegralP{
    0.00013798286460627325, 0.002280257240058756, 0.007974040132204152, 0.00985821379021226,
    0.006874896874499499,   0.006189010336376876, 0.008790782739527438, 0.014938044891680526,
    0.0308851465246712,     0.09657359028116902,  1.3862943611198906};
constexpr std::array<double, 11> kIntegralQ{2.940789550485985e-05,
                                            0.0009141847238659173,
                                            0.005940583037531678,
                                            0.01548505166497624,
                                            0.023908960271592488,
                                            0.030120471522760404,
                                            0.037377431417382326,
                                            0.04882803475709983,
                                            0.07031249969639575,
                                            0.12499999999987083,
                                            0.5};

double horner(const std::array<double, 11>& coefficients, double x) {
    double sum = coefficients[0];
    for (std::size_t i = 1; i < coefficients.size(); ++i)
        sum = sum * x + coefficients[i];
    return sum;
}

/// F(phi | m) for phi from 0 to half pi, whose tangent `t` isn't large, by descending Landen transformations.
double descend(double phi, double t, double m) {
    double a = 1.0;
    double b = std::sqrt(1.0 - m);
    double c = std::sqrt(m);
    double d = 1.0;
    double mod = 0.0;
    while (std::fabs(c / a) > kMachineEpsilon) {
        const double ratio = b / a;
        phi += std::atan(t * ratio) + mod * kPi;
        mod = std::trunc((phi + kHalfPi) / kPi);
        t = t * (1.0 + ratio) / (1.0 - ratio * t * t);
        c = (a - b) * 0.5;
        const double geometricMean = std::sqrt(a * b);
        a = (a + b) * 0.5;
        b = geometricMean;
        d += d;
    }
    return (std::atan(t) + mod * kPi) / (d * a);
}

/// Series in m, for m next to 0.
JacobiElliptic ellpjNearZero(double u, double m) {
    const double s = std::sin(u);
    const double c = std::cos(u);
    const double a = 0.25 * m * (u - s * c);
    return {.sn = s - a * c, .cn = c + a * s, .dn = 1.0 - 0.5 * m * s * s, .phi = u - a, .code = 0};
}

/// Series in 1 - m, for m next to 1. The published series has sinh(u) where `inverseSine` stands.
JacobiElliptic ellpjNearOne(double u, double m) {
    const double a = 0.25 * (1.0 - m);
    const double cosine = std::cosh(u);
    const double tangent = std::tanh(u);
    const double secant = 1.0 / cosine;
    const double inverseSine = std::log(std::sqrt(1.0 + u * u) + u);
    const double twon = cosine * inverseSine;
    const double slope = a * tangent * secant;
    return {.sn = tangent + a * (twon - u) / (cosine * cosine),
            .cn = secant - slope * (twon - u),
            .dn = secant + slope * (twon + u),
            .phi = 2.0 * std::atan(std::exp(u)) - kHalfPi + a * (twon - u) / cosine,
            .code = 0};
}
} // namespace

double ellpk(double x) {
    if (x > kMachineEpsilon) return horner(kIntegralP, x) - std::log(x) * horner(kIntegralQ, x);
    return x == 0.0 ? kLargest : kIntegralP.back() - 0.5 * std::log(x);
}

double ellik(double phi, double m) {
    if (m == 0.0) return phi;
    const double complement = 1.0 - m;
    if (complement == 0.0)
        return std::fabs(phi) >= kHalfPi ? kLargest : std::log(std::tan((kHalfPi + phi) * 0.5));

    double quarters = std::floor(phi / kHalfPi);
    if (std::fmod(quarters, 2.0) != 0.0) quarters += 1.0;
    const double complete = ellpk(complement);
    phi -= quarters * kHalfPi;
    const bool isNegative = phi < 0.0;
    if (isNegative) phi = -phi;

    const double t = std::tan(phi);
    const double e = 1.0 / (std::sqrt(complement) * t);
    // Next to the quarter the tangent runs away; its mirror image is as good and well behaved.
    const double integral =
        std::fabs(t) > 10.0 && std::fabs(e) < 10.0 ? complete - ellik(std::atan(e), m) : descend(phi, t, m);
    const double signedIntegral = isNegative ? -integral : integral;
    return quarters == 0.0 ? signedIntegral : signedIntegral + quarters * complete;
}

JacobiElliptic ellpj(double u, double m) {
    if (m < 0.0 || m > 1.0) return {.sn = 0.0, .cn = 0.0, .dn = 0.0, .phi = 0.0, .code = -1};
    if (std::isnan(m))
        return {.sn = m, .cn = m, .dn = m, .phi = m, .code = 0}; // takes no step on the scale below
    if (m < 1e-09) return ellpjNearZero(u, m);
    if (m >= 0.9999999999) return ellpjNearOne(u, m);

    constexpr std::size_t kMostSteps = 8;
    std::array<double, kMostSteps + 1> a{1.0};
    std::array<double, kMostSteps + 1> c{std::sqrt(m)};
    double b = std::sqrt(1.0 - m);
    double power = 1.0;
    std::size_t steps = 0;
    while (steps < kMostSteps && std::fabs(c[steps] / a[steps]) > kMachineEpsilon) {
        const double arithmetic = a[steps];
        ++steps;
        c[steps] = (arithmetic - b) * 0.5;
        a[steps] = (arithmetic + b) * 0.5;
        b = std::sqrt(arithmetic * b);
        power *= 2.0;
    }

    // Back up the scale, as many steps as were taken down.
    double phi = power * a[steps] * u;
    double former = phi;
    for (; steps > 0; --steps) {
        const double t = c[steps] * std::sin(phi) / a[steps];
        former = phi;
        phi = (guardedArcsine(t) + phi) * 0.5;
    }
    const double cosine = std::cos(phi);
    return {.sn = std::sin(phi), .cn = cosine, .dn = cosine / std::cos(phi - former), .phi = phi, .code = 0};
}

double cay(double q) {
    // Reached only by a nome within 4e-5 of 1, where the modulus is 1 to the last bit.
    constexpr int kMostTerms = 1000;
    double a = 1.0;
    double b = 1.0;
    double r = 1.0;
    double p = q;
    for (int term = 0; term < kMostTerms; ++term) {
        r *= p;
        a += 2.0 * r;
        const double t1 = std::fabs(r / a);
        r *= p;
        b += r;
        p *= q;
        const double t2 = std::fabs(r / b);
        const double change = t2 > t1 ? t2 : t1;
        if (!(change > kMachineEpsilon)) return 4.0 * std::sqrt(q) * ((b / a) * (b / a));
    }
    return 1.0;
}

double guardedArcsine(double x) {
    if (x <= -1.0) return -kHalfPi;
    if (x >= 1.0) return kHalfPi;
    return std::asin(x);
}

} // namespace Design
