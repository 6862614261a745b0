// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/graph/GraphParts.h"
#include "host/graph/PinIndex.h"
#include "host/graph/SettingUnits.h"
#include "host/plugins/BlockCatalogue.h"

#include <map>
#include <set>
#include <string>
#include <unordered_map>

namespace Quillmere::Host {

/// Fills the parts of a graph with living blocks and complains of what doesn't fit them.
class QUILLMERE_API GraphBuilder {
public:
    /// `parts` are those of the description, which is resolved; nothing is owned.
    /// In the description numbers take the places of times and frequencies for which no rate is needed.
    GraphBuilder(GraphParts& parts, GraphDescription& description, const BlockCatalogue& catalogue,
                 Complaints& complaints);

    /// Once.
    void build();

private:
    using Connection = GraphDescription::Connection;
    using Node = GraphParts::Node;
    using Setting = GraphDescription::Setting;

    void createBlocks();
    void refuseType(const GraphDescription::Block& block);
    static void findEnds(Node& node);
    void applySettings(Node& node);
    static void checkOrigins(const Node& node, Complaints& own);
    void setProperties(Node& node, Complaints& own);
    void connect(const Connection& connection);
    Core::AbstractOutputPin* findOutput(const GraphDescription::Endpoint& end, const Node& node);
    Core::AbstractInputPin* findInput(const GraphDescription::Endpoint& end, const Node& node);
    template <class Pins>
    void refusePin(const GraphDescription::Endpoint& end, const Node& node, const std::string& kind,
                   const Pins& pins);
    void checkMainInputs();
    void arrange();

    GraphParts& parts;
    const GraphDescription& description;
    const BlockCatalogue& catalogue;
    Complaints& complaints;
    SettingUnits units;
    std::map<const Core::AbstractInputPin*, Place> connected; ///< For each input where its connection stands.
    PinIndex<Core::AbstractOutputPin> outputs;
    PinIndex<Core::AbstractInputPin> inputs;
    std::set<std::string> faultyReceivers; ///< Blocks to which a connection leads that couldn't be made.
};

} // namespace Quillmere::Host
