// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/RecordingReader.h"
#include "host/recording/RecordingRows.h"
#include "host/recording/RecordingSettings.h"
#include "host/text/Complaint.h"

#include <optional>
#include <string>

namespace Quillmere::Host {

/// The plan of a recording's rows: of what a graph says of them and of the columns that are there. A pattern
/// in `settings` gives way to the columns that it stands for. Nothing, with complaints, where a column or the
/// times are missing; `path` and `pathPlace` are the file as the graph names it, and where. [setup]
std::optional<RowPlan> planRows(const RecordingReader& reader, const std::string& path,
                                const Place& pathPlace, RecordingSettings& settings, Complaints& complaints);

} // namespace Quillmere::Host
