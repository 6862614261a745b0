// SPDX-License-Identifier: MIT
#include "host/description/TableGuess.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <vector>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kCellsLookedAt = 100; ///< Of a row.

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\"";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

/// The next line that isn't blank and no comment; takes it from `text`.
std::string_view takeLine(std::string_view& text) {
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!trimmed(line).empty() && line.front() != '#') return line;
    }
    return {};
}

std::vector<std::string_view> cellsOf(std::string_view line, char separator) {
    std::vector<std::string_view> cells;
    for (std::size_t begin = 0; begin <= line.size() && cells.size() < kCellsLookedAt;) {
        const std::size_t end = std::min(line.find(separator, begin), line.size());
        cells.push_back(trimmed(line.substr(begin, end - begin)));
        begin = end + 1;
    }
    return cells;
}

/// With a decimal point or a decimal comma.
bool isNumber(std::string_view cell) {
    std::string text(cell);
    std::replace(text.begin(), text.end(), ',', '.');
    double number = 0.0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && stop == text.data() + text.size();
}
} // namespace

std::string_view tableHeader(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    const std::string_view header = takeLine(text);
    const std::string_view row = takeLine(text);
    const bool isGraph =
        header.find(": ") != std::string_view::npos || trimmed(header).find_first_of("{[") == 0;
    if (header.empty() || row.empty() || isGraph) return {};
    for (const char separator : {';', '\t', ','}) {
        if (header.find(separator) == std::string_view::npos) continue;
        const std::vector<std::string_view> cells = cellsOf(row, separator);
        const auto numbers = std::count_if(cells.begin(), cells.end(), isNumber);
        const bool isTable = cells.size() == cellsOf(header, separator).size() &&
                             numbers >= static_cast<std::ptrdiff_t>(cells.size() + 1) / 2;
        return isTable ? header : std::string_view{};
    }
    return {};
}

} // namespace Quillmere::Host
