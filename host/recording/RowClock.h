// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/TimePlan.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Makes seconds of what rows say of their time, one row after the other, by a plan.
class QUILLMERE_API RowClock {
public:
    /// `decimal` is the sign in numbers.
    RowClock(TimePlan timePlan, char decimal);

    const TimePlan& getPlan() const { return plan; }

    /// The time of the next row, from what is in its column of times or in those of date and time, with a
    /// blank between; nothing for what is no time. [run]
    std::optional<double> take(std::string_view text);

    /// What stands in a row's place is the whole second in which it was taken: of `rows` that have it, the
    /// next is the first. Those of the first second of a recording are at the end of it, those of the last at
    /// its begin, as many as there are in the one beside it, `usual`. [run]
    void beginSecond(std::uint64_t rows, std::uint64_t usual, bool isFirst);
    /// A row of that second without a time of its own. [run]
    void passRow() { ++rowOfSecond; }

    /// What times count from, in nanoseconds since 1970 or since midnight, as soon as it is known; nothing
    /// where they count from no date. [run]
    std::optional<std::int64_t> getOrigin() const;
    /// What has been done to times that a user should know of: each a sentence's part. [run, or behind it]
    std::vector<std::string> getNotes() const;

private:
    std::optional<Tick> tickOf(std::string_view text) const;
    void unwrap(Tick& tick);
    void lookForShortWrap(std::int64_t tick);
    std::int64_t nanosecondsOfUnit() const;
    std::int64_t nanosecondsOfFirst() const;
    std::string startText() const;

    TimePlan plan;
    char decimal;
    std::optional<Tick> first;
    std::optional<Tick> last;
    std::int64_t turns = 0; ///< Added to a counter that began anew.
    std::uint64_t wraps = 0;
    std::int64_t former = 0;      ///< What it showed last,
    std::int64_t largest = 0;     ///< and at most.
    std::uint64_t shortWraps = 0; ///< Steps back as a counter of 16 bits makes them, which nobody has stated.
    std::uint64_t rowOfSecond = 0;
    std::uint64_t before = 0;    ///< Rows that would have been in front of the first second's.
    std::uint64_t perSecond = 1; ///< Rows in the second.
};

} // namespace Quillmere::Host
