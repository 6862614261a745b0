// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Synchronizer.h"

#include <limits>

namespace Quillmere::Host {

/// When what a recording holds is due: as many seconds behind the start as its time stamp is behind the
/// first, or fewer by a factor.
class LiveClock {
public:
    using Clock = Core::Synchronizer::Clock;
    static constexpr double kMaximum = std::numeric_limits<double>::infinity();

    /// `speed` above 0: stream time by real time; `kMaximum` for no waiting at all.
    explicit LiveClock(double streamSpeed) : speed(streamSpeed) {}

    /// Now it is `firstTime` (seconds) in the stream. [setup]
    void start(double firstTime) {
        beginOfStream = firstTime;
        begin = Clock::now();
    }

    bool getIsUnpaced() const { return speed == kMaximum; }
    /// The begin of all times where nothing waits. [any]
    Clock::time_point dueOf(double streamTime) const {
        if (getIsUnpaced()) return Clock::time_point::min();
        const double seconds = (streamTime - beginOfStream) / speed;
        if (!(seconds < kLongest)) return Clock::time_point::max();
        return begin + std::chrono::duration_cast<Clock::duration>(
                           std::chrono::duration<double>(seconds > -kLongest ? seconds : -kLongest));
    }

private:
    /// Seconds, a century: what lies beyond doesn't come, and would overflow.
    static constexpr double kLongest = 3e9;

    const double speed;
    double beginOfStream = 0.0;
    Clock::time_point begin;
};

} // namespace Quillmere::Host
