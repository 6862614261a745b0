// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SampleRate.h"
#include "host/recording/RepairedRows.h"

#include <cstddef>
#include <optional>
#include <string>

namespace Quillmere::Host {

/// How often rows of a recording come by their times, as its first `kRowsMeasured` rows show.
struct RowsRate {
    std::optional<SampleRate> rate = {};
    bool isSparse = false;   ///< Some rows have no sample for the pin.
    std::string reason = {}; ///< Why there is no rate.
};

/// The next row of a look ahead; a bad one, which the run will tell of, is the end of it, and `fault` says
/// what is wrong with it.
RepairedRows::Row takeAhead(RepairedRows& rows, std::string* fault = nullptr);

/// Of the rows that have a sample for a pin, or of all. Requires: nothing has been taken of `ahead`.
RowsRate measureRows(RepairedRows& ahead, std::optional<std::size_t> pin);

} // namespace Quillmere::Host
