// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// The reading of a graph file's timeline: `[{at: 2.5, set: {hold.LowThreshold: 0.2}}, {at: 3, fire: counter.Reset}]`.
class TimelineReader {
public:
    /// `graph` has its blocks already.
    TimelineReader(const GraphDescription& graph, Complaints& complaints);

    /// The entries by time, those of one time in file order. `list` has its parameters filled in.
    std::vector<GraphDescription::TimelineEntry> read(const Value& list);

private:
    using Change = GraphDescription::TimelineChange;
    using Entry = GraphDescription::TimelineEntry;

    void readEntry(const Value& value);
    bool readTime(const Value& value, Entry& entry);
    void readValues(const Value& map, Change::Kind kind, Entry& entry);
    void readCommands(const Value& value, Entry& entry);
    void addChange(const std::string& target, const Place& where, Change change, Entry& entry);

    const GraphDescription& graph;
    Complaints& complaints;
    std::vector<Entry> entries;
};

} // namespace Quillmere::Host
