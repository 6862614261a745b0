// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/TableWriter.h"

#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// How a table that `TableWriter` writes reads: what tells a result from a recording where nothing else does.
struct QUILLMERE_API TableForm {
    std::string timeName;
    std::vector<TableWriter::Group> groups;
    std::vector<std::string> recorded; ///< Columns of recordings that a run reads.

    /// Whether a file that begins with `head` is such a table, or was one before groups came or went: the
    /// time column is first, each other column counts, as `group[0]` does, or has a name of the groups', and
    /// every number is in the shortest form. Names that recordings have as well prove nothing.
    bool fits(std::string_view head) const;

private:
    bool fitsHeader(std::string_view line) const;
};

} // namespace Quillmere::Host
