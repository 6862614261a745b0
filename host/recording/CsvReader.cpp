// SPDX-License-Identifier: MIT
#include "host/recording/CsvReader.h"

#include "host/text/Counted.h"
#include "host/text/Printable.h"
#include "host/recording/Dialect.h"
#include "host/recording/NumberText.h"
#include "host/ends/RecordingException.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 18;  // fits the second-level cache
constexpr std::size_t kMostColumns = 1'000'000;           // their names are held in memory
constexpr std::size_t kLongestRow = std::size_t{1} << 26; // beyond it, the file is no table of numbers
constexpr std::size_t kQuotedText = 40;                   // how much of a bad cell a message shows
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The end of the cell that begins at `begin`: the comma behind it, or the end of the line. Commas in quotes
/// are text.
const char* endOfCell(const char* begin, const char* lineEnd) {
    const char* first = std::find_if_not(begin, lineEnd, isBlank);
    if (first == lineEnd || *first != '"') return std::find(begin, lineEnd, ',');
    bool quoted = false;
    for (; first != lineEnd && (quoted || *first != ','); ++first)
        quoted = quoted != (*first == '"');
    return first;
}

/// What is in the quotes of a cell, as it stands there; without quotes the cell. Blanks around don't count.
std::string_view unquoted(std::string_view cell) {
    cell = trimmed(cell);
    const bool isQuoted = cell.size() >= 2 && cell.front() == '"' && cell.back() == '"';
    return isQuoted ? cell.substr(1, cell.size() - 2) : cell;
}

/// A cell's text without blanks and quotes; a doubled quote inside quotes is one. A number or a text for
/// missing values has none, so only names and messages need this.
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

bool isNumber(const std::string& text) {
    double value = 0.0;
    return std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
}

/// What somebody may have meant who wrote a decimal comma.
std::string suggestionFor(std::string text) {
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos) return {};
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

CsvReader::CsvReader(const std::string& path) : CsvReader(std::make_unique<RecordingFile>(path)) {}

CsvReader::CsvReader(std::unique_ptr<RecordingFile> openFile) : file(std::move(openFile)), piece(kPieceSize) {
    cursor = filled = piece.data();
    readHeader();
}

void CsvReader::readHeader() {
    lineBegin = cursor;
    if (refill()) refuseDialect(); // without line ends, the first line would be the whole file
    bool found = nextLine();
    if (found) refuseDialect();
    if (found && std::string_view(lineBegin, lineEnd).starts_with(kByteOrderMark))
        lineBegin += kByteOrderMark.size();
    while (found && (lineBegin == lineEnd || *lineBegin == '#'))
        found = nextLine();
    if (!found) throw RecordingException({{getPath()}, "no header row", "a row of column names"});
    for (const char* begin = lineBegin;; ++begin) {
        const char* end = endOfCell(begin, lineEnd);
        if (columns.size() == kMostColumns)
            throw RecordingException({{getPath() + ":" + std::to_string(line)},
                                      "more than a million columns",
                                      "a table of numbers"});
        columns.emplace_back().name = plainText({begin, end});
        if (end == lineEnd) break;
        begin = end;
    }
    targets.assign(columns.size(), kPassedOver);
}

/// Raises when what has been read of the file is no table of ours. Requires: the file's begin is in memory.
void CsvReader::refuseDialect() const {
    const Dialect dialect = dialectOf({piece.data(), filled});
    if (dialect.found.empty()) return;
    throw RecordingException({{getPath()}, dialect.found, dialect.expected});
}

void CsvReader::setMissing(std::vector<std::string> texts) {
    missing = std::move(texts);
    hasMissingNumbers = std::any_of(missing.begin(), missing.end(), isNumber);
}

bool CsvReader::readRow(double* values) {
    const Row row = takeRow(values);
    if (row == Row::Faulty) throw RecordingException(getFault());
    return row == Row::Sound;
}

CsvReader::Row CsvReader::takeRow(double* values) {
    beginRow();
    fault = Fault::None;
    do {
        if (!nextLine()) return Row::End;
    } while (lineBegin == lineEnd && columns.size() > 1);

    const char* begin = lineBegin;
    const char* const end = lineEnd;
    const std::size_t width = columns.size();
    for (std::size_t column = 0;; ++column, ++begin) {
        if (column == width) {
            noteFault(Fault::CellsTooMany, width - 1);
            break;
        }
        const std::size_t target = targets[column];
        const char* next = begin;
        if (target == kPassedOver) {
            next = endOfCell(begin, end);
        } else {
            // The common cell is a bare number up to the comma; everything else takes the other road.
            const auto [stop, error] = textToNumber(begin, end, values[target]);
            next = stop;
            if (error != std::errc() || (stop != end && *stop != ',') || hasMissingNumbers)
                next = readOddCell(begin, column, values[target]);
        }
        if (next == end) {
            if (column + 1 != width) noteFault(Fault::CellsMissing, column + 1);
            break;
        }
        begin = next;
    }
    return fault == Fault::None ? Row::Sound : Row::Faulty;
}

/// Reads the cell at `begin` that may be anything, and gives back its end.
const char* CsvReader::readOddCell(const char* begin, std::size_t column, double& value) {
    const char* const end = endOfCell(begin, lineEnd);
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
    const bool hasPlus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    const char* const last = text.data() + text.size();
    double value = 0.0;
    const auto [stop, error] = std::from_chars(text.data() + (hasPlus ? 1 : 0), last, value);
    if (error == std::errc() && stop == last) return value;
    const bool isTooLarge = error == std::errc::result_out_of_range && stop == last;
    noteFault(isTooLarge ? Fault::TooLarge : Fault::NoNumber, column);
    return std::numeric_limits<double>::quiet_NaN();
}

void CsvReader::noteFault(Fault kind, std::size_t column) {
    if (kind == Fault::CellsMissing || kind == Fault::CellsTooMany) hasAllCells = false;
    if (fault != Fault::None) return;
    fault = kind;
    faultyColumn = column;
}

bool CsvReader::getIsRowReady() {
    for (;;) {
        const auto left = static_cast<std::size_t>(filled - cursor);
        const bool hasLine = std::memchr(cursor, '\n', left) != nullptr;
        // A blank line is no row, and readRow would wait for what comes behind it.
        const bool isBlankLine =
            hasLine && (*cursor == '\n' || std::string_view(cursor, left).starts_with("\r\n"));
        if (isBlankLine && columns.size() > 1) {
            nextLine();
            continue;
        }
        if (hasLine || atEnd) return true;
        if (!file->getIsReadable()) return false;
        refill();
    }
}

/// Finds the next line and puts its bounds into `lineBegin` and `lineEnd`; false at the end of the file.
bool CsvReader::nextLine() {
    const char* from = cursor;
    const char* stop = nullptr;
    while ((stop = static_cast<const char*>(
                std::memchr(from, '\n', static_cast<std::size_t>(filled - from)))) == nullptr) {
        const std::ptrdiff_t searched = filled - cursor;
        if (!refill()) break;
        from = cursor + searched;
    }
    isCut = stop == nullptr;
    if (isCut) {
        if (cursor == filled) return false;
        stop = filled; // the last line, without a line end
    }
    lineBegin = cursor;
    lineEnd = stop;
    cursor = stop == filled ? stop : stop + 1;
    if (lineEnd != lineBegin && lineEnd[-1] == '\r') {
        --lineEnd;
        isCut = false; // half of a line end tells as much as a whole one
    }
    ++line;
    return true;
}

/// Moves what is left to the front of the piece and reads more behind it; false when there is nothing more.
bool CsvReader::refill() {
    if (atEnd) return false;
    const auto left = static_cast<std::size_t>(filled - cursor);
    bytesBefore += static_cast<std::uint64_t>(cursor - piece.data());
    std::memmove(piece.data(), cursor, left);
    if (left == piece.size()) {
        if (left >= kLongestRow)
            throw RecordingException({{getPath() + ":" + std::to_string(line + 1)},
                                      "a row of more than 64 MiB",
                                      "a table of numbers"});
        piece.resize(piece.size() * 2);
    }
    cursor = piece.data();
    filled = piece.data() + left;
    const std::size_t count = file->read(piece.data() + left, piece.size() - left);
    atEnd = count == 0;
    filled += count;
    return !atEnd;
}

std::string CsvReader::getFault() const {
    switch (fault) {
    case Fault::NoNumber:
        return getFaultOfCell(faultyColumn, "a number", suggestionFor(textOfCell(faultyColumn)));
    case Fault::TooLarge:
        return getFaultOfCell(faultyColumn, "a number that a 64-bit float can hold");
    case Fault::CellsMissing:
        return getFaultOfRow("a row that ends before it, ");
    case Fault::CellsTooMany:
        return getFaultOfRow("more cells behind it in ");
    case Fault::None:
        break;
    }
    return {};
}

std::string CsvReader::getFaultOfCell(std::size_t column, const std::string& expected,
                                      const std::string& suggestion) const {
    return Complaint{{placeOf(column)}, quoted(textOfCell(column)), expected, suggestion}.getText();
}

std::string CsvReader::textOfCell(std::size_t column) const {
    const char* begin = lineBegin;
    for (std::size_t i = 0; i < column; ++i)
        begin = endOfCell(begin, lineEnd) + 1;
    return plainText({begin, endOfCell(begin, lineEnd)});
}

std::string CsvReader::getRowText() const {
    return quoted({lineBegin, lineEnd});
}

std::string CsvReader::getPlace() const {
    return getPath() + ":" + std::to_string(line);
}

std::string CsvReader::placeOf(std::size_t column) const {
    return getPlace() + ": column '" + printable(columns[column].name, kLongestName) + "'";
}

/// Of a line with too few or too many cells.
std::string CsvReader::getFaultOfRow(const std::string& found) const {
    return Complaint{{placeOf(faultyColumn)},
                     found + quoted({lineBegin, lineEnd}),
                     counted(columns.size(), "cell") + ", as the header has"}
        .getText();
}

} // namespace Quillmere::Host
