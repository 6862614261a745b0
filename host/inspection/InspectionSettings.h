// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/recording/ReadingSettings.h"
#include "host/recording/ReadingWishes.h"
#include "host/recording/UnitSettings.h"
#include "host/text/Complaint.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What somebody says of a recording that is to be looked at: settings of a `RecordingSource`, but for those
/// that say what becomes of its rows.
struct QUILLMERE_API InspectionSettings {
    std::vector<GraphDescription::Setting> written; ///< As they were given, for a graph.
    ReadingWishes wishes;
    RecordingClock clock;
    std::vector<StatedUnit> units; ///< Of columns.

    /// Takes one, in place of one of the same name. What is wrong with it is complained of. [setup]
    void take(GraphDescription::Setting setting, Complaints& complaints);
    /// Complains of what doesn't go together, and makes the wishes whole. [setup]
    void finish(Complaints& complaints);
};

} // namespace Quillmere::Host
