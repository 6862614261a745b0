// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/Unit.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/RecordingRows.h"
#include "host/recording/RecordingSettings.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What becomes of the units of a recording's columns on the way to its pins.
struct UnitPlan {
    struct Pin {
        /// That all elements have when they are sent; empty where nobody knows it, or they differ.
        std::string unit;
        std::vector<UnitConversion> conversions; ///< Of each column; none where nothing is converted.

        bool getConverts() const { return !conversions.empty(); }
        /// Converts a sample of whole rows. Requires: it converts. [run]
        void convert(double* sample, std::size_t size) const;
    };

    std::vector<Pin> pins;
    std::vector<std::string> notes; ///< For the user: `accel: m/s^2 from g`.
};

/// The plan for the rows of `plan`, by what `settings` say and the columns that are there. Nothing, with
/// complaints, where a pin is to have a unit that its columns can't be converted into. `path` is for
/// complaints. Requires: no patterns in the settings' pins. [setup]
std::optional<UnitPlan> planUnits(const RecordingReader& reader, const std::string& path,
                                  const RecordingSettings& settings, const RowPlan& plan,
                                  Complaints& complaints);

} // namespace Quillmere::Host
