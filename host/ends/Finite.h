// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Quillmere::Host {

/// Whether no element is an infinity or not-a-number. A carry out of an exponent of ones reaches the sign: no
/// branch an element, and a cycle or so each.
inline bool getIsFinite(const Core::MatrixXd& sample) {
    constexpr std::uint64_t kExponent = 0x7ff0000000000000;
    constexpr std::uint64_t kLowestOfExponent = 0x0010000000000000;
    const double* const values = sample.data();
    const auto size = static_cast<std::size_t>(sample.size());
    std::uint64_t carries = 0;
    for (std::size_t i = 0; i < size; ++i)
        carries |= (std::bit_cast<std::uint64_t>(values[i]) & kExponent) + kLowestOfExponent;
    return (carries >> 63) == 0;
}

} // namespace Quillmere::Host
