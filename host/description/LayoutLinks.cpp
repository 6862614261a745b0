// SPDX-License-Identifier: MIT
#include "host/description/LayoutLinks.h"

#include "host/description/IdIndex.h"

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

/// The numbers of the layouts that hold the blocks.
class LayoutNumbers {
public:
    explicit LayoutNumbers(const GraphDescription& graph)
        : description(graph), layouts(graph.layouts), blocks(graph.blocks) {}

    /// That of none for an end that names no block.
    std::size_t of(const GraphDescription::Endpoint& end) const {
        const std::size_t* const block = blocks.find(end.block);
        const std::size_t* const layout =
            block == nullptr ? nullptr : layouts.find(description.blocks[*block].layout);
        return layout == nullptr ? description.layouts.size() : *layout;
    }

private:
    const GraphDescription& description;
    const IdIndex layouts;
    const IdIndex blocks;
};

} // namespace

void checkOverflows(const GraphDescription& description, Complaints& complaints) {
    const auto& layouts = description.layouts;
    const LayoutNumbers numbers(description);
    LayoutLinks links(layouts.size());
    for (const bool isComplaining : {false, true}) // all links first
        for (const Connection& connection : description.connections) {
            const std::size_t from = numbers.of(connection.from);
            const std::size_t to = numbers.of(connection.to);
            if (from == layouts.size() || to == layouts.size()) continue;
            if (!isComplaining && from != to) links.add(from, to);
            if (!isComplaining || !connection.overflow.value) continue;
            if (from == to)
                complaints.warn(connection.overflow.where, "'overflow' says nothing within the layout '" +
                                                               layouts[from].id +
                                                               "', since no thread waits for another there");
            else if (*connection.overflow.value == Overflow::Wait && links.getIsLeading(to, from))
                complaints.add(connection.overflow.where,
                               "'overflow: wait' from the layout '" + layouts[from].id + "' to '" +
                                   layouts[to].id + "', which feeds it in turn",
                               "'overflow: drop', or layouts that don't feed each other in a loop");
        }
}

} // namespace Quillmere::Host
