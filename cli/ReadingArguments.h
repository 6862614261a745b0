// SPDX-License-Identifier: MIT
#pragma once

#include "host/inspection/InspectionSettings.h"
#include "host/recording/RecordingReader.h"

#include <memory>
#include <string>
#include <vector>

/// What the commands that look into recordings share.
namespace Cli {

/// The settings of `--set PROPERTY=VALUE`. Raises `UsageError`.
Quillmere::Host::InspectionSettings readingSettingsOf(const std::vector<std::string>& texts);

/// Null, with a message, where the file has to be explained: it says a graph's property, and there is none.
/// Raises `RecordingException`.
std::unique_ptr<Quillmere::Host::RecordingReader> openToLook(const std::string& file,
                                                             const Quillmere::Host::InspectionSettings& said);

/// The same of what may be a result, whose times count seconds whatever these look like: the first column of
/// one that a run has left, and, with a note, a column `t` where the times would be unclear otherwise. `said`
/// says so then.
std::unique_ptr<Quillmere::Host::RecordingReader> openToDraw(const std::string& file,
                                                             Quillmere::Host::InspectionSettings& said);

/// Whether standard output is a terminal of such people: what goes to a file or another program is the same
/// everywhere.
bool getShowsUtf8();

/// Of the terminal that standard output is, unless COLUMNS says otherwise; 80 where it is none.
std::size_t getTextWidth();

} // namespace Cli
