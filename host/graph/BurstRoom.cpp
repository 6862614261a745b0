// SPDX-License-Identifier: MIT
#include "host/graph/BurstRoom.h"

#include "framework/Quillmere.h"
#include "host/graph/Followers.h"
#include "host/plugins/KnownTypes.h"

#include <algorithm>
#include <vector>

namespace Quillmere::Host {

namespace {
/// Whether a block waits for others behind such blocks, too, before it takes a sample of `input`.
bool getIsPaired(const Core::Filter& block, const Core::AbstractInputPin& input,
                 const FollowerSet& followers) {
    const auto& pins = block.getInputPins();
    return std::any_of(pins.begin(), pins.end(), [&](const Core::AbstractInputPin* other) {
        const Core::AbstractOutputPin* const sender = other->getConnectedOutput();
        return other != &input && other->getIsBlocking() && sender != nullptr &&
               (getMakesTimes(sender) || followers.contains(sender->getManager()));
    });
}

bool getIsCrossing(const GraphParts& parts, const GraphDescription::Connection& connection) {
    const GraphParts::Node* const from = parts.find(connection.from.block);
    const GraphParts::Node* const to = parts.find(connection.to.block);
    return from->description->layout != to->description->layout;
}
} // namespace

void makeRoomForBursts(GraphParts& parts) {
    std::vector<Core::Filter*> blocks;
    for (const GraphParts::Node& node : parts.nodes)
        if (node.block != nullptr) blocks.push_back(node.block.get());
    const FollowerSet followers = followersAmong(blocks);
    for (const GraphParts::Node& node : parts.nodes) {
        if (node.block == nullptr || !followers.contains(node.block.get())) continue;
        for (Core::AbstractInputPin* const pin : node.block->getInputPins()) {
            const auto found = parts.connections.find(pin);
            if (found == parts.connections.end() || found->second->buffer.value ||
                !getMakesTimes(pin->getConnectedOutput()))
                continue;
            const bool mayWait = getIsCrossing(parts, *found->second) ||
                                 (node.sink == nullptr && getIsPaired(*node.block, *pin, followers));
            pin->setBufferCapacity(mayWait ? kSamplesThatWait : kSamplesOfAStep);
        }
    }
}

} // namespace Quillmere::Host
