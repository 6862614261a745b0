// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/TimeRepairPlan.h"
#include "host/recording/TimedRow.h"
#include "host/text/Complaint.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Fills the gaps between rows with rows of its own.
///
/// A gap is a step of more than the limit. How many rows are missing tells the usual step, the mean of the
/// last hundred steps above 0 in front of the gap that were none (of fewer, if there are fewer): n =
/// gap / step, rounded to the nearest whole number, less one. They lie evenly in it: row i, from 1 on, has
/// the time from + (to - from) * i / (n + 1). In front of the first step nothing is known, and the gap stays.
///
/// A pin that lacked a sample in some row in front of the gap, as a slow sensor beside a fast one does, gets
/// none in it: its samples don't come with each row.
class GapFiller {
public:
    explicit GapFiller(const TimeRepairPlan& plan);

    /// Takes the next row, which stays the caller's until `next` has given it. A complaint, without its
    /// place: the gap in front of it has too many rows. Requires: `next` gave null, and the row isn't before
    /// the last. [run]
    std::optional<Complaint> take(const TimedRow& row, bool isBehindGap);
    /// What fills the gap, the row that was taken, and null. [run]
    const TimedRow* next();

    std::uint64_t getRowsMade() const { return rowsMade; }
    /// Gaps that stay since nothing was known of the usual step.
    std::uint64_t getGapsLeft() const { return gapsLeft; }

private:
    static constexpr std::size_t kSteps = 100;

    double usualStep() const;
    std::optional<Complaint> beginFilling(const TimedRow& row);
    void noteStep(double step);
    void keep(const TimedRow& row);

    bool isHeld;
    std::vector<TimeRepairPlan::Pin> pins;
    TimedRow filling; ///< The last row, and with other times those that are made of it.
    const TimedRow* taken = nullptr;
    bool hasLast = false;
    double from = 0.0; ///< The time of the last row.
    double toMake = 0.0;
    double made = 0.0;                  ///< Of the gap's rows.
    std::vector<char> isWhole;          ///< For each pin, whether it had a sample in every row.
    std::array<double, kSteps> steps{}; ///< The last ones, round and round.
    std::uint64_t stepsNoted = 0;
    std::uint64_t rowsMade = 0;
    std::uint64_t gapsLeft = 0;
};

} // namespace Quillmere::Host
