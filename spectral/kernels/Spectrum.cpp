// SPDX-License-Identifier: MIT
// Compiled once for each kind of processor: processor/Kernels.h tells what may stand here.
#include "processor/Lanes.h"
#include "spectral/SpectralKernels.h"

#ifdef __SSE2__
#include <immintrin.h>
#endif

namespace Spectral::VELMARIND_KERNELS {

namespace {

using Index = std::ptrdiff_t;

/// As many harmonics as fill `registers`, over `elements` neighbouring elements of the rows. Alone, each
/// harmonic would wait for its turn.
template <int registers, int elements>
[[gnu::always_inline]] inline void transformElements(const GeneralPass& pass, const Turns& turns,
                                                     Index element, Index first, Index count) {
    const Index branch = pass.branch;
    const double* lower = pass.folded + element;
    const double* upper = lower + branch * (pass.factor - 1);
    Lanes<kWidest> unitCos[registers];
    Lanes<kWidest> unitSin[registers];
    Lanes<kWidest> cos[registers];
    Lanes<kWidest> sin[registers];
    Lanes<kWidest> re[elements][registers];
    Lanes<kWidest> im[elements][registers];
    for (int r = 0; r < registers; ++r) {
        cos[r] = unitCos[r] = loadLanes<kWidest>(turns.cos + r * kWidest);
        sin[r] = unitSin[r] = loadLanes<kWidest>(turns.sin + r * kWidest);
        for (int e = 0; e < elements; ++e) {
            re[e][r] = lower[e] + cos[r] * lower[branch + e];
            im[e][r] = sin[r] * upper[e];
        }
    }
    lower += branch;
    // Order matters: each sum grows by rising j.
    for (Index j = 2; 2 * j < pass.factor; ++j) {
        lower += branch;
        upper -= branch;
        for (int r = 0; r < registers; ++r) {
            const Lanes<kWidest> turnedCos = unitCos[r] * cos[r] - unitSin[r] * sin[r];
            sin[r] = unitCos[r] * sin[r] + unitSin[r] * cos[r];
            cos[r] = turnedCos;
            for (int e = 0; e < elements; ++e) {
                re[e][r] += cos[r] * lower[e];
                im[e][r] += sin[r] * upper[e];
            }
        }
    }
    for (int e = 0; e < elements; ++e) {
        double parts[2][registers * kWidest];
        for (int r = 0; r < registers; ++r) {
            storeLanes<kWidest>(parts[0] + r * kWidest, re[e][r]);
            storeLanes<kWidest>(parts[1] + r * kWidest, im[e][r]);
        }
        double* const to = pass.out + element + e;
        for (Index l = 0; l < count; ++l) {
            to[branch * (first + l)] = parts[0][l];
            to[branch * (pass.factor - first - l)] = parts[1][l];
        }
    }
}

template <int registers>
void transformRegisters(const GeneralPass& pass, const Turns& turns, Index first, Index count) {
    Index element = 0;
    for (; element + 2 <= pass.branch; element += 2)
        transformElements<registers, 2>(pass, turns, element, first, count);
    if (element < pass.branch) transformElements<registers, 1>(pass, turns, element, first, count);
}

void transformHarmonics(const GeneralPass& pass, const Turns& turns, Index first, Index count) {
    if (count <= kWidest) return transformRegisters<1>(pass, turns, first, count);
    if (count <= 2 * kWidest) return transformRegisters<2>(pass, turns, first, count);
#ifndef VELMARIND_KERNELS_AVX2
    if (count <= 3 * kWidest) return transformRegisters<3>(pass, turns, first, count);
    transformRegisters<4>(pass, turns, first, count);
#endif
}

/// Every second of the numbers at `from`, `step` apart.
template <int width>
[[gnu::always_inline]] inline Lanes<width> gather(const double* from, Index step) {
    if constexpr (width == 4)
        return Lanes<4>{from[0], from[step], from[2 * step], from[3 * step]};
    else if constexpr (width == 2)
        return Lanes<2>{from[0], from[step]};
    else
        return from[0];
}

template <int width>
[[gnu::always_inline]] inline Lanes<width> root(Lanes<width> lanes) {
#ifdef __SSE2__
    if constexpr (width == 2) return _mm_sqrt_pd(lanes);
#endif
#ifdef __AVX__
    if constexpr (width == 4) return _mm256_sqrt_pd(lanes);
#endif
    if constexpr (width == 1) {
        return __builtin_sqrt(lanes);
    } else {
        for (int i = 0; i < width; ++i)
            lanes[i] = __builtin_sqrt(lanes[i]);
        return lanes;
    }
}

/// What roots are divided by: by a power of two as a product, whose bits are the same and which is there
/// sooner.
enum class Divisor { Any, PowerOfTwo };

/// As many neighbouring amplitudes as `width`. Order matters: two squares, one sum, one root, one division.
template <int width, Divisor divisor>
[[gnu::always_inline]] inline void writeLanes(const double* transform, Index stride, std::int32_t half,
                                              std::int32_t k, double* amplitudes) {
    const double* const real = transform + (2 * k - 1) * stride;
    const Lanes<width> a = gather<width>(real, 2 * stride);
    const Lanes<width> b = gather<width>(real + stride, 2 * stride);
    const Lanes<width> roots = root<width>(a * a + b * b);
    if constexpr (divisor == Divisor::PowerOfTwo)
        storeLanes<width>(amplitudes + k, roots * (1.0 / half));
    else
        storeLanes<width>(amplitudes + k, roots / static_cast<double>(half));
}

/// From row 1 on. What is left behind whole registers is in one more, which does some rows twice.
template <Divisor divisor>
[[gnu::always_inline]] inline void writeAll(const double* transform, Index stride, std::int32_t half,
                                            double* amplitudes) {
    std::int32_t k = 1;
    for (; k + kWidest <= half; k += kWidest)
        writeLanes<kWidest, divisor>(transform, stride, half, k, amplitudes);
    if (k < half && half > kWidest)
        return writeLanes<kWidest, divisor>(transform, stride, half, half - kWidest, amplitudes);
    for (; k < half; ++k)
        writeLanes<1, divisor>(transform, stride, half, k, amplitudes);
}

void writeAmplitudes(const double* transform, Index stride, std::int32_t half, double* amplitudes) {
    // One column is the usual case, and neighbours are loaded together there.
    const bool isPowerOfTwo = (half & (half - 1)) == 0;
    if (stride == 1 && isPowerOfTwo) return writeAll<Divisor::PowerOfTwo>(transform, 1, half, amplitudes);
    if (stride == 1) return writeAll<Divisor::Any>(transform, 1, half, amplitudes);
    writeAll<Divisor::Any>(transform, stride, half, amplitudes);
}

} // namespace

const SpectralKernels kSpectralKernels = {transformHarmonics, writeAmplitudes};

} // namespace Spectral::VELMARIND_KERNELS
