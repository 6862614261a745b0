// SPDX-License-Identifier: MIT
#include "host/run/BurstPasses.h"

#include "host/graph/RunOrder.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace Quillmere::Host {

namespace {
/// Without a loop everything comes out some time, however many samples a block makes of one.
std::uint64_t mostPassesOf(const std::vector<Core::Filter*>& blocks) {
    if (!hasLoop(blocks)) return std::numeric_limits<std::uint64_t>::max();
    std::uint64_t most = blocks.size();
    for (const Core::Filter* const block : blocks)
        for (const Core::AbstractInputPin* const pin : block->getInputPins())
            most += pin->getBufferCapacity();
    return most;
}
} // namespace

void BurstPasses::watch(std::vector<Core::Filter*> blocks) {
    followers = std::move(blocks);
    byAddress.assign(followers.begin(), followers.end());
    std::sort(byAddress.begin(), byAddress.end(), std::less<>());
    waiting.watch(followers);
    mostPasses = passesLeft = mostPassesOf(followers);
    isWanted = waiting.getIsAnyBurst();
}

bool BurstPasses::getIsFollower(const Core::Filter& block) const {
    return std::binary_search(byAddress.begin(), byAddress.end(), &block, std::less<>());
}

void BurstPasses::beginPasses() {
    passesLeft = mostPasses;
    isWanted = waiting.getHasBursts() && waiting.countPass(WaitingSamples::Where::Bursts);
}

void BurstPasses::endPass() {
    --passesLeft;
    isWanted = waiting.countPass(WaitingSamples::Where::Bursts) && passesLeft > 0;
}

} // namespace Quillmere::Host
