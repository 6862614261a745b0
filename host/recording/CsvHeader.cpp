// SPDX-License-Identifier: MIT
#include "host/recording/CsvHeader.h"

#include "host/recording/CsvCells.h"
#include "host/recording/UnitText.h"

#include <algorithm>
#include <set>

namespace Quillmere::Host {

namespace {

using Cells = std::vector<std::string_view>;

bool isEmptyCell(std::string_view cell) {
    return trimmed(unquoted(cell)).empty();
}

/// Every cell that isn't empty is a unit, and one at least that is nothing else.
bool isUnitsRow(const Cells& cells) {
    bool hasOne = false;
    for (const std::string_view cell : cells) {
        const std::string text = plainText(cell);
        if (isEmptyCell(cell)) continue;
        if (!getIsUnit(text)) return false;
        hasOne = true;
    }
    return hasOne;
}

/// Names that repeat, or are left out behind the first of their group.
bool isGroupRow(const Cells& cells) {
    std::set<std::string> seen;
    bool repeats = false;
    for (const std::string_view cell : cells)
        repeats = (!isEmptyCell(cell) && !seen.insert(plainText(cell)).second) || repeats;
    // One or two names at the front of an else empty line are a title.
    const bool hasHoles = std::any_of(cells.begin() + 1, cells.end(), isEmptyCell);
    return repeats || (hasHoles && seen.size() > 1);
}

/// The name of the rows' index, in a line of its own below the names.
bool isIndexName(const Cells& cells) {
    return cells.size() > 2 && !isEmptyCell(cells.front()) &&
           std::all_of(cells.begin() + 1, cells.end(), isEmptyCell);
}

std::vector<std::string> textsOf(const Cells& cells, std::size_t width) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < std::min(width, cells.size()); ++i)
        texts.push_back(plainText(cells[i]));
    texts.resize(width);
    return texts;
}

/// `group.axis`; a group's name counts up to the next one.
std::vector<std::string> joined(const Cells& groupCells, const Cells& axisCells, std::size_t width) {
    const std::vector<std::string> groups = textsOf(groupCells, width);
    std::vector<std::string> names = textsOf(axisCells, width);
    std::string group;
    for (std::size_t i = 0; i < width; ++i) {
        if (!groups[i].empty()) group = groups[i];
        if (names[i].empty())
            names[i] = groups[i];
        else if (!group.empty() && names[i] != group)
            names[i].insert(0, group + ".");
    }
    return names;
}

/// Lines above the rows, from below.
class Above {
public:
    explicit Above(const HeaderSearch& wholeSearch) : search(wholeSearch) {}

    std::size_t getTaken() const { return taken; }
    /// The cells of the next line up; nothing when there is none, or when it has other cells than the rows.
    std::optional<Cells> look(bool anyWidth = false) const {
        if (taken == search.lines.size()) return std::nullopt;
        const std::string_view line = search.lines[search.lines.size() - 1 - taken];
        Cells cells = cellsOf(line, search.separator, std::max<std::size_t>(search.width, 1) * 2 + 1);
        const bool hasOneMore = cells.size() == search.width + 1 && isEmptyCell(cells.back());
        if (search.width > 0 && cells.size() != search.width && !hasOneMore && !anyWidth) return std::nullopt;
        return cells;
    }
    void take() { ++taken; }

private:
    const HeaderSearch& search;
    std::size_t taken = 0;
};

/// The steps of finding, from the rows upwards.
class Finding {
public:
    explicit Finding(const HeaderSearch& wholeSearch)
        : search(wholeSearch), above(wholeSearch), isTold(wholeSearch.headerRows.has_value()) {}

    CsvHeader get() {
        if (isTold && *search.headerRows == 0 && !search.hasUnitsRow.value_or(false)) return {};
        takeIndexName();
        takeUnits();
        if (!cells && (search.isLineAboveName || isTold)) cells = above.look(true);
        if (!cells || (isTold && *search.headerRows == 0)) {
            header.rows = above.getTaken();
            if (!isTold && header.rows == 0) takeComment();
        } else {
            takeNames();
            header.rows = above.getTaken();
        }
        return header;
    }

private:
    void takeIndexName() {
        cells = above.look();
        if (!cells || !isIndexName(*cells) || search.lines.size() <= 2) return;
        indexName = plainText(cells->front());
        above.take();
        cells = above.look();
    }

    void takeUnits() {
        if (!cells || !search.hasUnitsRow.value_or(isUnitsRow(*cells) && search.lines.size() > 1)) return;
        header.units = textsOf(*cells, search.width == 0 ? cells->size() : search.width);
        above.take();
        cells = above.look();
    }

    void takeComment() {
        const Cells commented = cellsOf(search.comment, search.separator, search.width + 1);
        if (search.width > 1 && commented.size() == search.width)
            header.names = textsOf(commented, search.width);
    }

    /// And those of their groups.
    void takeNames() {
        above.take();
        header.endsWithSeparator =
            cells->size() > 1 && isEmptyCell(cells->back()) && cells->size() == search.width + 1;
        const std::size_t width = cells->size() - (header.endsWithSeparator ? 1 : 0);
        header.names = textsOf(*cells, width);
        std::optional<Cells> groups = above.look();
        if (groups && groups->size() > width) groups->resize(width);
        if (groups && (isTold ? *search.headerRows == 2 : isGroupRow(*groups))) {
            header.names = joined(*groups, *cells, width);
            above.take();
        }
        if (!indexName.empty()) header.names.front() = indexName;
        if (!header.units.empty()) header.units.resize(header.names.size());
    }

    const HeaderSearch& search;
    Above above;
    const bool isTold; ///< How many rows there are.
    CsvHeader header;
    std::optional<Cells> cells; ///< Of the line that is looked at.
    std::string indexName;
};

} // namespace

bool getIsHeaderRow(const Cells& names, const Cells& below) {
    return isUnitsRow(below) || (isGroupRow(names) && !isIndexName(below));
}

CsvHeader findHeader(const HeaderSearch& search) {
    return Finding(search).get();
}

} // namespace Quillmere::Host
