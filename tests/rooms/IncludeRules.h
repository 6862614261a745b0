// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

/// A place in a file and what is wrong there.
struct Finding {
    std::string place; ///< file:line
    std::string complaint;
};

/// What is wrong with the includes of ours in a file: arrows between rooms that run the wrong way, paths that
/// aren't written from the root, and a source that doesn't include its own header first. `path` is relative
/// to the root; `hasOwnHeader` tells whether a header of the same name lies beside it.
std::vector<Finding> checkIncludes(const std::string& path, const std::string& text, bool hasOwnHeader);
