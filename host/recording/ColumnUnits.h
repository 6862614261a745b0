// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/Unit.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/UnitSettings.h"
#include "host/text/Complaint.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// The unit that a column has.
struct ColumnUnit {
    std::string text;           ///< Empty where nobody states one.
    const Unit* unit = nullptr; ///< Null for a text that names none which is known.
    std::string overruled;      ///< What the file states, where the graph says otherwise.
};

/// The unit of each column: what the graph says, by name rather than by pattern, else what the file does.
/// Complains of what fits no column, and of two units for one. `path` is for complaints. [setup]
std::vector<ColumnUnit> findUnits(const std::vector<RecordingReader::Column>& columns,
                                  const std::vector<StatedUnit>& stated, const std::string& path,
                                  Complaints& complaints);

/// Complains of units for the column of times, by name, which would change nothing. [setup]
void refuseUnitOfTime(const std::string& name, const std::vector<StatedUnit>& stated, Complaints& complaints);

} // namespace Quillmere::Host
