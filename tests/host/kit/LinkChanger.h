// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveRun.h"
#include "tests/host/kit/RandomKnobs.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Support {

/// Somebody who moves blocks of a live run, links them, takes links down and adds blocks, all at random. For
/// one thread.
class LinkChanger {
public:
    /// What may be changed; the rest of the graph is left alone.
    struct Range {
        std::vector<std::string> layouts;
        std::vector<std::string> blocks;  ///< That may be moved.
        std::vector<std::string> outputs; ///< As `block.pin`.
        std::vector<std::string> inputs;
        /// Blocks, senders first, so that no links make a loop; if empty they may.
        std::vector<std::string> order;
    };
    struct Counts {
        std::uint64_t moves = 0;
        std::uint64_t attaches = 0;
        std::uint64_t detaches = 0;
        std::uint64_t adds = 0;
        std::uint64_t refusals = 0;
    };

    LinkChanger(Quillmere::Host::LiveRun& liveRun, Range whatMayChange, unsigned seed)
        : run(liveRun), range(std::move(whatMayChange)), dice(seed) {}

    /// One change of any kind, or a refusal of one that can't be.
    void change();
    const Counts& getCounts() const { return counts; }

private:
    template <class Action>
    void attempt(std::uint64_t& count, Action action);
    void attach();
    void add();
    bool mayLead(const std::string& output, const std::string& input) const;

    Quillmere::Host::LiveRun& run;
    Range range;
    Dice dice;
    Counts counts;
};

} // namespace Support
