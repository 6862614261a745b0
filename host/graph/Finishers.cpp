// SPDX-License-Identifier: MIT
#include "host/graph/Finishers.h"

#include "framework/Quillmere.h"

namespace Quillmere::Host {

std::vector<Finisher> finishersAmong(const std::vector<Core::Filter*>& blocks) {
    std::vector<Finisher> finishers;
    for (Core::Filter* const block : blocks) {
        if (block->getInputPins().empty()) continue; // it would send anew
        auto* const command = dynamic_cast<Core::CommandProperty*>(block->getPropertyBag().find("Finish"));
        if (command != nullptr) finishers.push_back({block, command, reachedFrom(*block, blocks)});
    }
    return finishers;
}

} // namespace Quillmere::Host
