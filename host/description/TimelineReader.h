// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/DescriptionCheck.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// The reading of a graph's timeline: `[{at: 2.5, set: {hold.LowThreshold: 0.2}}, {at: 3, fire:
/// counter.Reset}]`.
class TimelineReader {
public:
    /// `check` knows the blocks already.
    TimelineReader(DescriptionCheck& check, Complaints& complaints);

    /// Whether parameters give no more of a timeline than times and values, so that it can be read before
    /// they are filled in.
    static bool getIsReadable(const Value& list);

    /// The entries as they are written. With `isFilledIn` nothing in it stands for a parameter.
    std::vector<GraphDescription::TimelineEntry> read(const Value& list, bool isFilledIn);

private:
    using Change = GraphDescription::TimelineChange;
    using Entry = GraphDescription::TimelineEntry;

    void readEntry(const Value& value);
    bool readTime(const Value& value, Entry& entry);
    void readValues(const Value& map, Change::Kind kind, Entry& entry);
    void readCommands(const Value& value, Entry& entry);
    void addChange(const std::string& target, const Place& where, Change change, Entry& entry);

    DescriptionCheck& check;
    Complaints& complaints;
    bool isWithoutParameters = false;
    std::vector<Entry> entries;
};

} // namespace Quillmere::Host
