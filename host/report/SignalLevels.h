// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/report/SignalCurves.h"

#include <cstddef>
#include <vector>

namespace Quillmere::Host {

/// A signal at one grain: its samples, or what was lowest and highest in each bucket of time.
struct SignalLevel {
    std::size_t count = 0;     ///< Samples or buckets.
    double begin = 0.0;        ///< Seconds: where the first bucket begins,
    double step = 0.0;         ///< and how long each is; 0 of samples.
    std::vector<double> times; ///< Of samples, or where buckets begin; empty for buckets without a gap.
    /// One column behind the other; not-a-number where there is nothing. Of samples `high` is empty, unless
    /// some of them have one time.
    std::vector<double> low;
    std::vector<double> high;
};

/// From the coarsest, which a screen takes in at once, to the finest that the curves have. None of a signal
/// without samples. [any]
QUILLMERE_API std::vector<SignalLevel> levelsOf(const SignalCurves& curves);

} // namespace Quillmere::Host
