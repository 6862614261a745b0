// SPDX-License-Identifier: MIT
#include "host/recording/CsvTable.h"

#include "host/ends/RecordingException.h"
#include "host/recording/CsvCells.h"
#include "host/recording/CsvSniffer.h"
#include "host/recording/CsvSplit.h"
#include "host/recording/Dialect.h"
#include "host/recording/FormText.h"
#include "host/recording/RecordingProfile.h"
#include "host/recording/TimeSniffer.h"
#include "host/recording/UnitText.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <unordered_set>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kMostColumns = 1'000'000; // their names are held in memory
constexpr std::size_t kRowsLookedAt = 500;
/// Of a pipe, whose rows may come slowly. Always as many, so that what is found doesn't depend on its pace.
constexpr std::size_t kRowsOfPipe = 10;
constexpr std::size_t kLongestBegin = std::size_t{1} << 16; // of a row that is looked at
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view withoutMark(std::string_view head) {
    return head.substr(head.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
}

class TableOpening {
public:
    TableOpening(LineReader& allLines, const ReadingWishes& allWishes)
        : lines(allLines), wishes(allWishes), isPiped(lines.getFile().getIsPiped()) {}

    CsvTable open() {
        if (lines.readAhead())
            refuse(lines.getAhead()); // without line ends, the first line would be the file
        sniff();
        if (table.dialect.isPlain)
            readPlainHeader();
        else
            passHeader();
        gatherRows();
        describeColumns();
        const TimeEvidence evidence{lines.getFile().getName(), table.columns, rows, table.dialect, profile};
        table.times = findTimes(evidence, wishes);
        for (const std::size_t column : table.times.columns)
            table.columns[column].kind = RecordingReader::Column::Kind::Time;
        table.rate = statedRate(table.dialect.preamble);
        table.form = describeForm(table.dialect, profile, !wishes.profile.empty());
        if (lines.getFile().getIsPacked()) table.form.emplace_back("compressed by gzip");
        return std::move(table);
    }

private:
    const std::string& getName() const { return lines.getFile().getName(); }

    /// Raises when what has been read of the file is no table of ours.
    void refuse(std::string_view head) const {
        const Dialect dialect = dialectOf(head);
        if (!dialect.found.empty()) throw RecordingException({{getName()}, dialect.found, dialect.expected});
    }

    /// Whether all of a file is in memory. Its end is not looked for: it may still be written.
    bool getIsAllAhead() const {
        if (lines.getFile().getIsPacked()) return lines.getIsAllAhead();
        return lines.getBytesRead() + lines.getAhead().size() >= lines.getFile().getSize();
    }

    void sniff() {
        const CsvSniffer sniffer(getName(), wishes);
        if (!isPiped) {
            while (lines.getAhead().size() <= kSniffedBytes && !getIsAllAhead() && lines.readAhead()) {
            }
            table.dialect = sniffer.sniff(withoutMark(lines.getAhead()), getIsAllAhead());
            return;
        }
        std::size_t offset = 0;
        for (;;) {
            const auto line = lines.look(offset, true);
            const std::string_view head = withoutMark(lines.getAhead().substr(0, offset));
            const bool isLast = !line || offset > kSniffedBytes;
            if (!isLast && getIsPlainHeader(*line)) return;
            table.dialect = sniffer.sniff(head, isLast);
            if (isLast || getEndsInRows(head)) return;
        }
    }

    /// Whether the last lines are rows, and as many as are waited for.
    bool getEndsInRows(std::string_view head) const {
        for (std::size_t rowsLeft = kRowsOfPipe; rowsLeft > 0; --rowsLeft) {
            if (head.ends_with('\n')) head.remove_suffix(1);
            const std::size_t begin = head.rfind('\n') + 1; // 0 where there is none
            const auto cells = cellsOf(head.substr(begin), table.dialect.separator, kMostColumns);
            const bool isRow = cells.size() > 1 && std::any_of(cells.begin(), cells.end(), [&](auto cell) {
                                   return cellKindOf(cell, table.dialect.decimal, wishes) == CellKind::Number;
                               });
            if (!isRow || begin == 0) return false;
            head = head.substr(0, begin);
        }
        return true;
    }

    /// Whether a pipe's line is the header of a plain table that says all that is wanted, whatever comes
    /// behind it: then nobody waits.
    bool getIsPlainHeader(std::string_view line) const {
        if (wishes.getHasForm() || wishes.findsTimes) return false;
        line = withoutMark(line);
        if (line.find(',') == std::string_view::npos && line.find_first_of(";|\t") != std::string_view::npos)
            return false;
        if (line.empty() || line.starts_with('#') || line.starts_with("//") || line.starts_with("sep=") ||
            line.starts_with("\"sep="))
            return false;
        const auto cells = cellsOf(line, ',', kMostColumns);
        const bool isAllText = std::all_of(cells.begin(), cells.end(), [&](std::string_view cell) {
            return cellKindOf(cell, '.', wishes) == CellKind::Text;
        });
        if (!isAllText || wishes.names.empty()) return isAllText;
        std::unordered_set<std::string> there;
        for (const std::string_view cell : cells)
            there.insert(plainText(cell));
        return std::any_of(wishes.names.begin(), wishes.names.end(),
                           [&](const std::string& name) { return there.count(name) > 0; });
    }

    void readPlainHeader() {
        bool found = lines.next();
        if (found) refuse(lines.getHere());
        if (found && lines.getText().starts_with(kByteOrderMark)) lines.dropFront(kByteOrderMark.size());
        while (found && (lines.getText().empty() || lines.getText().front() == '#')) {
            table.dialect.preamble.emplace_back(lines.getText());
            found = lines.next();
        }
        if (!found) throw RecordingException({{getName()}, "no header row", "a row of column names"});
        const std::vector<std::string_view> cells = cellsOf(lines.getText(), ',', kMostColumns + 1);
        if (cells.size() > kMostColumns)
            throw RecordingException({{getName() + ":" + std::to_string(lines.getNumber())},
                                      "more than a million columns",
                                      "a table of numbers"});
        table.columns.resize(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i)
            table.columns[i].name = plainText(cells[i]);
    }

    void passHeader() {
        for (std::uint64_t i = 0; i < table.dialect.linesBefore; ++i)
            lines.next();
        table.columns.resize(table.dialect.names.size());
        for (std::size_t i = 0; i < table.columns.size(); ++i)
            table.columns[i].name = table.dialect.names[i];
    }

    /// The first rows, as far as they are in memory. Of a pipe as many as are always waited for.
    void gatherRows() {
        if (isPiped && getNeedsNoRows()) return;
        const std::size_t most = isPiped ? kRowsOfPipe : kRowsLookedAt;
        std::size_t offset = 0;
        std::vector<std::size_t> ends;
        while (ends.size() < most && offset < kLongestBegin) {
            const std::size_t begin = offset;
            if (!isPiped && lines.getAhead().find('\n', offset) == std::string_view::npos && !getIsAllAhead())
                break; // the rest of a long line isn't worth reading on
            const auto line = lines.look(offset, isPiped);
            if (!line) break;
            if (line->empty()) continue;
            ends.push_back(begin);
        }
        for (std::size_t begin : ends) { // nothing moves any more
            std::size_t at = begin;
            if (const auto line = lines.look(at, false))
                rows.push_back(cellsOf(*line, table.dialect.separator, table.columns.size() + 1));
        }
    }

    /// Whether a plain table's header says everything, so that nobody has to wait for rows.
    bool getNeedsNoRows() const {
        return table.dialect.isPlain && !wishes.findsTimes &&
               (wishes.time.empty() || (wishes.time.size() == 1 && !wishes.getHasTimeForm()));
    }

    void describeColumns() {
        std::vector<CellKind> kinds;
        for (std::size_t i = 0; !rows.empty() && i < rows.front().size(); ++i)
            kinds.push_back(cellKindOf(rows.front()[i], table.dialect.decimal, wishes));
        if (table.dialect.endsWithSeparator && kinds.size() == table.columns.size() + 1) kinds.pop_back();
        std::vector<std::string> names;
        for (const RecordingReader::Column& column : table.columns)
            names.push_back(column.name);
        profile = findProfile(wishes.profile, table.dialect, names, kinds);
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            RecordingReader::Column& column = table.columns[i];
            const bool isKnown = profile != nullptr && !table.dialect.hasHeader &&
                                 i < profile->names.size() && !profile->names[i].empty();
            if (isKnown) column.name = profile->names[i];
            column.unit = i < table.dialect.units.size() ? unitOfCell(table.dialect.units[i]) : "";
            if (column.unit.empty()) column.unit = isKnown ? profile->units[i] : unitOfName(column.name);
            if (getHoldsText(i)) column.kind = RecordingReader::Column::Kind::Other;
        }
    }

    /// Whether a column has no number in the rows that were looked at, but other cells.
    bool getHoldsText(std::size_t column) const {
        bool hasText = false;
        for (const auto& row : rows) {
            if (column >= row.size()) continue;
            const CellKind kind = cellKindOf(row[column], table.dialect.decimal, wishes);
            if (kind == CellKind::Number) return false;
            hasText = hasText || kind != CellKind::Empty;
        }
        return hasText;
    }

    LineReader& lines;
    const ReadingWishes& wishes;
    const bool isPiped;
    CsvTable table;
    std::vector<std::vector<std::string_view>> rows;
    const RecordingProfile* profile = nullptr;
};

} // namespace

CsvTable openTable(LineReader& lines, const ReadingWishes& wishes) {
    return TableOpening(lines, wishes).open();
}

} // namespace Quillmere::Host
