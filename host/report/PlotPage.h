// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Picture.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a page tells of a recording beside its curves.
struct PlottedRecording {
    std::string file; ///< `-` for standard input.
    /// What was found out, mended and left out when it was read, a sentence each.
    std::vector<std::string> notes;
};

/// The page of reports, of curves that no run has made: without a graph, outcome and settings. `recordings`
/// are those of the picture's first tables; `program` is the version of who makes it. Panels with an axis of
/// their own, which pages have none of, are left out. Requires: `ReportPage` is there.
QUILLMERE_API std::string plotPage(const Picture& picture, const std::vector<PlottedRecording>& recordings,
                                   const std::string& program);

} // namespace Quillmere::Host
