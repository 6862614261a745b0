// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <span>
#include <string>
#include <string_view>

namespace Quillmere::Host {

/// What columns of times are called, in small letters, without blanks, signs and units.
struct TimeName {
    std::string_view word;
    bool isClock = false;   ///< Such a column beside a stated rate is a clock that may contradict it.
    bool isUnclear = false; ///< It means a pace or temperatures as well.
};

/// In the order in which they are looked for. [any]
QUILLMERE_API std::span<const TimeName> timeNames();

/// A column's name as the table has it: `Time (s)`, `time_stamp`, `t_us` and `timestampNs` without blanks,
/// signs and units. Empty for a capital `T`, which may well be a temperature. [any]
QUILLMERE_API std::string plainTimeName(const std::string& column);

/// Whether a column may hold times, by its name; one that means other things too needs a unit of time. [any]
QUILLMERE_API bool getIsTimeName(const std::string& column);

/// Whether there is a unit of time in a column's name: `Time (s)`, `t_us`, `tempoMs`. [any]
QUILLMERE_API bool getNamesUnitOfTime(const std::string& column);

} // namespace Quillmere::Host
