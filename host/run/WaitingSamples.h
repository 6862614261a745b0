// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <cstdint>
#include <vector>

namespace Quillmere::Host {

/// How many samples wait in the links that lead to some blocks: what a runner asks to know whether anything can still move.
/// Requires of every operation: the blocks' gate is held, or they don't run.
class WaitingSamples {
public:
    /// Takes up the links of `blocks`, which are not owned.
    void watch(const std::vector<Core::Filter*>& blocks);

    /// Counts anew, and tells whether any link has more or fewer than at the last count.
    bool count();
    /// Whether any sample was used up between the last count and the one before.
    bool getHasMoved() const { return hasMoved; }
    /// Whether any sample waited at the last count, and whether one did in a link that wakes the blocks' layout.
    bool getIsAny() const { return isAny; }
    bool getIsAnyWaking() const { return isAnyWaking; }
    /// Whether there is a link that wakes the blocks' layout.
    bool getHasWakingLinks() const;

    /// More rounds than the links' samples can need to leave blocks without loops, one step a round.
    std::uint64_t getMostRounds() const { return mostRounds; }

private:
    struct Link {
        Core::InputPin<Core::MatrixXd>* input;
        std::uint32_t waiting;
    };
    std::vector<Link> links;
    std::uint64_t mostRounds = 0;
    std::uint64_t taken = 0; ///< Samples used up, at the last count.
    bool hasMoved = false;
    bool isAny = false;
    bool isAnyWaking = false;
};

} // namespace Quillmere::Host
