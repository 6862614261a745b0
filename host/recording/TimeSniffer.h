// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/CsvDialect.h"
#include "host/recording/ReadingWishes.h"
#include "host/recording/RecordingProfile.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/TimePlan.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// What times can be found out from: a table's columns and its first rows.
struct TimeEvidence {
    std::string path; ///< For messages.
    const std::vector<RecordingReader::Column>& columns;
    std::vector<std::vector<std::string_view>> rows; ///< Cells as they stand there.
    const CsvDialect& dialect;
    const RecordingProfile* profile = nullptr; ///< Or null.
};

/// Finds the times of a table's rows. A column that the graph names holds seconds as they stand, as long as
/// it holds numbers and nothing else is wished for. Else a column is found by the profile or by its name, its
/// unit by its header or by the size of its numbers. Raises an `UnclearRecording` where two units, or two
/// orders of a date, are as likely as each other. [any]
QUILLMERE_API TimePlan findTimes(const TimeEvidence& evidence, const ReadingWishes& wishes);

/// Rows a second that lines in front of a header state, as in `Update Rate: 100.0Hz` and `at 30 Hz`; nothing
/// where they state none, or several. [any]
QUILLMERE_API std::optional<double> statedRate(const std::vector<std::string>& preamble);

} // namespace Quillmere::Host
