// SPDX-License-Identifier: MIT
#include "host/description/LayoutLinks.h"

#include <algorithm>
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

} // namespace Quillmere::Host
