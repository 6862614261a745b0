// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>

// What the files in `kernels/` are written with. Everything here has internal linkage and is inlined by
// force, since those files are compiled for more than one processor (processor/Kernels.h).

/// The namespace of a kernel's names: one for each way in which its file is compiled.
#ifdef VELMARIND_KERNELS_AVX2
#define VELMARIND_KERNELS Avx2
#else
#define VELMARIND_KERNELS Plain
#endif

namespace {

/// Doubles in the widest register at hand.
#ifdef VELMARIND_KERNELS_AVX2
constexpr int kWidest = 4;
#else
constexpr int kWidest = 2;
#endif

template <int width>
struct LanesOf {
    typedef double Type
        __attribute__((vector_size(width * sizeof(double)))); // as an alias GCC drops the attribute
};
template <>
struct LanesOf<1> {
    using Type = double;
};

/// Neighbouring doubles in one register; arithmetic is lane by lane, and a plain double stands for all lanes.
template <int width>
using Lanes = typename LanesOf<width>::Type;

template <int width>
[[gnu::always_inline]] inline Lanes<width> loadLanes(const double* from) {
    Lanes<width> lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

template <int width>
[[gnu::always_inline]] inline void storeLanes(double* to, Lanes<width> lanes) {
    std::memcpy(to, &lanes, sizeof lanes);
}

} // namespace
