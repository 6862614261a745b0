// SPDX-License-Identifier: MIT
#include "host/graph/ClockWarnings.h"

#include "framework/Quillmere.h"
#include "host/ends/MainInput.h"

#include <algorithm>
#include <set>
#include <string>

namespace Quillmere::Host {

std::span<const WallClockOutput> getWallClockOutputs() {
    static constexpr WallClockOutput outputs[]{
        {"FilterInvGain", "output"},
        {"FilterEdge", "edge"},
        {"FilterBessel", "gain"},
        {"FilterBessel", "coeffs"},
        {"FilterButterworthV2", "gain"},
        {"FilterButterworthV2", "coeffs"},
        {"FilterChebyshev", "gain"},
        {"FilterChebyshev", "coeffs"},
        {"FilterEllipticV1", "gain"},
        {"FilterEllipticV1", "coeffs"},
        {"FilterGaussianWhiteNoiseGenerator", "out"},
    };
    return outputs;
}

std::span<const char* const> getTimeReaders() {
    static constexpr const char* readers[]{"FilterFrequency", "FilterFlagStatic", "FilterSphericalFiltering"};
    return readers;
}

namespace {
bool getAsksForStream(const Graph& graph) {
    return graph.getDescription().clock == GraphDescription::Clock::Stream;
}

/// Where stamps of the wall clock get to from one output.
class Spread {
public:
    Spread(const Graph& runGraph, const Core::AbstractOutputPin& origin, Complaints& list)
        : graph(runGraph), first(origin), complaints(list) {}

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
        const auto isType = [&](const char* reader) { return type == reader; };
        if (node.sink != nullptr) {
            if (getMakesRows()) warn(node, "makes the rows of '" + node.description->id + "'");
            return;
        }
        if (&input != mainInputOf(*node.block) || !seen.insert(node.block.get()).second) return;
        const auto readers = getTimeReaders();
        if (std::any_of(readers.begin(), readers.end(), isType))
            warn(node, "reaches '" + node.description->id + "' (" + type + "), which reads time stamps");
        for (const Core::AbstractOutputPin* const output : node.block->getOutputPins())
            follow(*output);
    }

    /// A row has the time of its round, or that of its samples where they come from another layout.
    bool getMakesRows() const {
        const bool isClock = graph.getSources().empty() && first.getManager()->getInputPins().empty();
        return isClock || graph.getDescription().layouts.size() > 1;
    }

    void warn(const Graph::Node& node, const std::string& what) {
        complaints.warn(node.description->where,
                        "the wall clock, which '" + first.getManager()->getName() + "." + first.getName() +
                            "' stamps, " + what +
                            "; with 'clock: stream' it stamps the time of an offline run" +
                            (getAsksForStream(graph) ? " only, and this one is live" : ""));
    }

    const Graph& graph;
    const Core::AbstractOutputPin& first;
    Complaints& complaints;
    std::set<const Core::Filter*> seen;
};

void warnOfStamps(const Graph& graph, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr || node.isFaulty) continue;
        for (const WallClockOutput& stamped : getWallClockOutputs()) {
            if (node.description->type != stamped.type) continue;
            for (const Core::AbstractOutputPin* const output : node.block->getOutputPins())
                if (output->getName() == stamped.output) Spread(graph, *output, complaints).follow(*output);
        }
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
    for (const WallClockOutput& stamped : getWallClockOutputs())
        if (clock->description->type == stamped.type && output == stamped.output)
            complaints.add(graph.getDescription().clockPlace,
                           "'" + clock->description->id + "' (" + stamped.type +
                               "), which stamps the wall clock, as the block that tells the time",
                           "a generator with a time of its own in front of it, or 'clock: wall'");
}

void warnOfLiveWallClock(const Graph& graph, Complaints& complaints) {
    if (getAsksForStream(graph)) warnOfStamps(graph, complaints);
}

} // namespace Quillmere::Host
