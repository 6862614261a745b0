// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>

/// Two neighbouring elements at once, in a register that every 64-bit PC has. Filters run one matrix element a lane, so
/// the order of operations of each element stays as written.
namespace Design {

/// Two doubles side by side; arithmetic is lane by lane, and a plain double stands for both lanes.
using Pair = double __attribute__((vector_size(16)));

inline Pair loadPair(const double* from) {
    Pair pair;
    std::memcpy(&pair, from, sizeof pair);
    return pair;
}

inline void storePair(double* to, Pair pair) {
    std::memcpy(to, &pair, sizeof pair);
}

} // namespace Design
