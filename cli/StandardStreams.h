// SPDX-License-Identifier: MIT
#pragma once

#include "cli/Commands.h"

namespace Cli {

/// Takes the numbers of standard streams that are closed, so that no result gets one of them and a message's
/// text with it; using such a stream fails as before. A file-size limit becomes a failure to write instead of
/// the program's end.
void guardStandardStreams();

/// Hands over everything that was printed. Where that fails it says so, unless who reads it has gone away,
/// and `kDone` becomes `kFailedMidway`.
/// Requires: nothing is printed any more.
ExitCode finishStandardOutput(ExitCode code);

} // namespace Cli
