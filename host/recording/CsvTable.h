// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/CsvDialect.h"
#include "host/recording/LineReader.h"
#include "host/recording/ReadingWishes.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/TimePlan.h"

#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What the begin of a table says, up to its first row.
struct CsvTable {
    CsvDialect dialect;
    std::vector<RecordingReader::Column> columns;
    TimePlan times;
    std::vector<std::string> form; ///< What it was taken for and why, for people: each a part of a sentence.
    std::optional<double> rate;    ///< Rows a second, as lines in front of the header state it.
};

/// Reads the begin of a table: what `lines` give next is its first row. Of a pipe it waits for the header;
/// for ten rows too where the header isn't of the plain form, or nobody says which column has the times.
/// Raises when there is no table of ours, an `UnclearRecording` when it can be read in more than one way.
/// [run]
QUILLMERE_API CsvTable openTable(LineReader& lines, const ReadingWishes& wishes);

} // namespace Quillmere::Host
