// SPDX-License-Identifier: MIT
#include "host/run/BurstPasses.h"

#include "host/graph/BurstRoom.h"
#include "host/graph/RunOrder.h"
#include "host/plugins/KnownTypes.h"

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

/// The room that links have which take all of a step and nothing besides.
bool getTakesAStep(const Core::AbstractInputPin& input) {
    const Core::AbstractOutputPin* const sender = input.getConnectedOutput();
    return getMakesTimes(sender) && input.getBufferCapacity() == kSamplesOfAStep &&
           Core::layoutOf(*sender) == Core::layoutOf(input);
}
} // namespace

void BurstPasses::watch(std::vector<Core::Filter*> blocks) {
    followers = std::move(blocks);
    byAddress.assign(followers.begin(), followers.end());
    std::sort(byAddress.begin(), byAddress.end(), std::less<>());
    links.clear();
    for (const Core::Filter* const block : followers)
        for (Core::AbstractInputPin* const pin : block->getInputPins())
            if (auto* const input = dynamic_cast<Input*>(pin); input != nullptr && getTakesAStep(*input))
                links.push_back(input);
    waiting.watch(followers);
    mostPasses = passesLeft = mostPassesOf(followers);
    isWanted = waiting.getIsAnyBurst();
}

bool BurstPasses::getIsFollower(const Core::Filter& block) const {
    return std::binary_search(byAddress.begin(), byAddress.end(), &block, std::less<>());
}

void BurstPasses::beginPasses() {
    passesLeft = mostPasses;
    look();
}

void BurstPasses::endPass() {
    --passesLeft;
    look();
}

void BurstPasses::look() {
    isWanted = waiting.getHasBursts() && waiting.countPass(WaitingSamples::Where::Bursts);
    if (!isWanted && waiting.getIsAnyBurst()) dropLeft();
    isWanted = isWanted && passesLeft > 0;
}

void BurstPasses::dropLeft() {
    for (Input* const input : links) {
        if (input->getCounts().waiting <= 1) continue;
        const auto& sender =
            dynamic_cast<const Core::OutputPin<Core::MatrixXd>&>(*input->getConnectedOutput());
        input->clear();
        input->receive(sender.data);
    }
    waiting.count();
}

} // namespace Quillmere::Host
