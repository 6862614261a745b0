// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveDrive.h"
#include "host/run/RoundPace.h"

namespace Quillmere::Host {

/// The pace of a live run for one of its layouts: its clock, and the watcher of its pipes.
class LivePace final : public RoundPace {
public:
    /// Neither is owned.
    LivePace(LiveDrive& liveDrive, Core::Synchronizer& layoutsGate) : drive(liveDrive), gate(layoutsGate) {}

    bool getIsUnpaced() const override { return drive.clock.getIsUnpaced(); }
    Clock::time_point dueOf(double streamTime) const override { return drive.clock.dueOf(streamTime); }
    void watch(const WakingSource& source) override {
        if (source.getHasMore())
            gate.stir();
        else
            drive.pipes.watch(source.getDescriptor(), gate);
    }

    /// The time to choose a round at: where nothing is paced nobody looks at the clock. [run]
    Clock::time_point getNow() const { return getIsUnpaced() ? Clock::time_point::min() : Clock::now(); }

private:
    LiveDrive& drive;
    Core::Synchronizer& gate;
};

} // namespace Quillmere::Host
