// SPDX-License-Identifier: MIT
#include "design/ButterworthSections.h"

#include "design/Constants.h"

#include <cmath>

namespace Design {

namespace {

/// The tangent that prewarps a cut-off for the bilinear mapping. Whole turns are taken off first.
double prewarp(double cutOff) {
    double angle = cutOff * kPi * 0.5;
    if (std::abs(angle) > kTwoPi) angle -= kTwoPi * std::trunc(angle / kTwoPi);
    return std::tan(angle);
}

} // namespace

int designButterworthSections(Quillmere::Core::MatrixXd& coefficients, double cutOff, int order) {
    const double t = prewarp(cutOff);
    const double t2 = t * t;
    const double half = order % 2 == 0 ? 0.5 : 0.0;
    const int pairs = order / 2;
    const int numSections = pairs + order % 2;
    Quillmere::Core::resizeSample(coefficients, kSectionRows, numSections);
    for (int k = 0; k < pairs; ++k) {
        const double c = std::cos((k + 1 - half) * kPi / order);
        const double d = 2.0 * c * t;
        const double divisor = t2 + 1.0 + d;
        coefficients(kA1, k) = -2.0 * (t2 - 1.0) / divisor;
        coefficients(kA2, k) = -(1.0 - d + t2) / divisor;
        coefficients(kB1, k) = 2.0;
        coefficients(kB2, k) = 1.0;
        coefficients(kGain, k) = t2 / divisor;
    }
    if (order % 2 != 0) {
        const int last = numSections - 1;
        coefficients(kA1, last) = (1.0 - t) / (1.0 + t);
        coefficients(kA2, last) = 0.0;
        coefficients(kB1, last) = 1.0;
        coefficients(kB2, last) = 0.0;
        coefficients(kGain, last) = t / (1.0 + t);
    }
    return numSections;
}

} // namespace Design
