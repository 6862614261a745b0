// SPDX-License-Identifier: MIT
#include "host/recording/CsvCells.h"

#include <array>
#include <charconv>

namespace Quillmere::Host {

std::string_view trimmed(std::string_view text) {
    const auto isEither = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isEither(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isEither(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string_view unquoted(std::string_view cell) {
    cell = trimmed(cell);
    const bool isQuoted = cell.size() >= 2 && cell.front() == '"' && cell.back() == '"';
    return isQuoted ? cell.substr(1, cell.size() - 2) : cell;
}

std::string plainText(std::string_view cell) {
    const std::string_view inner = unquoted(cell);
    if (inner.size() == trimmed(cell).size()) return std::string(inner);
    std::string text;
    for (std::size_t i = 0; i < inner.size(); ++i) {
        text += inner[i];
        if (inner[i] == '"' && i + 1 < inner.size() && inner[i + 1] == '"') ++i;
    }
    return text;
}

std::vector<std::string_view> cellsOf(std::string_view line, char separator, std::size_t most) {
    std::vector<std::string_view> cells;
    const char* begin = line.data();
    const char* const end = begin + line.size();
    while (cells.size() < most) {
        const char* const stop = endOfCell(begin, end, separator);
        cells.emplace_back(begin, static_cast<std::size_t>(stop - begin));
        if (stop == end) break;
        begin = stop + 1;
    }
    return cells;
}

NumberFault cellToNumber(std::string_view text, char decimal, double& value) {
    std::array<char, 64> pointed{}; // of any number that a program writes
    if (decimal != '.') {
        if (text.size() > pointed.size() || text.find('.') != std::string_view::npos)
            return NumberFault::NoNumber;
        std::replace_copy(text.begin(), text.end(), pointed.begin(), decimal, '.');
        text = {pointed.data(), text.size()};
    }
    const bool hasPlus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    const char* const last = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + (hasPlus ? 1 : 0), last, value);
    if (stop != last) return NumberFault::NoNumber;
    if (error == std::errc()) return NumberFault::None;
    return error == std::errc::result_out_of_range ? NumberFault::TooLarge : NumberFault::NoNumber;
}

bool getHasThousands(std::string_view text, char decimal) {
    constexpr std::string_view kDigits = "0123456789";
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    const std::size_t point = text.find(decimal);
    const bool hasPoint = point != std::string_view::npos;
    const std::string_view fraction = text.substr(hasPoint ? point + 1 : text.size());
    if (fraction.find_first_not_of(kDigits) != std::string_view::npos) return false;
    std::size_t groups = 0;
    for (std::string_view whole = text.substr(0, point);; ++groups) {
        const std::size_t digits = std::min(whole.find_first_not_of(kDigits), whole.size());
        if (groups == 0 ? digits < 1 || digits > 3 || whole.front() == '0' : digits != 3) return false;
        whole.remove_prefix(digits);
        if (whole.empty()) break;
        if (whole.front() != (decimal == '.' ? ',' : '.')) return false;
        whole.remove_prefix(1);
    }
    return groups > 1 || (groups == 1 && hasPoint);
}

} // namespace Quillmere::Host
