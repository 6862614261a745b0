// SPDX-License-Identifier: MIT
#include "host/live/OverflowRules.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
Overflow standardOf(const Graph& graph, bool isUnpaced) {
    const auto& nodes = graph.getNodes();
    const bool isByRecordings =
        !graph.getSources().empty() && std::none_of(nodes.begin(), nodes.end(), [](const Graph::Node& node) {
            return getComesByItself(node.waking);
        });
    return isUnpaced && isByRecordings ? Overflow::Wait : Overflow::Drop;
}

const LiveLayout* find(const std::deque<LiveLayout>& layouts, const Core::LayoutManager* manager) {
    const auto found = std::find_if(layouts.begin(), layouts.end(),
                                    [&](const LiveLayout& layout) { return &layout.getBlocks() == manager; });
    return found == layouts.end() ? nullptr : &*found;
}
} // namespace

OverflowRules::OverflowRules(Graph& runGraph, bool isUnpaced, std::optional<Overflow> given)
    : graph(runGraph), standard(given.value_or(standardOf(runGraph, isUnpaced))) {
    for (const Graph::Node& node : graph.getNodes())
        for (const Core::AbstractInputPin* const input : node.block->getInputPins())
            if (const auto* const connection = graph.findConnection(*input))
                set(*input, connection->overflow.value);
}

void OverflowRules::set(const Core::AbstractInputPin& input, std::optional<Overflow> overflow) {
    wanted.erase(&input);
    if (overflow) wanted[&input] = *overflow;
}

bool OverflowRules::getIsWaiting(const Core::AbstractInputPin& input) const {
    const auto found = wanted.find(&input);
    return (found == wanted.end() ? standard : found->second) == Overflow::Wait;
}

std::vector<OverflowRules::Crossing>
OverflowRules::findCrossings(const std::vector<Core::Filter*>& blocks,
                             const std::deque<LiveLayout>& layouts) const {
    std::vector<Crossing> crossings;
    for (const Core::Filter* const block : blocks)
        for (Core::AbstractInputPin* const input : block->getInputPins()) {
            const Core::AbstractOutputPin* const output = input->getConnectedOutput();
            // What a timeline sends is sent between rounds.
            if (output == nullptr || output->getManager() == graph.getTimeline().getSender()) continue;
            const LiveLayout* const sender = find(layouts, Core::layoutOf(*output));
            const LiveLayout* const reader = find(layouts, Core::layoutOf(*input));
            if (sender != nullptr && reader != nullptr && sender != reader)
                crossings.push_back({input, output, sender->getNumber(), reader->getNumber()});
        }
    return crossings;
}

LayoutLinks OverflowRules::linksOf(const std::vector<Crossing>& crossings, std::size_t layouts) {
    LayoutLinks links(layouts);
    for (const Crossing& crossing : crossings)
        links.add(crossing.sender, crossing.reader);
    return links;
}

bool OverflowRules::getIsLeading(const std::vector<Core::Filter*>& blocks,
                                 const std::deque<LiveLayout>& layouts, const LiveLayout& from,
                                 const LiveLayout& to) const {
    return linksOf(findCrossings(blocks, layouts), layouts.size())
        .getIsLeading(from.getNumber(), to.getNumber());
}

void OverflowRules::apply(const std::vector<Core::Filter*>& blocks, std::deque<LiveLayout>& layouts,
                          RoomBoard& board) const {
    const std::vector<Crossing> crossings = findCrossings(blocks, layouts);
    const LayoutLinks links = linksOf(crossings, layouts.size());
    std::vector<std::vector<SendRoom::Link>> rooms(layouts.size());
    bool isAnyWaiting = false;
    for (const Crossing& crossing : crossings) {
        auto* const input = dynamic_cast<Core::InputPin<Core::MatrixXd>*>(crossing.input);
        if (input == nullptr || !getIsWaiting(*input) || links.getIsLeading(crossing.reader, crossing.sender))
            continue;
        rooms[crossing.sender].push_back(
            {.input = input, .output = crossing.output, .reader = crossing.reader});
        isAnyWaiting = true;
    }
    for (LiveLayout& layout : layouts)
        layout.waitForRoomIn(std::move(rooms[layout.getNumber()]));
    board.arrange(links, isAnyWaiting);
}

} // namespace Quillmere::Host
