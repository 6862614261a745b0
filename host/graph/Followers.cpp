// SPDX-License-Identifier: MIT
#include "host/graph/Followers.h"

#include "framework/Quillmere.h"
#include "host/plugins/KnownTypes.h"

#include <unordered_map>
#include <utility>

namespace Quillmere::Host {

namespace {
/// Calls `act` with each link among `blocks`: the output and the block that reads.
template <class Act>
void forEachLink(const std::vector<Core::Filter*>& blocks, Act act) {
    for (const Core::Filter* const block : blocks)
        for (const Core::AbstractInputPin* const pin : block->getInputPins())
            if (const Core::AbstractOutputPin* const sender = pin->getConnectedOutput()) act(*sender, *block);
}

/// `reached`, and whatever samples come to by way of these.
FollowerSet spread(FollowerSet reached, const std::vector<Core::Filter*>& blocks) {
    std::unordered_map<const Core::PinManager*, std::vector<const Core::PinManager*>> receivers;
    forEachLink(blocks, [&](const Core::AbstractOutputPin& sender, const Core::Filter& block) {
        receivers[sender.getManager()].push_back(&block);
    });
    std::vector<const Core::PinManager*> open(reached.begin(), reached.end());
    while (!open.empty()) {
        const Core::PinManager* const sender = open.back();
        open.pop_back();
        for (const Core::PinManager* const block : receivers[sender])
            if (reached.insert(block).second) open.push_back(block);
    }
    return reached;
}
} // namespace

FollowerSet followersAmong(const std::vector<Core::Filter*>& blocks) {
    FollowerSet first;
    forEachLink(blocks, [&](const Core::AbstractOutputPin& sender, const Core::Filter& block) {
        if (getMakesTimes(&sender)) first.insert(&block);
    });
    return spread(std::move(first), blocks);
}

FollowerSet reachedFrom(const Core::Filter& first, const std::vector<Core::Filter*>& blocks) {
    return spread({&first}, blocks);
}

std::vector<Core::Filter*> followersOf(const std::vector<Core::Filter*>& blocks) {
    const FollowerSet behind = followersAmong(blocks);
    std::vector<Core::Filter*> followers;
    for (Core::Filter* const block : blocks)
        if (behind.contains(block)) followers.push_back(block);
    return followers;
}

} // namespace Quillmere::Host
