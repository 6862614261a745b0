// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// The files that patterns name, sorted, each once.
struct FoundFiles {
    std::vector<std::string> files;
    std::string root; ///< The deepest folder that all patterns have in common; empty for where we are.

    /// How a file's name goes on behind the root. Requires: one of `files`.
    QUILLMERE_API std::string nameBelowRoot(const std::string& file) const;
};

/// Finds files: `*` and `?` stand for letters of a name, `[...]` for one of several, `**` for any folders,
/// also none. What begins with a point is found where the pattern says so, and `**` follows no links to
/// folders. Neither files of `leftOut` nor what lies below its folders counts, nor what an earlier batch has
/// made, unless a pattern finds nothing else. Complains of a pattern that finds nothing, and warns of folders
/// that can't be read and of results that are left out. `option` is what complaints name. [any]
QUILLMERE_API FoundFiles findFiles(const std::vector<std::string>& patterns,
                                   const std::vector<std::string>& leftOut, const std::string& option,
                                   Complaints& complaints);

} // namespace Quillmere::Host
