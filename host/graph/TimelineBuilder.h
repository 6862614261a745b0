// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/graph/Graph.h"
#include "host/description/GraphDescription.h"
#include "host/graph/PinIndex.h"

#include <map>
#include <string>

namespace Quillmere::Host {

/// Fills a graph's `Timeline` and complains of what its blocks don't have or wouldn't take. The changes are
/// rehearsed, by time, on blocks of their own that are set as those of the graph: the graph's own blocks are
/// left as they begin.
class TimelineBuilder {
public:
    using Connected = std::map<const Core::AbstractInputPin*, Place>;

    TimelineBuilder(Graph& target, const GraphDescription& description, Complaints& complaints);

    /// Finds and rehearses everything. Inputs that get values are entered in `connected`, which holds those
    /// that connections lead to.
    void resolve(const BlockCatalogue& catalogue, Connected& connected);
    /// Links the inputs that get values. Requires: the graph's blocks stand in their layout.
    void link();

private:
    using Change = GraphDescription::TimelineChange;

    void resolve(double at, const Change& change, const Graph::Node& node);
    void resolveSetting(const Change& change, const Graph::Node& node, Timeline::Action& action);
    void resolveCommand(const Change& change, const Graph::Node& node, Timeline::Action& action);
    void resolveInput(const Change& change, const Graph::Node& node, Timeline::Action& action);
    template <class Names>
    void refuse(const std::string& kind, const Change& change, const Graph::Node& node, const Names& known);
    Core::Filter* rehearsalOf(const Graph::Node& node);
    Core::OutputPin<Core::MatrixXd>& outputFor(Core::AbstractInputPin& input);

    Graph& graph;
    const GraphDescription& description;
    Complaints& complaints;
    const BlockCatalogue* catalogue = nullptr;
    Connected* connected = nullptr;
    PinIndex<Core::AbstractInputPin> inputs;
    /// For a block of the graph the one that stands in for it.
    std::map<const Core::Filter*, BlockPtr> rehearsals;
    std::map<Core::AbstractInputPin*, Core::OutputPin<Core::MatrixXd>*> links;
};

} // namespace Quillmere::Host
