// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace Spectral {

/// Writes the n/2 amplitudes of a transform in the order of `FFTPack`, in the unit of the signal:
///
///     amplitudes[0] = sqrt(x[n-1]^2 + x[0]^2) / n
///     amplitudes[k] = sqrt(x[2k-1]^2 + x[2k]^2) / (n/2)    for k = 1 .. n/2 - 1
///
/// where x[r] stands at `transform[r * stride]`. A sinusoid of amplitude a at an exact bin k reads a there.
/// Kept as is: row 0 folds the mean and the value at half the rate into one number, and its divisor is n.
/// Requires: n even and at least 2; the two don't overlap. [any]
void writeAmplitudes(const double* transform, std::ptrdiff_t stride, std::int32_t n, double* amplitudes);

} // namespace Spectral
