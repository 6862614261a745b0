// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quillmere::Host {

/// Of a step: time stamps, and the times that they are compared with, are rounded, each in its own way.
inline constexpr double kNearStep = 1e-6;
/// Of a time stamp: four of its last places, which are more than that where stamps are large.
inline constexpr double kNearStamp = 4.0 * std::numeric_limits<double>::epsilon();

/// Whether the step from one time stamp to another is longer than the limit, by more than rounding makes it.
inline bool getIsGap(double from, double to, double limit) {
    const double tolerance = std::max(kNearStep * limit, kNearStamp * std::max(std::abs(from), std::abs(to)));
    return to - from > limit + tolerance;
}

} // namespace Quillmere::Host
