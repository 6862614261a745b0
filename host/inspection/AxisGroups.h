// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingReader.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Columns that belong together, by their names.
struct AxisGroup {
    std::string name;                 ///< What their names share, without axis and unit; may be empty.
    std::vector<std::size_t> columns; ///< By their axes: x, y, z, or w, x, y, z.
};

/// The groups of columns whose names differ by x, y and z alone, or by w, x, y and z, in the order of their
/// first axis. Each column is in one group at most. [any]
QUILLMERE_API std::vector<AxisGroup> findAxisGroups(const std::vector<RecordingReader::Column>& columns);

} // namespace Quillmere::Host
