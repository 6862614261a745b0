// SPDX-License-Identifier: MIT
#include "host/graph/Graph.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "host/graph/FirstRows.h"
#include "host/graph/GraphBuilder.h"
#include "host/graph/RateSettings.h"
#include "host/graph/SettingRules.h"
#include "host/graph/TimelineRehearsal.h"
#include "host/graph/UnitFinder.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

Graph::Graph(const GraphDescription& graphDescription, const BlockCatalogue& blockCatalogue,
             Complaints& complaints)
    : catalogue(blockCatalogue), description(graphDescription.resolved(complaints)), parts(description) {
    GraphBuilder(parts, description, catalogue, complaints).build();
    if (!parts.awaitsRates) warnOfContradictions(*this, complaints);
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

/// Writes what had to wait for the rates, and tells sinks the units of what comes to them.
void Graph::settle(Complaints& complaints) {
    Complaints own;
    RateSettings rates(parts, description, catalogue, own);
    rates.measureSources();
    if (parts.awaitsRates) {
        rates.write();
        // What has no number yet would only be refused again.
        if (own.isEmpty()) rehearseTimeline(parts, catalogue, own);
        warnOfContradictions(*this, own);
    }
    rates.warnOfUnevenTime();
    carryUnits(parts, rates.getManuals(), own);
    complaints.add(own);
    complaints.add(rates.getManualComplaints());
}

void Graph::openRecordings(Complaints& complaints, Pipes pipes) {
    bool areAllOpen = true;
    Complaints refusals;
    for (const Node& node : parts.nodes) {
        if (node.source == nullptr) continue;
        const bool isLeft = pipes == Pipes::Leave && getComesByItself(node.waking);
        // What a graph states of a pipe is all that is known of its rate, also when it is open.
        const bool isSettled = node.recorded != nullptr && node.recorded->getIsRateSettled();
        areAllOpen = areAllOpen && (!isLeft || isSettled) && !node.isFaulty;
        if (!isLeft && !node.isFaulty) node.source->open(refusals);
    }
    // Without a recording there may be no rate, which is no complaint of its own.
    if (areAllOpen && refusals.isEmpty()) settle(complaints);
    complaints.add(refusals);
}

void Graph::openSources(Complaints& complaints, Pipes pipes) {
    openRecordings(complaints, pipes);
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

void Graph::setStopOfOpening(const std::stop_token& stop) {
    for (const Node& node : parts.nodes)
        if (node.waking != nullptr) node.waking->setStopOfOpening(stop);
}

void Graph::setStop(const std::stop_token& stop) {
    for (const Node& node : parts.nodes) {
        if (node.waking != nullptr) node.waking->setStop(stop);
        if (node.result != nullptr) node.result->setStop(stop);
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
