// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <cstdint>
#include <vector>

namespace Quillmere::Host {

/// How many samples wait in the links that lead to some blocks: what a runner asks to know whether anything
/// can still move. Requires of every operation: the blocks' gate is held, or they don't run.
class QUILLMERE_API WaitingSamples {
public:
    /// Takes up the links of `blocks`, which are not owned. Requires: links and layouts don't change
    /// meanwhile.
    void watch(const std::vector<Core::Filter*>& blocks);

    /// Counts anew, and tells whether the blocks have moved anything since the last count: whether a link
    /// within their layout holds more or fewer samples, or a sample of another layout was used up. If every
    /// link within holds as many as before, a loop goes at a steady pace, or a block sends unasked.
    bool count();
    /// Counts behind a pass, and tells whether another one has a point: whether this one has moved anything,
    /// and samples wait for more, be it anywhere, in links that wake the blocks' layout, or in those from
    /// blocks of the layout that make times.
    enum class Where { Anywhere, WakingLinks, Bursts };
    bool countPass(Where where = Where::Anywhere) {
        const bool hasMoved = count();
        return hasMoved && (where == Where::Anywhere ? isAny
                            : where == Where::Bursts ? isAnyBurst
                                                     : isAnyWaking);
    }
    /// Whether any sample waited at the last count, and whether one did in such links.
    bool getIsAny() const { return isAny; }
    bool getIsAnyWaking() const { return isAnyWaking; }
    bool getIsAnyBurst() const { return isAnyBurst; }
    /// Whether there was a link that wakes the blocks' layout when the links were taken up.
    bool getHasWakingLinks() const { return hasWakingLinks; }
    /// Whether one of the blocks is behind one of their layout that makes times: what that sends in one step
    /// is worth as many passes. Such links from other layouts count as waking ones.
    bool getHasBursts() const { return hasBursts; }
    /// How many links come from other layouts.
    std::uint64_t getLinksFromElsewhere() const;

    /// More rounds than the links' samples can need to leave blocks without loops, one step a round. Blocks
    /// without inputs take no part, and bursts within the layout are through before a round ends.
    std::uint64_t getMostRounds() const { return mostRounds; }

private:
    struct Link {
        Core::InputPin<Core::MatrixXd>* input;
        bool isFromElsewhere; ///< From another layout, which sends to it at any time.
        bool isBurst;         ///< From a block of their layout that makes times.
        bool isWaking;        ///< From a block of another one that does, whatever the input.
        std::uint32_t waiting = 0;
        std::uint64_t taken = 0;
    };
    std::vector<Link> links;
    std::uint64_t mostRounds = 0;
    bool hasWakingLinks = false;
    bool hasBursts = false;
    bool isAny = false;
    bool isAnyWaking = false;
    bool isAnyBurst = false;
};

} // namespace Quillmere::Host
