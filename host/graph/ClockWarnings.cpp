// SPDX-License-Identifier: MIT
#include "host/graph/ClockWarnings.h"

#include "framework/Quillmere.h"
#include "host/ends/MainInput.h"
#include "host/graph/Followers.h"
#include "host/plugins/KnownTypes.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace Quillmere::Host {

namespace {
bool getAsksForStream(const Graph& graph) {
    return graph.getDescription().clock == GraphDescription::Clock::Stream;
}

/// Where stamps of the wall clock get to from one output.
class Spread {
public:
    /// `followers` are the graph's. None is owned.
    Spread(const Graph& runGraph, const FollowerSet& runFollowers, const Core::AbstractOutputPin& origin,
           Complaints& list)
        : graph(runGraph), followers(runFollowers), first(origin), complaints(list) {}

    void follow(const Core::AbstractOutputPin& output) {
        for (const Graph::Node& node : graph.getNodes()) {
            if (node.block == nullptr) continue;
            for (const Core::AbstractInputPin* const input : node.block->getInputPins())
                if (input->getConnectedOutput() == &output) arrive(node, *input);
        }
    }

private:
    void arrive(const Graph::Node& node, const Core::AbstractInputPin& input) {
        const std::string& type = node.description->type;
        if (node.sink != nullptr) {
            if (getMakesRows(*node.block)) warn(node, "makes the rows of '" + node.description->id + "'");
            return;
        }
        if (&input != mainInputOf(*node.block) || !seen.insert(node.block.get()).second) return;
        if (getKnownType(type).readsTimes)
            warn(node, "reaches '" + node.description->id + "' (" + type + "), which reads time stamps");
        for (const Core::AbstractOutputPin* const output : node.block->getOutputPins())
            follow(*output);
    }

    /// A row has the time of its round, or that of its samples where they come from another layout or from
    /// behind blocks that make times.
    bool getMakesRows(const Core::Filter& sink) const {
        const bool isClock = graph.getSources().empty() && first.getManager()->getInputPins().empty();
        return isClock || graph.getDescription().layouts.size() > 1 || followers.contains(&sink);
    }

    void warn(const Graph::Node& node, const std::string& what) {
        complaints.warn(node.description->where,
                        "the wall clock, which '" + first.getManager()->getName() + "." + first.getName() +
                            "' stamps, " + what +
                            "; with 'clock: stream' it stamps the time of an offline run" +
                            (getAsksForStream(graph) ? " only, and this one is live" : ""));
    }

    const Graph& graph;
    const FollowerSet& followers;
    const Core::AbstractOutputPin& first;
    Complaints& complaints;
    std::set<const Core::Filter*> seen;
};

void warnOfStamps(const Graph& graph, Complaints& complaints) {
    std::vector<Core::Filter*> blocks;
    for (const Graph::Node& node : graph.getNodes())
        if (node.block != nullptr) blocks.push_back(node.block.get());
    const FollowerSet followers = followersAmong(blocks);
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr || node.isFaulty) continue;
        const KnownType& type = getKnownType(node.description->type);
        for (const Core::AbstractOutputPin* const output : node.block->getOutputPins())
            if (type.getStampsWallClock(output->getName()))
                Spread(graph, followers, *output, complaints).follow(*output);
    }
}

/// The block that tells the time of a graph without sources.
const Graph::Node* clockOf(const Graph& graph) {
    const auto& order = graph.getRunOrder();
    const auto found = std::find_if(order.begin(), order.end(), [](const Graph::Node* node) {
        return node->block->getInputPins().empty() && !node->block->getOutputPins().empty();
    });
    return found == order.end() ? nullptr : *found;
}
} // namespace

void warnOfWallClock(const Graph& graph, Complaints& complaints) {
    if (!getAsksForStream(graph)) warnOfStamps(graph, complaints);
}

void requireStreamClock(const Graph& graph, Complaints& complaints) {
    if (!getAsksForStream(graph) || !graph.getSources().empty()) return;
    const Graph::Node* const clock = clockOf(graph);
    if (clock == nullptr) return;
    const std::string& output = clock->block->getOutputPins().front()->getName();
    if (getKnownType(clock->description->type).getStampsWallClock(output))
        complaints.add(graph.getDescription().clockPlace,
                       clock->getQuoted() + ", which stamps the wall clock, as the block that tells the time",
                       "a generator with a time of its own in front of it, or 'clock: wall'");
}

void warnOfLiveWallClock(const Graph& graph, Complaints& complaints) {
    if (getAsksForStream(graph)) warnOfStamps(graph, complaints);
}

} // namespace Quillmere::Host
