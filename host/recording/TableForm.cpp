// SPDX-License-Identifier: MIT
#include "host/recording/TableForm.h"

#include "host/ends/ColumnName.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace Quillmere::Host {

namespace {

/// Cuts the part up to the next comma off the front; commas in quotes are text.
std::string_view takeCell(std::string_view& line) {
    bool isQuoted = false;
    std::size_t end = 0;
    for (; end < line.size() && (isQuoted || line[end] != ','); ++end)
        isQuoted = isQuoted != (line[end] == '"');
    const std::string_view cell = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return cell;
}

/// The columns that count, as in `accel[0],accel[1]`, whatever units stand behind them.
class Counting {
public:
    bool takes(std::string_view cell) {
        const bool isQuoted = cell.size() > 1 && cell.front() == '"' && cell.back() == '"';
        if (isQuoted) cell = cell.substr(1, cell.size() - 2);
        const std::size_t unit = cell.rfind(" [");
        const bool hasUnit = unit != std::string_view::npos && unit > 0 && cell[unit - 1] == ']';
        if (hasUnit && cell.back() == ']') cell = cell.substr(0, unit);
        const std::optional<CountedName> counted = countedNameOf(cell);
        if (!counted) return false;
        next = counted->pin == group ? next + 1 : 0;
        group = counted->pin;
        return counted->count == next;
    }

private:
    std::string_view group;
    std::size_t next = 0;
};

/// Whether a cell holds nothing, or a number as `CsvWriter` writes it.
bool isOwnNumber(std::string_view cell) {
    if (cell.empty()) return true;
    double value = 0.0;
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
    if (error != std::errc() || end != cell.data() + cell.size()) return false;
    char text[32];
    return cell == std::string_view(text, static_cast<std::size_t>(
                                              std::to_chars(text, text + sizeof text, value).ptr - text));
}

} // namespace

bool TableForm::fits(std::string_view head) const {
    const std::size_t headerEnd = head.find('\n');
    if (headerEnd == std::string_view::npos || !fitsHeader(head.substr(0, headerEnd))) return false;
    std::string_view rows = head.substr(headerEnd + 1);
    const bool isTimeAlone = head.substr(0, headerEnd) == CsvWriter::quoted(timeName);
    if (isTimeAlone) return rows.empty();
    // The last line may go on behind the head, or be cut by the end of a run.
    for (std::size_t end = rows.find('\n'); end != std::string_view::npos; end = rows.find('\n')) {
        std::string_view row = rows.substr(0, end);
        while (!row.empty())
            if (!isOwnNumber(takeCell(row))) return false;
        rows.remove_prefix(end + 1);
    }
    return true;
}

bool TableForm::fitsHeader(std::string_view line) const {
    std::set<std::string, std::less<>> own;
    for (const TableWriter::Group& group : groups)
        for (std::size_t i = 0; i < group.columns.size(); ++i) {
            own.insert(CsvWriter::quoted(group.columns[i]));
            own.insert(CsvWriter::quoted(group.getColumn(i)));
        }
    std::set<std::string, std::less<>> read;
    for (const std::string& name : recorded)
        read.insert(CsvWriter::quoted(name));
    if (takeCell(line) != CsvWriter::quoted(timeName)) return false;
    if (line.empty()) return true;
    Counting counting;
    bool isProved = false;
    while (!line.empty()) {
        const std::string_view cell = takeCell(line);
        if (!own.contains(cell) && !counting.takes(cell)) return false;
        isProved = isProved || !read.contains(cell);
    }
    return isProved;
}

} // namespace Quillmere::Host
