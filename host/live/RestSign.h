// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Synchronizer.h"

#include <atomic>
#include <cstdint>

namespace Quillmere::Host {

/// Shows other threads whether a layout, its run being over, has come to rest: it moves nothing by itself, and no sample
/// has come. Settings that are turned don't count, so that a run ends whatever people do.
///
/// Two looks at all layouts that find each at rest both times, with no departure in between, prove that all rested at one
/// time between the looks, when nobody was there to move anything: then they rest for good.
class RestSign {
public:
    /// What the loop has found out about itself. [run]
    void set(bool isResting) {
        // A departure that shows already lies behind the end of the rest.
        const bool departs = rests && !isResting;
        rests = isResting;
        if (departs) ++departures;
    }

    /// Takes the gate's reasons. Whoever looks meanwhile sees a signal, or that somebody has taken it. [run]
    unsigned takeReasons(Core::Synchronizer& gate) {
        if (!rests) return gate.takeReasons();
        rests = false;
        const unsigned reasons = gate.takeReasons();
        if ((reasons & Core::Synchronizer::kSignal) != 0)
            ++departures;
        else
            rests = true;
        return reasons;
    }

    /// Requires of who looks: the departures first, so that one behind them shows. [any]
    std::uint64_t getDepartures() const { return departures; }
    bool getIsAtRest(const Core::Synchronizer& gate) const { return rests && !gate.getHasSignal(); }

private:
    std::atomic<bool> rests{false}; ///< Written by the loop.
    std::atomic<std::uint64_t> departures{0};
};

} // namespace Quillmere::Host
