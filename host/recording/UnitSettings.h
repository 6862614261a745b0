// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/Unit.h"
#include "host/description/Value.h"
#include "host/recording/ReadingSettings.h"
#include "host/text/Complaint.h"

#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A unit as a graph names it.
struct NamedUnit {
    std::string text;
    Place where;
    const Unit* unit = nullptr; ///< Null where the graph names none.
};

/// What a graph says of the unit that columns have: those of one name, or all that fit a pattern.
struct StatedUnit {
    NamedColumn column;
    NamedUnit unit;
};

/// Takes a unit; nothing, with a complaint, where it isn't known.
std::optional<NamedUnit> takeUnit(const Value& value, Complaints& complaints);

/// Takes the setting `units: {ax: mg, "gyr*": deg/s}`. What is wrong with it is complained of.
std::vector<StatedUnit> takeUnits(const Value& value, Complaints& complaints);

} // namespace Quillmere::Host
