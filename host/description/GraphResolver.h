// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/DescriptionCheck.h"
#include "host/description/GraphDescription.h"
#include "host/description/ParameterValues.h"

namespace Quillmere::Host {

/// Makes of a graph as it is written one that can be built; see `GraphDescription::resolved`.
class GraphResolver {
public:
    GraphResolver(const GraphDescription& description, Complaints& complaints);

    GraphDescription resolve();

private:
    void takeLayouts();
    void takeBlocks();
    void takeBlock(GraphDescription::Block block);
    void takeConnections();
    void takeTimeline();
    void takeEntry(GraphDescription::TimelineEntry entry);
    template <class T>
    void fillIn(Given<T>& given, std::optional<T> (*convert)(const Value&, Complaints&));

    const GraphDescription& written;
    Complaints& complaints;
    DescriptionCheck check;
    ParameterValues parameters;
    GraphDescription graph;
};

} // namespace Quillmere::Host
