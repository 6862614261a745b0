// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a sink has seen of what it wrote, up to now or to its end.
struct ResultAccount {
    std::uint64_t nonFiniteValues = 0; ///< Infinities and not-a-numbers.
    double firstTime = 0.0;            ///< Of the first of them: the time of its row in seconds,
    std::uint64_t firstRow = 0;        ///< the row, 1 being the first behind the column names,
    std::string firstColumn;           ///< and the column's name.
    /// For each input pin how many of them came to it; as many pins as had any, at least.
    std::vector<std::uint64_t> nonFiniteOfPin;
};

} // namespace Quillmere::Host
