// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/TimeText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How the times of rows come out of a table's cells.
struct TimePlan {
    std::vector<std::size_t> columns; ///< One, or those of the date and the time; none: no times.
    /// The column holds seconds as they stand, so nothing is to be done.
    bool isPlain = true;

    bool isText = false; ///< Dates, or times of day.
    DateOrder order = DateOrder::YearFirst;
    double perSecond = 1.0;            ///< Of numbers; a text counts in nanoseconds.
    bool isRelative = false;           ///< Times count from the first row,
    std::optional<std::int64_t> start; ///< or from here: nanoseconds since 1970.
    int counterBits = 0;               ///< Of a counter that begins anew when it is full; 0: it doesn't.
    /// Rows have the whole second in which they were taken, and are spread evenly over it.
    bool isSpread = false;

    std::vector<std::string> notes; ///< Guesses that change numbers.
};

} // namespace Quillmere::Host
