// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SampleRate.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Steps between time stamps that are about as long, or a single one.
struct StepGroup {
    std::uint64_t count = 0; ///< Above 0.
    double sum = 0.0;        ///< Seconds.

    double getMean() const { return sum / static_cast<double>(count); }
};

/// The rate that `RateMeter` tells of steps; nothing without one forward. What a single step is, each part
/// has for itself: in a recording that goes at half its rate from somewhere on, every second sample isn't
/// lost. Slow: it sorts.
std::optional<SampleRate> rateOfSteps(const std::vector<std::vector<StepGroup>>& parts);

} // namespace Quillmere::Host
