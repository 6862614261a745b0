// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Synchronizer.h"
#include "host/ends/WakingSource.h"

namespace Quillmere::Host {

/// When rounds are due in a run that keeps the time of the world outside, and who is waited for there.
class RoundPace {
public:
    using Clock = Core::Synchronizer::Clock;

    virtual ~RoundPace() = default;

    /// Whether everything is due at once. [any]
    virtual bool getIsUnpaced() const = 0;
    /// When it is `streamTime` (seconds) in the stream; the begin of all times where everything is due at
    /// once. [run]
    virtual Clock::time_point dueOf(double streamTime) const = 0;
    /// Wakes who chooses the rounds as soon as the source, which has nothing for now, may have something.
    /// [run]
    virtual void watch(const WakingSource& source) = 0;
};

} // namespace Quillmere::Host
