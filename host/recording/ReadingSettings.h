// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/HostBlock.h"
#include "host/recording/ReadingWishes.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A column of a recording as a graph names it.
struct NamedColumn {
    std::string name;
    Place where;
};

/// What a graph says of when rows were taken.
struct RecordingClock {
    std::vector<NamedColumn> columns; ///< One, or the date and the time; none: the file says which.
    std::optional<double> rate;       ///< Rows a second.
};

/// The settings of a source that say how its recording is to be read, but for `data`, `time`, `rate` and
/// `missing`.
std::vector<HostBlock::SettingDescription> getReadingSettings();

/// Takes one of these, or one of those four; false for another setting. What is wrong with its value is
/// complained of. The columns of times aren't among the wishes yet.
bool takeReadingSetting(const GraphDescription::Setting& setting, ReadingWishes& wishes,
                        RecordingClock& clock, Complaints& complaints);

/// Rows a second, as a number or in hertz; what is none is complained of.
std::optional<double> takeRate(const Value& value, Complaints& complaints);

/// The place of a word among `words`, which a message lists; 0 when it isn't one of them, which is a
/// complaint.
std::size_t takeChoice(const Value& value, const std::vector<std::string>& words, Complaints& complaints);

} // namespace Quillmere::Host
