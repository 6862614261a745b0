// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/graph/GraphParts.h"
#include "host/graph/PinIndex.h"
#include "host/graph/SettingUnits.h"
#include "host/plugins/BlockCatalogue.h"

#include <map>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Fills a graph's `Timeline` and complains of what its blocks don't have. Whether they would take it is
/// rehearsed later (`TimelineRehearsal.h`).
class TimelineBuilder {
public:
    using Connected = std::map<const Core::AbstractInputPin*, Place>;

    /// `connected` holds the inputs that connections lead to; those that get values are entered too. Nothing
    /// is owned.
    TimelineBuilder(GraphParts& parts, Connected& connected, SettingUnits& units, Complaints& complaints);

    /// Finds everything. Requires: the entries stand by time.
    void resolve(const std::vector<GraphDescription::TimelineEntry>& entries);
    /// Links the inputs that get values. Requires: the graph's blocks stand in their layout.
    void link();

private:
    using Change = GraphDescription::TimelineChange;
    using Node = GraphParts::Node;

    void resolve(double at, const Change& change, const Node& node);
    void resolveSetting(const Change& change, const Node& node, Timeline::Action& action);
    void resolveCommand(const Change& change, const Node& node, Timeline::Action& action);
    void resolveInput(const Change& change, const Node& node, Timeline::Action& action);
    template <class Names>
    void refuse(const std::string& kind, const Change& change, const Node& node, const Names& known);
    Core::OutputPin<Core::MatrixXd>& outputFor(Core::AbstractInputPin& input);

    GraphParts& parts;
    Connected& connected;
    SettingUnits& units;
    Complaints& complaints;
    PinIndex<Core::AbstractInputPin> inputs;
    std::map<Core::AbstractInputPin*, Core::OutputPin<Core::MatrixXd>*> links;
};

} // namespace Quillmere::Host
