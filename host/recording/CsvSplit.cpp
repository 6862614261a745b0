// SPDX-License-Identifier: MIT
#include "host/recording/CsvSplit.h"

#include "host/recording/CsvCells.h"

#include <algorithm>
#include <map>

namespace Quillmere::Host {

namespace {

CsvSplit splitOf(const CsvLines& lines, char separator, char decimal, const ReadingWishes& wishes) {
    std::map<std::size_t, CsvSplit> ofWidth;
    for (const std::string_view line : lines) {
        const auto cells =
            separator == kNoSeparator ? std::vector<std::string_view>{line} : cellsOf(line, separator);
        CsvSplit& split = ofWidth[cells.size()];
        split.width = cells.size();
        std::size_t fits = 0;
        std::size_t others = 0;
        for (const std::string_view cell : cells) {
            const CellKind kind = cellKindOf(cell, decimal, wishes);
            if (kind == CellKind::Text) ++others;
            if (kind == CellKind::Number || kind == CellKind::Time) ++fits;
        }
        if (fits == 0) continue; // a line of names tells nothing about numbers
        split.fits += fits;
        split.others += others;
    }
    CsvSplit best;
    for (const auto& [width, split] : ofWidth)
        if (best.width == 0 || split.fits > best.fits) best = split;
    best.separator = separator;
    best.decimal = decimal;
    return best;
}

} // namespace

CellKind cellKindOf(std::string_view cell, char decimal, const ReadingWishes& wishes) {
    constexpr std::array<std::string_view, 6> kMissing{"NA", "N/A", "n/a", "null", "NULL", "-"};
    const std::string_view text = trimmed(unquoted(cell));
    if (text.empty() || std::find(kMissing.begin(), kMissing.end(), text) != kMissing.end() ||
        std::find(wishes.missing.begin(), wishes.missing.end(), text) != wishes.missing.end())
        return CellKind::Empty;
    double value = 0.0;
    if (cellToNumber(text, decimal, value) != NumberFault::NoNumber) return CellKind::Number;
    return getIsTimeText(text) ? CellKind::Time : CellKind::Text;
}

CsvSplit bestSplit(const CsvLines& lines, const ReadingWishes& wishes) {
    CsvSplit best;
    const auto look = [&](char separator, char decimal) {
        if (wishes.separator && separator != *wishes.separator) return;
        if (wishes.decimal && decimal != *wishes.decimal) return;
        const CsvSplit split = splitOf(lines, separator, decimal, wishes);
        if (split.width < 2 && separator != kNoSeparator && !wishes.separator) return;
        if (best.width == 0 || split.getScore() > best.getScore()) best = split;
    };
    for (const char separator : kSeparators)
        look(separator, '.');
    for (const char separator : kSeparators) // between commas, numbers with a comma are quoted
        look(separator, ',');
    if (best.width == 0 && !wishes.separator) {
        look(kNoSeparator, '.');
        look(kNoSeparator, ',');
    }
    if (best.width == 0) best.separator = wishes.separator.value_or(',');
    return best;
}

std::vector<CellKind> signatureOf(const CsvLines& lines, const CsvSplit& split, const ReadingWishes& wishes) {
    std::vector<std::array<std::size_t, 4>> counts(split.width);
    for (const std::string_view line : lines) {
        const auto cells = cellsOf(line, split.separator, split.width + 1);
        if (cells.size() != split.width) continue;
        for (std::size_t i = 0; i < split.width; ++i)
            ++counts[i][static_cast<std::size_t>(cellKindOf(cells[i], split.decimal, wishes))];
    }
    std::vector<CellKind> kinds;
    for (auto& count : counts) {
        count[0] = 0; // an empty cell says nothing, where others do
        const auto most = std::max_element(count.begin(), count.end());
        kinds.push_back(*most == 0 ? CellKind::Empty : static_cast<CellKind>(most - count.begin()));
    }
    return kinds;
}

bool isRow(std::string_view line, const CsvSplit& split, const std::vector<CellKind>& signature,
           const ReadingWishes& wishes) {
    const auto cells = cellsOf(line, split.separator, split.width + 1);
    if (cells.size() != split.width) return false;
    bool hasOne = false;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (signature[i] != CellKind::Number && signature[i] != CellKind::Time) continue;
        const CellKind kind = cellKindOf(cells[i], split.decimal, wishes);
        if (kind == CellKind::Text) return false;
        hasOne = hasOne || kind == signature[i];
    }
    return hasOne;
}

} // namespace Quillmere::Host
