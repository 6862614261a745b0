// SPDX-License-Identifier: MIT
#include "host/run/WaitingSamples.h"

#include "host/plugins/KnownTypes.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
bool comesFromElsewhere(const Core::AbstractInputPin& input) {
    const Core::AbstractOutputPin* const sender = input.getConnectedOutput();
    return sender != nullptr && Core::layoutOf(*sender) != Core::layoutOf(input);
}
} // namespace

void WaitingSamples::watch(const std::vector<Core::Filter*>& blocks) {
    links.clear();
    mostRounds = 0;
    hasWakingLinks = hasBursts = false;
    for (const Core::Filter* const block : blocks) {
        if (!block->getInputPins().empty()) ++mostRounds;
        for (Core::AbstractInputPin* const pin : block->getInputPins()) {
            auto* const input = dynamic_cast<Core::InputPin<Core::MatrixXd>*>(pin);
            if (input == nullptr) continue;
            const bool isFromElsewhere = comesFromElsewhere(*input);
            const bool isOfMaker = getMakesTimes(input->getConnectedOutput());
            const bool isBurst = isOfMaker && !isFromElsewhere;
            const bool isWaking = isOfMaker && isFromElsewhere;
            links.push_back({.input = input,
                             .isFromElsewhere = isFromElsewhere,
                             .isBurst = isBurst,
                             .isWaking = isWaking});
            mostRounds += isBurst ? 1 : input->getBufferCapacity();
            hasBursts = hasBursts || isBurst;
            hasWakingLinks = hasWakingLinks || isWaking || input->getIsWaking();
        }
    }
    count();
}

bool WaitingSamples::count() {
    bool hasMoved = false;
    isAny = isAnyWaking = isAnyBurst = false;
    for (Link& link : links) {
        const std::uint32_t waiting = link.input->getQueueLength();
        const std::uint64_t taken = link.input->getTakenCount();
        hasMoved = hasMoved || (link.isFromElsewhere ? taken != link.taken : waiting != link.waiting);
        link.waiting = waiting;
        link.taken = taken;
        isAny = isAny || waiting > 0;
        isAnyWaking = isAnyWaking || (waiting > 0 && (link.isWaking || link.input->getIsWaking()));
        isAnyBurst = isAnyBurst || (waiting > 0 && link.isBurst);
    }
    return hasMoved;
}

std::uint64_t WaitingSamples::getLinksFromElsewhere() const {
    return static_cast<std::uint64_t>(
        std::count_if(links.begin(), links.end(), [](const Link& link) { return link.isFromElsewhere; }));
}

} // namespace Quillmere::Host
