// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace Quillmere::Host {

/// What a sink has seen of what it wrote, up to now or to its end.
struct ResultAccount {
    std::uint64_t nonFiniteValues = 0; ///< Infinities and not-a-numbers.
    double firstTime = 0.0;            ///< Of the first of them: the time of its row in seconds,
    std::uint64_t firstRow = 0;        ///< the row, 1 being the first behind the column names,
    std::string firstColumn;           ///< and the column's name.
};

} // namespace Quillmere::Host
