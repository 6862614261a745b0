// SPDX-License-Identifier: MIT
#include "spectral/AmplitudeSpectrum.h"

#include "spectral/SpectralKernels.h"

#include <cmath>

namespace Spectral {

void writeAmplitudes(const double* transform, std::ptrdiff_t stride, std::int32_t n, double* amplitudes) {
    const std::int32_t half = n / 2;
    const double last = transform[(n - 1) * stride];
    const double first = transform[0];
    amplitudes[0] = std::sqrt(last * last + first * first) / n;
    spectralKernels().writeAmplitudes(transform, stride, half, amplitudes);
}

} // namespace Spectral
