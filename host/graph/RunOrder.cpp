// SPDX-License-Identifier: MIT
#include "host/graph/RunOrder.h"

#include "framework/Quillmere.h"

#include <cstddef>
#include <set>
#include <unordered_map>

namespace Quillmere::Host {

namespace {
/// The places of those that send to a block, each once.
std::set<std::size_t> sendersOf(const Core::Filter& block,
                                const std::unordered_map<const Core::PinManager*, std::size_t>& places) {
    std::set<std::size_t> senders;
    for (const Core::AbstractInputPin* const pin : block.getInputPins())
        if (const Core::AbstractOutputPin* const output = pin->getConnectedOutput())
            if (const auto found = places.find(output->getManager()); found != places.end())
                senders.insert(found->second);
    return senders;
}
} // namespace

std::vector<Core::Filter*> runOrder(const std::vector<Core::Filter*>& blocks) {
    std::unordered_map<const Core::PinManager*, std::size_t> places;
    for (std::size_t i = 0; i < blocks.size(); ++i)
        places.emplace(blocks[i], i);
    std::vector<std::vector<std::size_t>> receivers(blocks.size());
    std::vector<std::size_t> senders(blocks.size(), 0); // of each block how many haven't had their turn
    for (std::size_t i = 0; i < blocks.size(); ++i)
        for (const std::size_t sender : sendersOf(*blocks[i], places)) {
            receivers[sender].push_back(i);
            ++senders[i];
        }
    // Of those that wait for nobody the first; when all wait, the first of them.
    std::set<std::size_t> free;
    std::set<std::size_t> waiting;
    for (std::size_t i = 0; i < blocks.size(); ++i)
        (senders[i] == 0 ? free : waiting).insert(i);
    std::vector<Core::Filter*> order;
    while (!free.empty() || !waiting.empty()) {
        std::set<std::size_t>& from = free.empty() ? waiting : free;
        const std::size_t next = *from.begin();
        from.erase(from.begin());
        order.push_back(blocks[next]);
        for (const std::size_t receiver : receivers[next])
            if (--senders[receiver] == 0 && waiting.erase(receiver) == 1) free.insert(receiver);
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
