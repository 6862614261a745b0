// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What becomes of a row whose time stamp is that of the row before: nothing, it is left out, or it ends the
/// run.
enum class OnDuplicate { Keep, Drop, Error };
/// The same of a row whose time stamp is below the largest so far.
enum class OnBackward { Keep, Drop, Error };
/// What becomes of a step that is longer than the limit: nothing, it ends the run, or it is filled with rows
/// of not-a-number or of the values in front of it.
enum class OnGap { Keep, Error, Nan, Hold };

/// A moment that a graph tells by a date, or by a time of day.
struct TimeRepairDate {
    std::int64_t nanoseconds = 0; ///< Since 1970, or since midnight.
    std::string text;             ///< As the graph has it.
    Place where;

    static constexpr std::int64_t kDay = 86'400'000'000'000; ///< Nanoseconds.
    bool getIsOfDay() const { return nanoseconds >= 0 && nanoseconds < kDay; }
};

/// What is to be done about the times of rows, in this order: cut, left out, filled or resampled.
struct TimeRepairPlan {
    struct Pin {
        std::string name;
        std::size_t size = 0; ///< Elements.
        bool isHeld = false;  ///< Resampling holds its last sample instead of drawing a line to the next.
    };

    static constexpr double kForever = std::numeric_limits<double>::infinity();

    OnDuplicate onDuplicate = OnDuplicate::Keep;
    OnBackward onBackward = OnBackward::Keep;
    OnGap onGap = OnGap::Keep;
    double gapLimit = kForever;              ///< Seconds; a longer step is a gap.
    std::optional<double> resampleRate;      ///< Rows a second.
    double start = -kForever;                ///< Seconds: the first time that counts,
    double end = kForever;                   ///< and the first behind it that doesn't.
    std::optional<TimeRepairDate> startDate; ///< Instead of the seconds.
    std::optional<TimeRepairDate> endDate;
    std::vector<Pin> pins;

    /// Whether there is anything to be done.
    bool getIsAny() const {
        return onDuplicate != OnDuplicate::Keep || onBackward != OnBackward::Keep || onGap != OnGap::Keep ||
               resampleRate || start > -kForever || end < kForever || startDate || endDate;
    }
};

/// More rows than these aren't made between two of a recording: who asks for them has mistaken a unit or a
/// limit.
inline constexpr double kMostRowsMade = 1e7;

} // namespace Quillmere::Host
