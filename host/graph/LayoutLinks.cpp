// SPDX-License-Identifier: MIT
#include "host/graph/LayoutLinks.h"

#include "framework/Quillmere.h"
#include "host/graph/Graph.h"

#include <algorithm>
#include <set>
#include <string>

namespace Quillmere::Host {

bool LayoutLinks::getIsLeading(std::size_t from, std::size_t to) const {
    std::vector<bool> seen(feeds.size(), false);
    std::vector<std::size_t> open{from};
    while (!open.empty()) {
        const std::size_t layout = open.back();
        open.pop_back();
        if (feeds[layout][to]) return true;
        for (std::size_t next = 0; next < feeds.size(); ++next) {
            if (!feeds[layout][next] || seen[next]) continue;
            seen[next] = true;
            open.push_back(next);
        }
    }
    return false;
}

namespace {
using Connection = GraphDescription::Connection;

/// The number of the layout that holds a block; that of none for an end that names no block.
std::size_t layoutOf(const GraphDescription& description, const GraphDescription::Endpoint& end) {
    const auto& layouts = description.getLayouts();
    const GraphDescription::Block* const block = description.findBlock(end.block);
    if (block == nullptr) return layouts.size();
    const auto found = std::find_if(layouts.begin(), layouts.end(),
                                    [&](const auto& layout) { return layout.id == block->layout; });
    return static_cast<std::size_t>(found - layouts.begin());
}

/// What may let several samples come to `block` in quick succession; empty when nothing does.
std::string reasonForBursts(const Core::PinManager& block, std::set<const Core::PinManager*>& seen) {
    if (const auto* const source = dynamic_cast<const Source*>(&block);
        source != nullptr && source->getIsPiped())
        return "the rows of '" + source->getName() + "' come through a pipe";
    for (const Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        if (sender == nullptr || !seen.insert(sender->getManager()).second) continue;
        std::string reason = reasonForBursts(*sender->getManager(), seen);
        if (!reason.empty()) return reason;
    }
    return {};
}
} // namespace

void checkOverflows(const GraphDescription& description, Complaints& complaints) {
    const auto& layouts = description.getLayouts();
    LayoutLinks links(layouts.size());
    for (const bool isComplaining : {false, true}) // all links first
        for (const Connection& connection : description.getConnections()) {
            const std::size_t from = layoutOf(description, connection.from);
            const std::size_t to = layoutOf(description, connection.to);
            if (from == layouts.size() || to == layouts.size()) continue;
            if (!isComplaining && from != to) links.add(from, to);
            if (!isComplaining || !connection.overflow) continue;
            if (from == to)
                complaints.warn(connection.overflowWhere, "'overflow' says nothing within the layout '" +
                                                              layouts[from].id +
                                                              "', since no thread waits for another there");
            else if (connection.overflow == Overflow::Wait && links.getIsLeading(to, from))
                complaints.add(connection.overflowWhere,
                               "'overflow: wait' from the layout '" + layouts[from].id + "' to '" +
                                   layouts[to].id + "', which feeds it in turn",
                               "'overflow: drop', or layouts that don't feed each other in a loop");
        }
}

void warnOfBursts(const Graph& graph, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr) continue;
        for (const Core::AbstractInputPin* const pin : node.block->getInputPins()) {
            const Connection* const connection = graph.findConnection(*pin);
            // Of what comes to a control input the newest counts.
            if (connection == nullptr || !pin->getIsBlocking() || connection->buffer || connection->overflow)
                continue;
            const GraphDescription::Block* const from =
                graph.getDescription().findBlock(connection->from.block);
            const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
            if (from == nullptr || sender == nullptr || from->layout == node.description->layout) continue;
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
