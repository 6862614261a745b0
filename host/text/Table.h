// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Cells below each other, for people: each column is as wide as its widest cell, two blanks stand between
/// columns, and none at the end of a line. Rows may have fewer cells than others.
class QUILLMERE_API Table {
public:
    using Row = std::vector<std::string>;
    static constexpr std::size_t kAll = static_cast<std::size_t>(-1);

    /// So many blanks before each row; so many columns, the first ones, by the begin of their cells, the
    /// others by the end.
    explicit Table(std::size_t indentWidth = 0, std::size_t leftAlignedColumns = kAll)
        : indent(indentWidth), leftAligned(leftAlignedColumns) {}

    void add(Row row);
    /// A line each row. An empty row is an empty line.
    std::vector<std::string> getLines() const;
    /// The lines, each with its end.
    std::string getText() const;

private:
    std::string lineOf(const Row& row) const;

    std::size_t indent;
    std::size_t leftAligned;
    std::vector<Row> rows;
    std::vector<std::size_t> widths;
};

} // namespace Quillmere::Host
