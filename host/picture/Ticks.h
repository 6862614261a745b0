// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Where an axis has a number, and what it says there.
struct AxisTick {
    double value = 0.0;
    std::string label;
};

/// Ticks at round numbers, 1, 2 or 5 times a power of ten apart, between the two, ends included; at most so
/// many steps, and more where there would be a single tick, which tells no scale. Requires: low < high, both
/// finite; most at least 2. [any]
QUILLMERE_API std::vector<AxisTick> numberTicks(double low, double high, std::size_t most);

/// Ticks at the multiples of a step. Requires: low < high, both finite; not many steps between them. [any]
QUILLMERE_API std::vector<AxisTick> ticksApart(double low, double high, double step);

/// Numbers in as few digits, `fewest` or more, as tell each of them but for so small an error. [any]
QUILLMERE_API std::vector<std::string> telling(const std::vector<double>& values, int fewest, double error);

struct TimeTicks {
    std::vector<AxisTick> ticks;
    std::string
        form; ///< How the labels are to be read: `seconds`, `minutes:seconds`, `hours:minutes`, `days`.
};

/// The same of seconds, at steps that a clock has. [any]
QUILLMERE_API TimeTicks timeTicks(double from, double to, std::size_t most);

} // namespace Quillmere::Host
