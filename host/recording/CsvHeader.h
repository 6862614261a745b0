// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// What stands above the first row of a table.
struct CsvHeader {
    std::vector<std::string> names; ///< Of two rows `group.axis`; empty without a header.
    std::vector<std::string> units; ///< Of a row of units.
    std::size_t rows = 0;           ///< Lines that they take.
    bool endsWithSeparator = false; ///< The names have a separator behind them that the rows may lack.
};

struct HeaderSearch {
    char separator = ',';
    std::size_t width = 0;                 ///< Of the rows; 0 when there are none.
    std::vector<std::string_view> lines;   ///< Above the first row, without comments and blank lines.
    std::string_view comment;              ///< Right above the rows, without its sign; or empty.
    bool isLineAboveName = false;          ///< The only line above is the names, however many cells it has.
    std::optional<std::size_t> headerRows; ///< As the graph says.
    std::optional<bool> hasUnitsRow;
};

/// Finds names and units. A row of two above the others is one of groups when names repeat or are left out
/// in it, as a group is named once for all its axes. [any]
QUILLMERE_API CsvHeader findHeader(const HeaderSearch& search);

/// Whether a row below `names` belongs to the header: units, or the axes of groups. [any]
QUILLMERE_API bool getIsHeaderRow(const std::vector<std::string_view>& names,
                                  const std::vector<std::string_view>& below);

} // namespace Quillmere::Host
