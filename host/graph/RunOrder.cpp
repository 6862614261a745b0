// SPDX-License-Identifier: MIT
#include "host/graph/RunOrder.h"

#include "framework/Quillmere.h"

#include <algorithm>
#include <map>
#include <set>

namespace Quillmere::Host {

std::vector<Core::Filter*> runOrder(const std::vector<Core::Filter*>& blocks) {
    std::map<const Core::PinManager*, std::set<const Core::PinManager*>> senders;
    for (const Core::Filter* const block : blocks)
        for (const Core::AbstractInputPin* const pin : block->getInputPins())
            if (const Core::AbstractOutputPin* const output = pin->getConnectedOutput())
                if (std::find(blocks.begin(), blocks.end(), output->getManager()) != blocks.end())
                    senders[block].insert(output->getManager());
    std::vector<Core::Filter*> order;
    std::vector<Core::Filter*> waiting = blocks;
    while (!waiting.empty()) {
        auto next = std::find_if(waiting.begin(), waiting.end(),
                                 [&](const Core::Filter* block) { return senders[block].empty(); });
        if (next == waiting.end()) next = waiting.begin();
        for (auto& [receiver, remaining] : senders)
            remaining.erase(*next);
        order.push_back(*next);
        waiting.erase(next);
    }
    return order;
}

bool hasLoop(const std::vector<Core::Filter*>& blocks) {
    // Senders come first in the order, unless a loop leaves no choice.
    std::set<const Core::PinManager*> later(blocks.begin(), blocks.end());
    for (const Core::Filter* const block : runOrder(blocks)) {
        for (const Core::AbstractInputPin* const pin : block->getInputPins())
            if (const Core::AbstractOutputPin* const output = pin->getConnectedOutput())
                if (later.contains(output->getManager())) return true;
        later.erase(block);
    }
    return false;
}

} // namespace Quillmere::Host
