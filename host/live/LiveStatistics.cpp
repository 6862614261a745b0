// SPDX-License-Identifier: MIT
#include "host/live/LiveStatistics.h"

#include <algorithm>
#include <cstdio>

namespace Quillmere::Host {

namespace {
using Row = std::vector<std::string>;

/// The rows with cells below each other, the first `leftAligned` of them by their begin and the others by their end.
void appendTable(const std::vector<Row>& rows, std::size_t leftAligned, std::vector<std::string>& lines) {
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string blanks(widths[i] - row[i].size(), ' ');
            line += (i == 0 ? "" : "  ") + (i < leftAligned ? row[i] + blanks : blanks + row[i]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
    }
}

std::string fixed(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", number);
    return text;
}
} // namespace

std::vector<std::string> LiveStatistics::getText() const {
    std::vector<std::string> lines;
    std::vector<Row> rows{{"block", "type", "layout", "steps", "in", "out", "lost", "ms"}};
    for (const Block& block : blocks)
        rows.push_back({block.id, block.type, block.layout, std::to_string(block.steps),
                        std::to_string(block.samplesIn), std::to_string(block.samplesOut),
                        std::to_string(block.lost), fixed(1e3 * block.seconds)});
    appendTable(rows, 3, lines);
    if (links.empty()) return lines;
    lines.emplace_back();
    rows = {{"link", "", "received", "taken", "waiting", "lost"}};
    for (const Link& link : links)
        rows.push_back({link.from.empty() ? "(none)" : link.from, "-> " + link.to,
                        std::to_string(link.received), std::to_string(link.taken),
                        std::to_string(link.waiting), std::to_string(link.lost)});
    appendTable(rows, 2, lines);
    return lines;
}

} // namespace Quillmere::Host
