// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/inspection/InspectionSettings.h"
#include "host/recording/RecordingReader.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Where the time of a row comes from.
struct ClockChoice {
    enum class Kind { None, Column, SaidRate, FilesRate };

    Kind kind = Kind::None;
    std::optional<std::size_t> column; ///< Of the times, with that kind.
    std::optional<double> rate;        ///< Rows a second, as somebody or the file states them.
};

/// What is said of a recording comes before what the file says. Raises for a column that isn't there. [setup]
QUILLMERE_API ClockChoice chooseClock(const RecordingReader& reader, const InspectionSettings& settings);

/// The unit of each column, as it is said or as the file has it. Raises for units that fit nothing. [setup]
QUILLMERE_API std::vector<std::string>
statedUnits(const RecordingReader& reader, const InspectionSettings& settings, const ClockChoice& clock);

} // namespace Quillmere::Host
