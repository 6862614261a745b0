// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/GraphDescription.h"
#include "host/graph/RateValues.h"

#include <optional>

namespace Quillmere::Host {

/// The unit that the page of a setting's block names for it, seconds or hertz; nothing where it names none.
/// Where the unit goes by another setting, that counts as `given` has it, else as the living block holds it.
///
/// Requires: the target is a setting.
std::optional<BlockManual::TimeUnit> unitOf(const BlockManual& manual, const RateValues::Target& target,
                                            const GraphDescription::Block* given = nullptr);

/// What a time or a frequency is in the unit of a setting; nothing, and a complaint, where it is the other of
/// the two. Requires: `value` is a quantity.
std::optional<RateConversion> inUnit(BlockManual::TimeUnit unit, const RateValues::Target& target,
                                     const Value& value, Complaints& complaints);

/// Puts numbers in place of times and frequencies for settings in seconds or hertz, for which nobody needs to
/// know a rate: in a graph's blocks before they are written, and in its timeline.
class SettingUnits {
public:
    /// `description` is that of the parts; nothing is owned.
    SettingUnits(GraphParts& graphParts, GraphDescription& graphDescription, const BlockCatalogue& catalogue)
        : parts(graphParts), description(graphDescription), manuals(catalogue) {}

    void convert(const GraphParts::Node& node, Complaints& complaints);
    /// What a graph gives, or its timeline at a time; false, and a complaint, where that has the wrong unit.
    bool convert(const GraphParts::Node& node, Core::AbstractProperty& property, std::optional<double> at,
                 Value& value, Complaints& complaints);

private:
    GraphParts& parts;
    GraphDescription& description;
    ManualShelf manuals; ///< What is wrong with them is told by who opens the recordings.
};

} // namespace Quillmere::Host
