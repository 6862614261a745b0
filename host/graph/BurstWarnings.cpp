// SPDX-License-Identifier: MIT
#include "host/graph/BurstWarnings.h"

#include "framework/Quillmere.h"

#include <set>
#include <string>

namespace Quillmere::Host {

namespace {
using Connection = GraphDescription::Connection;

/// What may let several samples come to `block` in quick succession; empty when nothing does.
std::string reasonForBursts(const Core::PinManager& block, std::set<const Core::PinManager*>& seen) {
    if (getComesByItself(dynamic_cast<const WakingSource*>(&block)))
        return "the rows of '" + block.getName() +
               (dynamic_cast<const FileEnd*>(&block) != nullptr ? "' come through a pipe"
                                                                : "' come when they come");
    for (const Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        if (sender == nullptr || !seen.insert(sender->getManager()).second) continue;
        std::string reason = reasonForBursts(*sender->getManager(), seen);
        if (!reason.empty()) return reason;
    }
    return {};
}
} // namespace

void warnOfBursts(const Graph& graph, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr) continue;
        for (const Core::AbstractInputPin* const pin : node.block->getInputPins()) {
            const Connection* const connection = graph.findConnection(*pin);
            // Of what comes to a control input the newest counts.
            if (connection == nullptr || !pin->getIsBlocking() || connection->buffer.value ||
                connection->overflow.value)
                continue;
            const Graph::Node* const from = graph.find(connection->from.block);
            const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
            if (from == nullptr || sender == nullptr || from->description->layout == node.description->layout)
                continue;
            std::set<const Core::PinManager*> seen{sender->getManager()};
            std::string reason = reasonForBursts(*sender->getManager(), seen);
            if (!reason.empty())
                complaints.warn(connection->where,
                                "the layout '" + node.description->layout + "' keeps one sample of '" +
                                    connection->from.getText() + "', and " + reason +
                                    ", several at a time: what it is late for is lost. Give the connection "
                                    "'buffer: N', with N as many as it may be late, or 'overflow: wait'");
        }
    }
}

} // namespace Quillmere::Host
