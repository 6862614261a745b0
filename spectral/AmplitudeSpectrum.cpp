// SPDX-License-Identifier: MIT
#include "spectral/AmplitudeSpectrum.h"

#include <cmath>

namespace {
/// Order matters: two squares, one sum, one root, one division.
double amplitude(double a, double b, double divisor) {
    return std::sqrt(a * a + b * b) / divisor;
}
} // namespace

void writeAmplitudes(const double* transform, std::ptrdiff_t stride, std::int32_t n, double* amplitudes) {
    const std::int32_t half = n / 2;
    amplitudes[0] = amplitude(transform[(n - 1) * stride], transform[0], n);
    for (std::int32_t k = 1; k < half; ++k) {
        const double* real = transform + (2 * k - 1) * stride;
        amplitudes[k] = amplitude(real[0], real[stride], half);
    }
}
