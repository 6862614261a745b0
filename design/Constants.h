// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>

/// What the filter designs share. Engine classes themselves live in the global namespace.
namespace Design {

/// Pi and twice pi, one double each for the whole process. Computed, not written as literals, so that every design
/// formula starts from the very same bits.
inline const double kPi = 4.0 * std::atan(1.0);
inline const double kTwoPi = kPi + kPi;

} // namespace Design
