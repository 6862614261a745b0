// SPDX-License-Identifier: MIT
#pragma once

#include "host/recording/ResultFile.h"

#include <string>

namespace Cli {

/// Raises `UsageError` when what a command writes beside its output couldn't be written there. `option` names
/// the file. Before the work, which may take long.
void checkSideFile(const std::string& option, const std::string& path,
                   const Quillmere::Host::ResultOptions& options);

/// Raises `UsageError` where a page for a browser hasn't the name of one: a browser goes by it, and so does
/// whoever gets the page.
void checkPageName(const std::string& option, const std::string& path);

/// What the command reads is never replaced, whatever the user allows: raises `UsageError` where the two are
/// one file. `what` is what is read, as in `the graph`.
void keepFromSideFile(const std::string& option, const std::string& path, const std::string& file,
                      const std::string& what);

/// False, with a message, where it can't be written; half a file is of no use to anybody.
bool writeSideFile(const std::string& path, const Quillmere::Host::ResultOptions& options,
                   const std::string& text);

} // namespace Cli
