// SPDX-License-Identifier: MIT
#include "host/recording/CsvSniffer.h"

#include "host/ends/RecordingException.h"
#include "host/recording/CsvCells.h"
#include "host/recording/CsvHeader.h"
#include "host/recording/CsvSplit.h"
#include "host/recording/DecimalCommas.h"
#include "host/recording/TimeNames.h"
#include "host/recording/UnitText.h"
#include "host/text/Complaint.h"
#include "host/text/Counted.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <set>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kLinesScored = 200;
constexpr std::array<std::string_view, 3> kComments{"#", "//", "%"};

bool isBlankLine(std::string_view line) {
    return trimmed(line).empty();
}

CsvLines linesOf(std::string_view head, bool isWhole) {
    CsvLines lines;
    while (!head.empty()) {
        const std::size_t end = head.find('\n');
        if (end == std::string_view::npos && !isWhole) break;
        std::string_view line = head.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        lines.push_back(line);
        head.remove_prefix(end == std::string_view::npos ? head.size() : end + 1);
    }
    return lines;
}

bool getHasLetter(std::string_view text) {
    return std::any_of(text.begin(), text.end(),
                       [](unsigned char c) { return std::isalpha(c) != 0 || c > 127; });
}

/// `1,000` and `-12,345`, but neither `0,500` nor `1,5`.
bool getMayHaveThousands(std::string_view text) {
    if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
    const std::size_t comma = text.find(',');
    const auto areDigits = [](std::string_view part) {
        return part.find_first_not_of("0123456789") == std::string_view::npos;
    };
    return comma != std::string_view::npos && comma >= 1 && comma <= 3 && text.front() != '0' &&
           text.size() == comma + 4 && areDigits(text.substr(0, comma)) && areDigits(text.substr(comma + 1));
}

/// A line ends in a separator without a cell behind it.
bool endsEmpty(const std::vector<std::string_view>& cells) {
    return cells.size() > 1 && trimmed(cells.back()).empty();
}

/// The steps of sniffing, over the lines of a file's begin.
class Sniffing {
public:
    Sniffing(const std::string& filePath, const ReadingWishes& allWishes, CsvLines allLines)
        : path(filePath), wishes(allWishes), lines(std::move(allLines)) {}

    CsvDialect get() {
        if (!wishes.getHasForm() && getIsPlain()) return {};
        takeFirstLines();
        sortLines();
        CsvLines last = content;
        if (last.size() > kLinesScored)
            last.erase(last.begin(), last.end() - static_cast<std::ptrdiff_t>(kLinesScored));
        split = bestSplit(last, fixedWishes);
        refuseThousandsIn(last);
        if (split.width == 0 || split.fits == 0) return withoutRows();
        if (split.separator == kNoSeparator) split.separator = ',';
        signature = signatureOf(last, split, wishes);
        const auto row = std::find_if(content.begin(), content.end(), [&](std::string_view line) {
            return isRow(line, split, signature, wishes);
        });
        if (row == content.end()) return withoutRows();
        return around(firstRowAbove(static_cast<std::size_t>(row - content.begin())), *row);
    }

private:
    /// Whether the plain form fits: a row of names, and rows of as many cells, most of them numbers.
    bool getIsPlain() const {
        CsvLines rows;
        std::string_view header;
        for (const std::string_view line : lines) {
            if (isBlankLine(line) || (header.empty() && line.starts_with('#'))) continue;
            if (header.empty())
                header = line;
            else
                rows.push_back(line);
        }
        if (rows.empty()) return !getSeparatorLine();
        if (getSeparatorLine()) return false;
        if (rows.size() > kLinesScored)
            rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(kLinesScored / 2),
                       rows.end() - static_cast<std::ptrdiff_t>(kLinesScored / 2));
        const auto names = cellsOf(header, ',');
        const CsvSplit best = bestSplit(rows, wishes);
        if (best.width == 0 || best.fits == 0) return true; // no numbers: nothing to be found out
        if (best.separator == kNoSeparator)
            return names.size() == 1 && best.decimal == '.' && !isNumberRow(names);
        if (best.separator != ',' || best.decimal != '.' || best.width != names.size()) return false;
        const std::vector<CellKind> kinds = signatureOf(rows, best, wishes);
        if (isRow(header, best, kinds, wishes)) return getHasAllNames(names);
        return isRow(rows.front(), best, kinds, wishes) || !getIsHeaderRow(names, cellsOf(rows.front(), ','));
    }

    /// Whether a line has as many cells as the rows, and a number among them where they have one.
    bool getHasNumber(std::string_view line) const {
        const auto cells = cellsOf(line, split.separator, split.width + 1);
        if (cells.size() != split.width) return false;
        for (std::size_t i = 0; i < cells.size(); ++i)
            if (signature[i] == CellKind::Number &&
                cellKindOf(cells[i], split.decimal, wishes) == CellKind::Number)
                return true;
        return false;
    }

    /// Where the rows begin of which content line `row` is the first sound one: a line of numbers above is a
    /// bad row, and no header, and so is one of texts between the names and the others.
    std::size_t firstRowAbove(std::size_t row) const {
        if (wishes.headerRows) return row;
        while (row > 0 && (getHasNumber(content[row - 1]) || getIsOfNumbers(content[row - 1])))
            --row;
        return row > 1 && getIsBadTexts(content[row - 1], content[row - 2]) ? row - 1 : row;
    }

    /// Whether a line is nothing but numbers and times, however many cells it has and whatever is quoted.
    bool getIsOfNumbers(std::string_view line) const {
        std::string plain(line);
        std::erase(plain, '"');
        bool hasOne = false;
        for (const std::string_view cell : cellsOf(plain, split.separator)) {
            const CellKind kind = cellKindOf(cell, split.decimal, wishes);
            if (kind == CellKind::Text) return false;
            hasOne = hasOne || kind == CellKind::Number;
        }
        return hasOne;
    }

    /// Whether a line of texts can't be the names, and the one above it can.
    bool getIsBadTexts(std::string_view line, std::string_view above) const {
        if (wishes.hasUnitsRow) return false;
        const auto texts = cellsOf(line, split.separator, split.width + 1);
        const auto names = cellsOf(above, split.separator, split.width + 1);
        if (texts.size() != split.width || names.size() != split.width || split.width < 2) return false;
        if (getIsHeaderRow(names, texts)) return false;
        const auto isText = [&](std::string_view cell) {
            return cellKindOf(cell, split.decimal, wishes) == CellKind::Text;
        };
        if (!std::all_of(names.begin(), names.end(), isText)) return false;
        if (!std::all_of(texts.begin(), texts.end(), isText)) return false;
        const auto tells = [](std::string_view cell) {
            const std::string name = plainText(cell);
            return getIsTimeName(name) || !unitOfName(name).empty();
        };
        const bool isAboveNames =
            std::any_of(names.begin(), names.end(), tells) && std::none_of(texts.begin(), texts.end(), tells);
        return isAboveNames || getRepeats(texts);
    }

    static bool getRepeats(const std::vector<std::string_view>& cells) {
        std::set<std::string> seen;
        return !std::all_of(cells.begin(), cells.end(),
                            [&](std::string_view cell) { return seen.insert(plainText(cell)).second; });
    }

    bool isNumberRow(const std::vector<std::string_view>& cells) const {
        return std::all_of(cells.begin(), cells.end(),
                           [&](std::string_view cell) {
                               return cellKindOf(cell, '.', wishes) == CellKind::Number;
                           }) &&
               !getHasAllNames(cells);
    }

    /// Whether columns are asked for by what stands in the first row, numbers or not: then it is the header.
    bool getHasAllNames(const std::vector<std::string_view>& cells) const {
        return !wishes.names.empty() &&
               std::all_of(wishes.names.begin(), wishes.names.end(), [&](const std::string& name) {
                   return std::any_of(cells.begin(), cells.end(),
                                      [&](std::string_view cell) { return plainText(cell) == name; });
               });
    }

    /// `sep=;`, as some programs write for spreadsheets.
    std::optional<char> getSeparatorLine() const {
        if (lines.empty()) return std::nullopt;
        std::string_view line = trimmed(lines.front());
        if (line.starts_with('"')) line.remove_prefix(1);
        if (line.size() < 5 || (line.substr(0, 4) != "sep=" && line.substr(0, 4) != "SEP="))
            return std::nullopt;
        const char separator = line[4];
        const bool isKnown =
            std::find(kSeparators.begin(), kSeparators.end(), separator) != kSeparators.end();
        const bool isAlone = line.find_first_not_of("\",;\t ", 5) == std::string_view::npos;
        return isKnown && isAlone ? std::optional(separator) : std::nullopt;
    }

    void takeFirstLines() {
        fixedWishes = wishes;
        if (wishes.skipLines) first = std::min(*wishes.skipLines, lines.size());
        const auto separator = first == 0 ? getSeparatorLine() : std::nullopt;
        if (!separator) return;
        first = 1;
        if (!fixedWishes.separator) fixedWishes.separator = separator;
    }

    bool isComment(std::string_view line) const {
        if (wishes.comment) return !wishes.comment->empty() && line.starts_with(*wishes.comment);
        return std::any_of(kComments.begin(), kComments.end(),
                           [&](std::string_view sign) { return trimmed(line).starts_with(sign); });
    }

    /// Blank lines and comments apart from the others.
    void sortLines() {
        for (std::size_t i = first; i < lines.size(); ++i) {
            if (isBlankLine(lines[i]) || isComment(lines[i])) continue;
            content.push_back(lines[i]);
            places.push_back(i);
        }
    }

    /// A table of which no row has come, or no table.
    CsvDialect withoutRows() const {
        CsvDialect dialect;
        dialect.separator = fixedWishes.separator.value_or(',');
        dialect.decimal = wishes.decimal.value_or('.');
        if (!wishes.getHasForm()) return dialect;
        const std::size_t rows = wishes.headerRows.value_or(1) + (wishes.hasUnitsRow.value_or(false) ? 1 : 0);
        if (content.size() < rows || rows == 0)
            throw RecordingException({{path}, "no row of numbers in its begin", "a table of numbers"});
        return headed(std::move(dialect), rows);
    }

    /// With what stands around content line `row`, where rows begin, of which `sound` is one.
    CsvDialect around(std::size_t row, std::string_view sound) {
        CsvDialect dialect;
        dialect.separator = split.separator;
        dialect.decimal = split.decimal;
        if (split.decimal == ',' && !wishes.decimal) {
            refuseThousands();
            dialect.notes.emplace_back("numbers taken with a decimal comma");
        }
        dialect.endsWithSeparator =
            endsEmpty(cellsOf(sound, split.separator)) && signature.back() == CellKind::Empty;
        width = split.width - (dialect.endsWithSeparator ? 1 : 0);
        return headed(std::move(dialect), row);
    }

    /// With what stands above content line `row`, the first of the rows.
    CsvDialect headed(CsvDialect dialect, std::size_t row) const {
        dialect.isPlain = false;
        dialect.linesBefore = row < places.size() ? places[row] : lines.size();
        HeaderSearch search;
        search.separator = dialect.separator;
        search.width = width;
        search.headerRows = wishes.headerRows;
        search.hasUnitsRow = wishes.hasUnitsRow;
        search.isLineAboveName = row == 1 && !wishes.skipLines;
        search.lines.assign(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(row));
        search.comment = commentAbove(row);
        const CsvHeader header = findHeader(search);
        refuseAmbiguous(header, dialect, row);
        dialect.hasHeader = !header.names.empty();
        dialect.names = header.names;
        dialect.units = header.units;
        if (header.endsWithSeparator) dialect.endsWithSeparator = true;
        for (std::size_t i = header.names.size(); i < width && (i > 0 || !dialect.hasHeader); ++i)
            if (!dialect.hasHeader) dialect.names.push_back(std::to_string(i + 1));
        const std::size_t begin = header.rows == 0 ? dialect.linesBefore : places[row - header.rows];
        for (std::size_t i = 0; i < begin; ++i)
            dialect.preamble.emplace_back(lines[i]);
        return dialect;
    }

    /// The last comment in front of the rows, without its sign: it may hold the names.
    std::string_view commentAbove(std::size_t row) const {
        for (std::size_t i = row < places.size() ? places[row] : lines.size(); i-- > first;) {
            if (isBlankLine(lines[i])) continue;
            if (!isComment(lines[i])) return {};
            const std::string_view line = trimmed(lines[i]);
            return line.substr(std::min(line.find_first_not_of("#/% \t"), line.size()));
        }
        return {};
    }

    /// `1.234,5` between semicolons, which no other way to read a line should hide: so it is asked about
    /// where half of the lines are numbers only if some signs stand between thousands.
    void refuseThousandsIn(const CsvLines& rows) const {
        for (const char separator : {';', '\t', '|'})
            for (const char sign : {',', '.'}) {
                if (separator == split.separator) continue;
                const auto found = std::count_if(rows.begin(), rows.end(), [&](std::string_view line) {
                    return getIsRowWithThousands(line, separator, sign);
                });
                if (found == 0 || 2 * static_cast<std::size_t>(found) < rows.size()) continue;
                throw UnclearRecording({{path},
                                        sign == ','
                                            ? "numbers such as 1.234,5, whose points stand between thousands"
                                            : "numbers such as 1,234.5, whose commas stand between thousands",
                                        "numbers without a sign between thousands: 1234,5 or 1234.5"});
            }
    }

    bool getIsRowWithThousands(std::string_view line, char separator, char sign) const {
        const auto cells = cellsOf(line, separator);
        bool hasSome = false;
        for (const std::string_view cell : cells) {
            const bool isOne = getHasThousands(trimmed(unquoted(cell)), sign);
            hasSome = hasSome || isOne;
            if (!isOne && cellKindOf(cell, sign, wishes) == CellKind::Text) return false;
        }
        return hasSome && cells.size() > 1;
    }

    /// `"1,000"` between commas, with three digits behind every comma: a decimal comma or one of thousands?
    void refuseThousands() const {
        if (split.separator != ',') return;
        for (std::size_t row = 0; row < content.size(); ++row)
            for (const std::string_view cell : cellsOf(content[row], ',')) {
                const std::string text = plainText(cell);
                if (text.find(',') != std::string::npos &&
                    cellKindOf(cell, ',', wishes) == CellKind::Number && !getMayHaveThousands(text))
                    return;
            }
        throw UnclearRecording({{path},
                                "numbers such as \"1,000\" in quotes, whose commas may be decimal commas or "
                                "stand between thousands",
                                "'decimal: comma', or numbers without a comma between thousands"});
    }

    /// `1,5` under one name, or more cells than names, or `0,001` without any: decimal commas or separators?
    void refuseAmbiguous(const CsvHeader& header, const CsvDialect& dialect, std::size_t row) const {
        const bool hasRows = !signature.empty();
        if (!hasRows || dialect.separator != ',' || wishes.separator) return;
        std::size_t names = header.names.size();
        const bool isUnnamed = names == 0;
        if (names == width || (isUnnamed && wishes.decimal == '.')) return;
        const DecimalCommas commas(rowsFrom(row), width);
        if (isUnnamed) names = textsAbove(row);
        const bool isTwice = !isUnnamed && width == 2 * names; // else the reader counts the cells
        const bool isBetween =
            isUnnamed && names < width && width <= 2 * names && commas.getMost() >= width - names;
        const bool areShown = isUnnamed && commas.getAreShown();
        if (!isTwice && !isBetween && !areShown) return;
        const std::string place = path + ":" + std::to_string(places[row] + 1);
        throw UnclearRecording(
            {{place},
             counted(width, "cell") + (isTwice || isBetween ? " below " + counted(names, "name") : "") +
                 (isTwice || isBetween ? ", so commas may be decimal commas"
                                       : " without names, whose commas may be decimal commas"),
             width == 2 ? "'separator: semicolon' and 'decimal: comma' for numbers such as 1,5, or "
                          "'separator: comma' and 'headerRows: 0' for cells without names"
                        : "another separator than the comma between numbers with a decimal comma, or "
                          "'separator: comma' and 'headerRows: 0' for cells without names"});
    }

    /// Cells of rows, as far as lines look like ones.
    std::vector<std::vector<std::string_view>> rowsFrom(std::size_t begin) const {
        std::vector<std::vector<std::string_view>> rows;
        for (std::size_t i = begin; i < content.size() && rows.size() < kLinesScored; ++i) {
            if (!isRow(content[i], split, signature, wishes)) continue;
            rows.push_back(cellsOf(content[i], split.separator));
            for (std::string_view& cell : rows.back())
                cell = cellKindOf(cell, '.', wishes) == CellKind::Empty ? "" : trimmed(unquoted(cell));
        }
        return rows;
    }

    /// How many names a line directly above the rows may have, of whatever width it is.
    std::size_t textsAbove(std::size_t row) const {
        if (wishes.headerRows) return 0;
        const std::string_view comment = commentAbove(row);
        if (row == 0 && comment.empty()) return 0;
        std::vector<std::string_view> cells = cellsOf(comment.empty() ? content[row - 1] : comment, ',');
        if (endsEmpty(cells)) cells.pop_back();
        const bool areTexts = std::all_of(cells.begin(), cells.end(), [&](std::string_view cell) {
            return getHasLetter(cell) && cellKindOf(cell, '.', wishes) == CellKind::Text;
        });
        const bool isRemark = !comment.empty() && cells.size() < 2;
        return areTexts && !isRemark ? cells.size() : 0;
    }

    const std::string& path;
    const ReadingWishes& wishes;
    ReadingWishes fixedWishes; ///< With what a `sep=` line says.
    CsvLines lines;
    std::size_t first = 0; ///< The first line that counts.
    CsvLines content;
    std::vector<std::size_t> places; ///< Of content among all lines.
    CsvSplit split;
    std::vector<CellKind> signature;
    std::size_t width = 0; ///< Columns.
};

} // namespace

CsvSniffer::CsvSniffer(std::string filePath, const ReadingWishes& allWishes)
    : path(std::move(filePath)), wishes(allWishes) {}

CsvDialect CsvSniffer::sniff(std::string_view head, bool isWhole) const {
    const bool isCut = head.size() > kSniffedBytes;
    return Sniffing(path, wishes, linesOf(head.substr(0, kSniffedBytes), isWhole && !isCut)).get();
}

} // namespace Quillmere::Host
