// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/DescriptionCheck.h"
#include "host/description/GraphDescription.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// Makes a caller's changes in a graph and complains of those that don't fit it.
class GraphChanger {
public:
    GraphChanger(GraphDescription description, Complaints& complaints);

    GraphDescription change(const GraphChanges& changes);

private:
    using Setting = GraphDescription::Setting;

    void changeParameters(const std::vector<GraphChanges::Parameter>& list);
    void changeSettings(const std::vector<GraphChanges::Setting>& list);
    void changeFiles(const std::vector<GraphChanges::File>& list, Setting::Origin origin);
    GraphDescription::Block* requireBlock(const std::string& id, const std::string& option);
    static void put(GraphDescription::Block& block, Setting setting);
    void takeOut(GraphDescription::Block& block, const GraphChanges::Setting& change);

    GraphDescription graph;
    Complaints& complaints;
    DescriptionCheck check;
    IdIndex blocks; ///< Those with a good id.
};

} // namespace Quillmere::Host
