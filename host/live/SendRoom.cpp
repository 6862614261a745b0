// SPDX-License-Identifier: MIT
#include "host/live/SendRoom.h"

#include <algorithm>

namespace Quillmere::Host {

std::uint32_t SendRoom::Link::getNeeded() const {
    return std::min(most, input->getBufferCapacity());
}

void SendRoom::watch(std::vector<Link> newLinks) {
    for (Link& link : newLinks) {
        const auto known = std::find_if(links.begin(), links.end(), [&](const Link& other) {
            return other.input == link.input && other.output == link.output;
        });
        if (known != links.end()) link.most = known->most;
        link.sent = link.output->getSentCount();
        link.sure = 0; // the buffer may be another one
    }
    links = std::move(newLinks);
}

const SendRoom::Link* SendRoom::findFull() {
    for (Link& link : links) {
        const std::uint32_t needed = link.getNeeded();
        // The reader only makes room, so most rounds needn't ask.
        if (link.sure < needed) link.sure = link.input->getRoom();
        if (link.sure < needed) return &link;
    }
    return nullptr;
}

void SendRoom::countRound() {
    for (Link& link : links) {
        const std::uint64_t sent = link.output->getSentCount();
        const auto burst = static_cast<std::uint32_t>(sent - link.sent);
        link.sent = sent;
        link.most = std::max(link.most, burst);
        link.sure -= std::min(link.sure, burst);
    }
}

} // namespace Quillmere::Host
