// SPDX-License-Identifier: MIT
#include "host/graph/Followers.h"

#include "framework/Quillmere.h"
#include "host/plugins/KnownTypes.h"

#include <unordered_map>

namespace Quillmere::Host {

FollowerSet followersAmong(const std::vector<Core::Filter*>& blocks) {
    std::unordered_map<const Core::PinManager*, std::vector<const Core::PinManager*>> receivers;
    FollowerSet behind;
    std::vector<const Core::PinManager*> open;
    const auto reach = [&](const Core::PinManager* block) {
        if (behind.insert(block).second) open.push_back(block);
    };
    for (const Core::Filter* const block : blocks)
        for (const Core::AbstractInputPin* const pin : block->getInputPins()) {
            const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
            if (sender == nullptr) continue;
            receivers[sender->getManager()].push_back(block);
            if (getMakesTimes(sender)) reach(block);
        }
    while (!open.empty()) {
        const Core::PinManager* const sender = open.back();
        open.pop_back();
        for (const Core::PinManager* const block : receivers[sender])
            reach(block);
    }
    return behind;
}

std::vector<Core::Filter*> followersOf(const std::vector<Core::Filter*>& blocks) {
    const FollowerSet behind = followersAmong(blocks);
    std::vector<Core::Filter*> followers;
    for (Core::Filter* const block : blocks)
        if (behind.contains(block)) followers.push_back(block);
    return followers;
}

} // namespace Quillmere::Host
