// SPDX-License-Identifier: MIT
#include "host/recording/CsvReader.h"

#include "host/text/Counted.h"
#include "host/text/Printable.h"
#include "host/recording/CsvCells.h"
#include "host/recording/CsvTable.h"
#include "host/recording/NumberText.h"
#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kQuotedText = 40;                      // how much of a bad cell a message shows
constexpr std::size_t kLongestSecond = std::size_t{1} << 25; // of a table; beyond it nobody counted seconds

bool isNumber(const std::string& text) {
    double value = 0.0;
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
}

/// What somebody may have meant who wrote a decimal comma, or signs between thousands.
std::string suggestionFor(std::string text, char decimal) {
    if (getHasThousands(text, decimal)) {
        std::erase(text, decimal == '.' ? ',' : '.');
        return text;
    }
    const std::size_t comma = text.find(',');
    if (decimal != '.' || comma == std::string::npos) return {};
    text[comma] = '.';
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = textToNumber(text.data(), end, value);
    return error == std::errc() && stop == end ? text : "";
}

std::string quoted(std::string_view text) {
    return std::string("\"").append(printable(text, kQuotedText)) + "\"";
}

} // namespace

CsvReader::CsvReader(const std::string& path, const ReadingWishes& wishes)
    : CsvReader(std::make_unique<RecordingFile>(path, wishes.stop), wishes) {}

CsvReader::CsvReader(std::unique_ptr<RecordingFile> file, const ReadingWishes& wishes)
    : lines(std::move(file)) {
    CsvTable table = openTable(lines, wishes);
    separator = table.dialect.separator;
    decimal = table.dialect.decimal;
    endsWithSeparator = table.dialect.endsWithSeparator;
    isEveryCellOdd = decimal != '.';
    form = std::move(table.form);
    notes = std::move(table.dialect.notes);
    columns = std::move(table.columns);
    rate = table.rate;
    targets.assign(columns.size(), kPassedOver);
    if (table.times.columns.empty()) return;
    timeColumn = table.times.columns.front();
    hasOwnTimes = !table.times.isPlain;
    if (hasOwnTimes)
        clock = std::make_unique<RowClock>(std::move(table.times), decimal);
    else
        notes.insert(notes.end(), table.times.notes.begin(), table.times.notes.end());
}

std::optional<std::int64_t> CsvReader::getOrigin() const {
    return clock == nullptr ? std::nullopt : clock->getOrigin();
}

std::vector<std::string> CsvReader::getNotes() const {
    std::vector<std::string> all = notes;
    if (clock == nullptr) return all;
    for (std::string& note : clock->getNotes())
        all.push_back(std::move(note));
    return all;
}

void CsvReader::setMissing(const std::vector<std::string>& texts) {
    missing = texts;
    isEveryCellOdd = decimal != '.' || std::any_of(missing.begin(), missing.end(), isNumber);
}

bool CsvReader::readRow(double* values) {
    const Row row = takeRow(values);
    if (row == Row::Faulty) throw RecordingException(getFault());
    return row == Row::Sound;
}

CsvReader::Row CsvReader::takeRow(double* values) {
    beginRow();
    fault = Fault::None;
    if (!nextRow()) return Row::End;

    const char* begin = lines.getBegin();
    const char* const end = lines.getEnd();
    const std::size_t width = columns.size();
    const std::size_t* const placeOf = targets.data(); // members would be loaded anew for each cell
    const char behind = separator;
    const bool areOdd = isEveryCellOdd;
    for (std::size_t column = 0;; ++column, ++begin) {
        if (column == width) {
            const bool isSpare = endsWithSeparator && trimmed({begin, end}).empty();
            if (!isSpare) noteFault(Fault::CellsTooMany, width - 1);
            break;
        }
        const std::size_t target = placeOf[column];
        const char* next = begin;
        if (target == kPassedOver) {
            next = endOfCell(begin, end, behind);
        } else {
            // The common cell is a bare number up to the separator; everything else takes the other road.
            const auto [stop, error] = textToNumber(begin, end, values[target]);
            next = stop;
            if (error != std::errc() || (stop != end && *stop != behind) || areOdd)
                next = readOddCell(begin, column, values[target]);
        }
        if (next == end) {
            if (column + 1 != width) noteFault(Fault::CellsMissing, column + 1);
            break;
        }
        begin = next;
    }
    if (clock != nullptr) takeTime();
    return fault == Fault::None ? Row::Sound : Row::Faulty;
}

/// Finds the next line that is a row.
bool CsvReader::nextRow() {
    if (clock != nullptr && clock->getPlan().isSpread && secondLeft == 0) beginSecond();
    do {
        if (!lines.next()) return false;
    } while (lines.getBegin() == lines.getEnd() && columns.size() > 1);
    isCut = lines.getIsCut();
    line = lines.getNumber();
    return true;
}

/// Reads the cell at `begin` that may be anything, and gives back its end.
const char* CsvReader::readOddCell(const char* begin, std::size_t column, double& value) {
    const char* const end = endOfCell(begin, lines.getEnd(), separator);
    const std::string_view text = unquoted({begin, end});
    if (std::find(missing.begin(), missing.end(), trimmed(text)) != missing.end()) {
        value = std::numeric_limits<double>::quiet_NaN();
        noteMissing(targets[column]);
    } else if (text.empty()) {
        noteEmpty(targets[column]);
    } else {
        value = parse(trimmed(text), column);
    }
    return end;
}

double CsvReader::parse(std::string_view text, std::size_t column) {
    double value = 0.0;
    const NumberFault wrong = cellToNumber(text, decimal, value);
    if (wrong == NumberFault::None) return value;
    noteFault(wrong == NumberFault::TooLarge ? Fault::TooLarge : Fault::NoNumber, column);
    return std::numeric_limits<double>::quiet_NaN();
}

/// What says the time in a row: its cell, or the date's and the time's.
std::string_view CsvReader::timeTextOf(std::string_view text) {
    const std::vector<std::size_t>& from = clock->getPlan().columns;
    const auto cellOf = [&](std::size_t column) -> std::string_view {
        const char* begin = text.data();
        const char* const end = begin + text.size();
        for (std::size_t i = 0; i <= column; ++i) {
            const char* const stop = endOfCell(begin, end, separator);
            if (i == column) return trimmed(unquoted({begin, stop}));
            if (stop == end) break;
            begin = stop + 1;
        }
        return {};
    };
    if (from.size() == 1) return cellOf(from.front());
    timeText.clear();
    for (const std::size_t column : from)
        timeText.append(timeText.empty() ? "" : " ").append(cellOf(column));
    return timeText;
}

void CsvReader::takeTime() {
    if (secondLeft > 0) --secondLeft;
    time = clock->take(timeTextOf(lines.getText())).value_or(std::numeric_limits<double>::quiet_NaN());
}

/// Counts the rows of the second that comes, and of the one behind a recording's first, which tells how many
/// there usually are.
void CsvReader::beginSecond() {
    std::size_t offset = 0;
    const Second second = countSecond(offset);
    const bool isFirst = rowsOfSecond == 0;
    std::uint64_t usual = rowsOfSecond;
    if (isFirst && second.rows > 1) {
        if (second.isLast) refuseSpreading();
        const Second next = countSecond(offset);
        if (next.isLast) refuseSpreading();
        usual = next.rows;
    }
    clock->beginSecond(second.rows, isFirst || second.isLast ? usual : 0, isFirst);
    secondLeft = rowsOfSecond = second.rows;
}

/// From `offset` on, up to the first row that has another time.
CsvReader::Second CsvReader::countSecond(std::size_t& offset) {
    Second second;
    std::string own;
    for (;;) {
        std::size_t behind = offset;
        const auto text = lines.look(behind, true);
        if (!text) {
            second.isLast = true;
            return second;
        }
        if (behind > kLongestSecond) refuseSpreading();
        if (!text->empty() || columns.size() == 1) {
            const std::string_view found = timeTextOf(*text);
            if (second.rows == 0)
                own = found;
            else if (found != own && !found.empty()) // a row without its time belongs to those around it
                return second;
            ++second.rows;
        }
        offset = behind;
    }
}

void CsvReader::refuseSpreading() const {
    throw UnclearRecording(
        {{getPath() + ":" + std::to_string(lines.getNumber() + 1)},
         "times in whole seconds, none of which is there from its first row to its last, so "
         "nothing tells how many rows a second has",
         "'rate:' and rows a second"});
}

void CsvReader::noteFault(Fault kind, std::size_t column) {
    if (kind == Fault::CellsMissing || kind == Fault::CellsTooMany) hasAllCells = false;
    if (fault != Fault::None) return;
    fault = kind;
    faultyColumn = column;
}

bool CsvReader::getIsRowReady() {
    const bool isSpread = clock != nullptr && clock->getPlan().isSpread;
    if (isSpread && secondLeft == 0) return getIsSecondAhead();
    for (;;) {
        const std::string_view ahead = lines.getAhead();
        const bool hasLine = ahead.find('\n') != std::string_view::npos;
        // A blank line is no row, and readRow would wait for what comes behind it.
        const bool isBlankLine = hasLine && (ahead.front() == '\n' || ahead.starts_with("\r\n"));
        if (isBlankLine && columns.size() > 1) {
            lines.next();
            continue;
        }
        if (hasLine || lines.getIsAllAhead()) return true;
        if (!lines.getFile().getIsReadable()) return false;
        lines.readAhead();
    }
}

/// Whether `beginSecond` would not wait: two other times have come behind the one that is next, or one where
/// that isn't the first.
bool CsvReader::getIsSecondAhead() {
    std::size_t offset = 0;
    std::size_t changes = 0;
    std::string last;
    while (const auto text = lines.look(offset, false)) {
        const std::string_view found = timeTextOf(*text);
        if (!found.empty() && found != last) {
            if (!last.empty()) ++changes;
            last = found;
        }
        if (changes == (rowsOfSecond == 0 ? 2u : 1u)) return true;
    }
    return lines.getIsAllAhead();
}

Complaint CsvReader::getFault() const {
    switch (fault) {
    case Fault::TooLarge:
        return getFaultOfCell(faultyColumn, "a number that a 64-bit float can hold");
    case Fault::CellsMissing:
        return getFaultOfRow("a row that ends before it, ");
    case Fault::CellsTooMany:
        return getFaultOfRow("more cells behind it in ");
    case Fault::NoNumber:
    case Fault::None:
        break;
    }
    return getFaultOfCell(faultyColumn, decimal == '.' ? "a number" : "a number with a decimal comma",
                          suggestionFor(textOfCell(faultyColumn), decimal));
}

Complaint CsvReader::getFaultOfCell(std::size_t column, const std::string& expected,
                                    const std::string& suggestion) const {
    Complaint complaint = faultAt(column, quoted(textOfCell(column)), expected);
    complaint.suggestion = suggestion;
    return complaint;
}

std::string CsvReader::textOfCell(std::size_t column) const {
    const char* begin = lines.getBegin();
    for (std::size_t i = 0; i < column; ++i)
        begin = endOfCell(begin, lines.getEnd(), separator) + 1;
    return plainText({begin, endOfCell(begin, lines.getEnd(), separator)});
}

std::string CsvReader::getRowText() const {
    return quoted(lines.getText());
}

std::string CsvReader::getPlace() const {
    return getPath() + ":" + std::to_string(line);
}

Complaint CsvReader::faultAt(std::size_t column, const std::string& found,
                             const std::string& expected) const {
    const bool hasNumber = line <= static_cast<std::uint64_t>(std::numeric_limits<int>::max());
    Complaint complaint(hasNumber ? Place{getPath(), static_cast<int>(line), 0} : Place{getPlace(), 0, 0},
                        found, expected);
    complaint.part = "column '" + printable(columns[column].name, kLongestName) + "'";
    return complaint;
}

/// Of a line with too few or too many cells.
Complaint CsvReader::getFaultOfRow(const std::string& found) const {
    return faultAt(faultyColumn, found + quoted(lines.getText()),
                   counted(columns.size(), "cell") + ", as the header has");
}

} // namespace Quillmere::Host
