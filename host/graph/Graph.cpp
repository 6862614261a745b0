// SPDX-License-Identifier: MIT
#include "host/graph/Graph.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "host/graph/FirstRows.h"
#include "host/graph/GraphBuilder.h"
#include "host/graph/SettingRules.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

Graph::Graph(const GraphDescription& graphDescription, const BlockCatalogue& catalogue,
             Complaints& complaints)
    : description(graphDescription.resolved(complaints)), parts(description) {
    GraphBuilder(parts, description, catalogue, complaints).build();
    warnOfContradictions(*this, complaints);
}

Graph::~Graph() = default;

const GraphDescription::Connection* Graph::findConnection(const Core::AbstractInputPin& input) const {
    const auto found = parts.connections.find(&input);
    return found == parts.connections.end() ? nullptr : found->second;
}

void Graph::requireDrive(Complaints& complaints) const {
    const auto isDriving = [](const Node& node) {
        return node.block == nullptr || (node.sink == nullptr && node.block->getInputPins().empty());
    };
    if (description.isUsable && std::none_of(parts.nodes.begin(), parts.nodes.end(), isDriving))
        complaints.add({description.path, 1, 1}, "a graph that nothing drives",
                       "a block that reads a recording, such as RecordingSource, or one without inputs");
    if (description.isUsable && parts.sinks.empty())
        complaints.warn(
            {description.path, 1, 1},
            "the graph has no sink, so nothing is kept of what it does; a RecordingSink writes a result");
}

void Graph::openSources(Complaints& complaints, Pipes pipes) {
    for (const Node& node : parts.nodes) {
        if (node.source == nullptr || node.isFaulty) continue;
        if (pipes == Pipes::Read || !getComesByItself(node.waking)) node.source->open(complaints);
    }
    warnOfFirstRows(*this, complaints);
    std::vector<std::string> recorded;
    for (const Node& node : parts.nodes)
        if (node.recorded != nullptr)
            for (std::string& name : node.recorded->getColumnNames())
                recorded.push_back(std::move(name));
    for (const Node& node : parts.nodes)
        if (node.result != nullptr && !node.isFaulty) node.result->checkFile(recorded, complaints);
}

void Graph::allowOverwriting() {
    for (const Node& node : parts.nodes)
        if (node.result != nullptr) node.result->setOverwrites(true);
}

void Graph::setStop(const std::stop_token& stop) {
    for (const Node& node : parts.nodes) {
        if (node.waking != nullptr) node.waking->setStop(stop);
        if (node.result != nullptr) node.result->setStop(stop);
    }
}

void Graph::openSinks() {
    try {
        for (Sink* const sink : parts.sinks)
            sink->open();
    } catch (...) {
        for (Sink* const sink : parts.sinks)
            sink->discard();
        throw;
    }
}

void Graph::cutLoose(Core::Filter& block) {
    for (Core::AbstractInputPin* const pin : block.getInputPins())
        pin->detachAll();
    for (Core::AbstractOutputPin* const pin : block.getOutputPins())
        pin->detachAll();
    parts.layout.remove(block);
}

} // namespace Quillmere::Host
