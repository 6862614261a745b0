// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

/// The inner loops of transform and spectrum: one harmonic a lane, so the order of operations of each
/// harmonic stays as its formula has it, whatever the number of lanes.
namespace Spectral {

inline constexpr std::ptrdiff_t kHarmonicsAbreast = 8;

/// A turn by a whole harmonic, for each of eight neighbouring harmonics.
struct alignas(64) Turns {
    double cos[kHarmonicsAbreast];
    double sin[kHarmonicsAbreast];
};

/// Where the core of a general pass works: `folded` and `out` are `factor` rows of `branch` doubles, apart
/// from each other.
struct GeneralPass {
    std::ptrdiff_t branch;
    std::ptrdiff_t factor;
    const double* folded;
    double* out;
};

/// Transforms harmonics `first` to `first + count - 1`, up to eight of them, for every element of the rows:
/// of harmonic l the real part goes to row l, the imaginary one to row factor - l. With t the harmonic's turn
/// and x[j] a folded row, re = x[0] + cos t x[1] + cos 2t x[2] + ..., im = sin t x[factor-1] + sin 2t
/// x[factor-2] + ..., where the cosine and sine of term j come from those of term j - 1 by a turn. Turns
/// beyond `count` are any numbers. Requires: factor at least 3.
using TransformHarmonics = void (*)(const GeneralPass& pass, const Turns& turns, std::ptrdiff_t first,
                                    std::ptrdiff_t count);

/// Writes amplitudes 1 to `half` - 1 of `writeAmplitudes`, which tells the rest.
using WriteAmplitudes = void (*)(const double* transform, std::ptrdiff_t stride, std::int32_t half,
                                 double* amplitudes);

struct SpectralKernels {
    TransformHarmonics transformHarmonics;
    WriteAmplitudes writeAmplitudes;
};

namespace Plain {
extern const SpectralKernels kSpectralKernels;
}
namespace Avx2 {
extern const SpectralKernels kSpectralKernels;
}

/// The kernels in force. [any]
const SpectralKernels& spectralKernels();

} // namespace Spectral
