// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>

/// What the filter designs share. Engine classes themselves live in the global namespace.
namespace Design {

/// Pi, twice pi and half of it, one double each for the whole process. Computed, not written as literals, so
/// that every design formula starts from the very same bits. Each stands alone, and no constant of another
/// file may be made from them before `main`: Clang fills the inline ones only after a file's own.
inline const double kPi = 4.0 * std::atan(1.0);
inline const double kTwoPi = 4.0 * std::atan(1.0) + 4.0 * std::atan(1.0);
inline const double kHalfPi = 4.0 * std::atan(1.0) * 0.5;

} // namespace Design
