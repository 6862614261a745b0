// SPDX-License-Identifier: MIT
#include "host/run/WaitingSamples.h"

#include <algorithm>

namespace Quillmere::Host {

void WaitingSamples::watch(const std::vector<Core::Filter*>& blocks) {
    links.clear();
    mostRounds = blocks.size();
    for (const Core::Filter* const block : blocks)
        for (Core::AbstractInputPin* const pin : block->getInputPins())
            if (auto* const input = dynamic_cast<Core::InputPin<Core::MatrixXd>*>(pin)) {
                links.push_back({input, 0});
                mostRounds += pin->getBufferCapacity();
            }
    count();
}

bool WaitingSamples::count() {
    bool hasChanged = false;
    std::uint64_t takenNow = 0;
    isAny = isAnyWaking = false;
    for (Link& link : links) {
        const std::uint32_t waiting = link.input->getQueueLength();
        hasChanged = hasChanged || waiting != link.waiting;
        link.waiting = waiting;
        takenNow += link.input->getTakenCount();
        isAny = isAny || waiting > 0;
        isAnyWaking = isAnyWaking || (waiting > 0 && link.input->getIsWaking());
    }
    hasMoved = takenNow != taken;
    taken = takenNow;
    return hasChanged;
}

bool WaitingSamples::getHasWakingLinks() const {
    return std::any_of(links.begin(), links.end(),
                       [](const Link& link) { return link.input->getIsWaking(); });
}

} // namespace Quillmere::Host
