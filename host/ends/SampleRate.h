// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// How often an output sends a sample.
struct SampleRate {
    double perSecond = 0.0;  ///< Above 0.
    bool isMeasured = false; ///< By time stamps; else somebody has stated it.
    /// Of a measured one, the part of the steps that differ from their mean by more than half of it.
    double unsteadyPart = 0.0;

    /// Whether the steps are even enough to count on.
    bool getIsSteady() const { return unsteadyPart <= kMostUnsteady; }

    static constexpr double kMostUnsteady = 0.05;
};

/// How many rows of a recording are looked at for that.
inline constexpr std::uint64_t kRowsMeasured = 5000;

/// Measures a rate by the time stamps of samples.
///
/// Clocks of sensors tick coarsely (a rate of 128 Hz gives steps of 7 and 8 ms), lose samples and pause, so
/// neither the median of the steps nor the length divided by their number is the rate. It is the number of
/// steps divided by their length where a step as long as several counts as several, and pauses don't count.
/// Six digits of it are kept: the others are rounding, and 100 is meant where 99.99999999 comes out.
class QUILLMERE_API RateMeter {
public:
    /// Seconds.
    void take(double time) { times.push_back(time); }
    /// Nothing without a step forward. Slow: it sorts.
    std::optional<SampleRate> measure() const;

private:
    std::vector<double> times;
};

} // namespace Quillmere::Host
