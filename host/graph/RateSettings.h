// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/PropertyWriter.h"
#include "host/graph/RateValues.h"

namespace Quillmere::Host {

/// Whether a value is a frequency or a time for a setting that takes numbers, and so has to wait for a rate.
bool getAwaitsRate(const PropertyWrite& write);

/// Writes what a graph says in hertz or seconds, once its recordings are open: settings of blocks, and what
/// the timeline writes and sends. In the graph's description numbers take their places.
class RateSettings {
public:
    /// None is owned.
    RateSettings(GraphParts& graphParts, GraphDescription& graphDescription, const BlockCatalogue& catalogue,
                 Complaints& list)
        : parts(graphParts), description(graphDescription), complaints(list),
          values(parts.nodes, parts.sourceRates, catalogue) {}

    /// Asks the sources how often they send, if there is a block that has a use for it.
    void measureSources();
    void write();
    /// Warns, once for each recording, of time stamps that aren't even where a block counts on a rate.
    void warnOfUnevenTime();
    ManualShelf& getManuals() { return values.getFinder().getManuals(); }
    /// What is wrong with the manuals that were looked at.
    const Complaints& getManualComplaints() { return values.getFinder().getComplaints(); }

private:
    void writeSettings(GraphParts::Node& node);
    void writeTimeline();
    /// Puts the number in place of the quantity; false, and a complaint, where there is none.
    bool convert(const RateValues::Target& target, Value& value, Complaints& own,
                 std::optional<double> at = {});

    GraphParts& parts;
    GraphDescription& description; ///< Of the parts.
    Complaints& complaints;
    RateValues values;
};

} // namespace Quillmere::Host
