// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/HostBlock.h"
#include "host/recording/ReadingWishes.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The settings of a source that say how its recording is to be read.
std::vector<HostBlock::SettingDescription> getReadingSettings();

/// Takes one of these; false for another setting. What is wrong with its value is complained of.
bool takeReadingSetting(const GraphDescription::Setting& setting, ReadingWishes& wishes,
                        Complaints& complaints);

/// The place of a word among `words`, which a message lists; 0 when it isn't one of them, which is a
/// complaint.
std::size_t takeChoice(const Value& value, const std::vector<std::string>& words, Complaints& complaints);

} // namespace Quillmere::Host
