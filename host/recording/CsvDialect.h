// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How a table is written, as far as its begin shows it.
struct CsvDialect {
    char separator = ',';
    char decimal = '.';
    /// A separator stands behind the last cell of the rows, or of some of them.
    bool endsWithSeparator = false;

    /// Whether the table is of the plain form: comment lines that begin with `#`, a row of names, rows. Then
    /// names are where that form has them, and nothing below is filled in.
    bool isPlain = true;
    std::uint64_t linesBefore = 0;  ///< In front of the first row.
    std::vector<std::string> names; ///< Of two header rows `group.axis`; `1`, `2` and so on without any.
    std::vector<std::string> units; ///< Of a row of them, one for each name; empty without such a row.
    bool hasHeader = true;
    std::vector<std::string> preamble; ///< Lines in front of the header, comments among them.
    std::vector<std::string> notes;    ///< Guesses that change numbers.
};

} // namespace Quillmere::Host
