// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/run/WaitingSamples.h"

#include <cstdint>
#include <vector>

namespace Quillmere::Host {

/// The passes in which the blocks behind those that make times take what these have sent in one step: behind
/// a round, or another pass of all blocks, as long as something waits in such a link and moves. So nothing
/// adds to it before it is through. What a block leaves there, because it is paused or waits for something
/// else, is as on any other link: the newest stays. Links that are to keep more keep what they can.
///
/// In a loop what goes round may make more of itself than it takes; it is left alone after as many passes as
/// the links can hold samples. Requires of every operation: the blocks' gate is held, or they don't run.
class QUILLMERE_API BurstPasses {
public:
    /// Takes up the blocks behind, in the order in which they run; all are of one layout, and not owned.
    void watch(std::vector<Core::Filter*> followers);
    /// What such a pass steps.
    const std::vector<Core::Filter*>& getFollowers() const { return followers; }
    bool getIsFollower(const Core::Filter& block) const;

    /// Behind a pass of all blocks, and behind each one of these.
    void beginPasses();
    void endPass();
    /// Whether another one has a point.
    bool getIsWanted() const { return isWanted; }

private:
    using Input = Core::InputPin<Core::MatrixXd>;

    void look();
    void dropLeft();

    std::vector<Core::Filter*> followers;
    std::vector<const Core::Filter*> byAddress; ///< The same, for the look-up.
    std::vector<Input*> links;                  ///< Where what is left goes.
    WaitingSamples waiting;
    std::uint64_t mostPasses = 0;
    std::uint64_t passesLeft = 0;
    bool isWanted = false;
};

} // namespace Quillmere::Host
