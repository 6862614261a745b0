// SPDX-License-Identifier: MIT
#include "host/text/Table.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

void Table::add(Row row) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i)
        widths[i] = std::max(widths[i], row[i].size());
    rows.push_back(std::move(row));
}

std::vector<std::string> Table::getLines() const {
    std::vector<std::string> lines;
    for (const Row& row : rows)
        lines.push_back(lineOf(row));
    return lines;
}

std::string Table::getText() const {
    std::string text;
    for (const Row& row : rows)
        text.append(lineOf(row)).append("\n");
    return text;
}

std::string Table::lineOf(const Row& row) const {
    std::string line;
    std::size_t blanks = indent; // before the next cell that has something in it
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::size_t missing = widths[i] - row[i].size();
        const bool isLeft = i < leftAligned;
        if (!row[i].empty()) {
            line.append(blanks + (isLeft ? 0 : missing), ' ').append(row[i]);
            blanks = 0;
        }
        blanks += (isLeft || row[i].empty() ? missing : 0) + 2;
    }
    return line;
}

} // namespace Quillmere::Host
