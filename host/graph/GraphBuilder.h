// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/graph/Graph.h"
#include "host/description/GraphDescription.h"
#include "host/graph/PinIndex.h"

#include <map>
#include <set>
#include <string>
#include <unordered_map>

namespace Quillmere::Host {

/// Fills a `Graph` with living blocks and complains of what doesn't fit them.
class GraphBuilder {
public:
    GraphBuilder(Graph& target, Complaints& complaints);

    void build(const BlockCatalogue& catalogue);

private:
    using Connection = GraphDescription::Connection;
    using Node = Graph::Node;
    using Setting = GraphDescription::Setting;

    void createBlocks(const BlockCatalogue& catalogue);
    static void findEnds(Node& node);
    void applySettings(Node& node);
    static void checkOrigins(const Node& node, Complaints& own);
    void writeProperties(Node& node, Complaints& own);
    void connect(const Connection& connection);
    Core::AbstractOutputPin* findOutput(const GraphDescription::Endpoint& end, const Node& node);
    Core::AbstractInputPin* findInput(const GraphDescription::Endpoint& end, const Node& node);
    template <class Pins>
    void refusePin(const GraphDescription::Endpoint& end, const Node& node, const std::string& kind,
                   const Pins& pins);
    void checkMainInputs();
    void arrange();

    Graph& graph;
    const GraphDescription& description;
    Complaints& complaints;
    std::map<const Core::AbstractInputPin*, Place> connected; ///< For each input where its connection stands.
    PinIndex<Core::AbstractOutputPin> outputs;
    PinIndex<Core::AbstractInputPin> inputs;
    std::set<std::string> faultyReceivers; ///< Blocks to which a connection leads that couldn't be made.
};

} // namespace Quillmere::Host
