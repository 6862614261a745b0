// SPDX-License-Identifier: MIT
#include "host/live/OverflowRules.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
bool getIsByRecordings(const Graph& graph) {
    const auto& nodes = graph.getNodes();
    return !graph.getSources().empty() &&
           std::none_of(nodes.begin(), nodes.end(),
                        [](const Graph::Node& node) { return getComesByItself(node.waking); });
}

/// The layouts that samples of this one come to, itself among them.
std::vector<bool> reachOf(const LayoutLinks& links, std::size_t layout) {
    std::vector<bool> reached(links.getCount(), false);
    for (std::size_t other = 0; other < reached.size(); ++other)
        reached[other] = other == layout || links.getIsLeading(layout, other);
    return reached;
}

bool getDoMeet(const std::vector<bool>& one, const std::vector<bool>& other) {
    for (std::size_t layout = 0; layout < one.size(); ++layout)
        if (one[layout] && other[layout]) return true;
    return false;
}

const LiveLayout* find(const std::deque<LiveLayout>& layouts, const Core::LayoutManager* manager) {
    const auto found = std::find_if(layouts.begin(), layouts.end(),
                                    [&](const LiveLayout& layout) { return &layout.getBlocks() == manager; });
    return found == layouts.end() ? nullptr : &*found;
}
} // namespace

OverflowRules::OverflowRules(Graph& runGraph, bool isUnpaced, std::optional<Overflow> given)
    : graph(runGraph), isByTime(isUnpaced && getIsByRecordings(runGraph)),
      standard(given.value_or(isByTime ? Overflow::Wait : Overflow::Drop)) {
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

/// With whom each layout is to keep in step.
std::vector<std::vector<std::size_t>> OverflowRules::companionsAmong(const std::deque<LiveLayout>& layouts,
                                                                     const LayoutLinks& links) const {
    std::vector<std::vector<std::size_t>> companions(layouts.size());
    std::map<std::size_t, std::vector<bool>> reaches;
    for (const LiveLayout& layout : layouts)
        if (isByTime && layout.getHasSources())
            reaches.emplace(layout.getNumber(), reachOf(links, layout.getNumber()));
    for (const auto& [layout, reached] : reaches)
        for (const auto& [other, reachedByOther] : reaches)
            if (layout != other && getDoMeet(reached, reachedByOther)) companions[layout].push_back(other);
    return companions;
}

void OverflowRules::apply(const std::vector<Core::Filter*>& blocks, std::deque<LiveLayout>& layouts,
                          LiveDrive& drive) const {
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
    drive.room.arrange(links, isAnyWaiting);
    drive.time.arrange(companionsAmong(layouts, links));
}

} // namespace Quillmere::Host
