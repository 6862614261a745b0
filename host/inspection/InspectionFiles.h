// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/inspection/Inspection.h"
#include "host/text/Complaint.h"

#include <optional>
#include <string>
#include <string_view>

namespace Quillmere::Host {

/// The properties of a `RecordingSource` for a recording, as YAML: its file, relative to the folder of
/// `path`, where they will stand; what was given; a pin for each group of axes and for each other column that
/// has numbers; and `onBadRow: nan` where a row would end a run.
QUILLMERE_API std::string inspectionAsProfile(const Inspection& found, const InspectionSettings& settings,
                                              const std::string& path);

/// A graph that runs as it is: such a source, and a sink that writes all its pins to `NAME-result.csv` beside
/// the graph.
QUILLMERE_API std::string inspectionAsGraph(const Inspection& found, const InspectionSettings& settings,
                                            const std::string& path);

/// Why neither can be written; nothing where both can.
QUILLMERE_API std::optional<Complaint> findHindrance(const Inspection& found);

/// Whether a file that begins so is one of these.
QUILLMERE_API bool getIsOfInspection(std::string_view head);

} // namespace Quillmere::Host
