// SPDX-License-Identifier: MIT
#include "host/recording/CsvReader.h"

#include "host/recording/RecordingException.h"
#include "host/recording/StandardStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 18;  // fits the second-level cache
constexpr std::size_t kLongestRow = std::size_t{1} << 26; // beyond it, the file is no table of numbers
constexpr std::size_t kPassedOver = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kQuotedText = 40; // how much of a bad cell a message shows
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

/// The end of the cell that begins at `begin`: the comma behind it, or the end of the line. Commas in quotes are text.
const char* endOfCell(const char* begin, const char* lineEnd) {
    const char* first = std::find_if_not(begin, lineEnd, isBlank);
    if (first == lineEnd || *first != '"') return std::find(begin, lineEnd, ',');
    bool quoted = false;
    for (; first != lineEnd && (quoted || *first != ','); ++first)
        quoted = quoted != (*first == '"');
    return first;
}

/// A cell's text without blanks and quotes; a doubled quote inside quotes is one.
std::string plainText(std::string_view cell) {
    cell = trimmed(cell);
    if (cell.size() < 2 || cell.front() != '"' || cell.back() != '"') return std::string(cell);
    std::string text;
    for (std::size_t i = 1; i + 1 < cell.size(); ++i) {
        text += cell[i];
        if (cell[i] == '"' && i + 2 < cell.size() && cell[i + 1] == '"') ++i;
    }
    return text;
}

constexpr const char* kStandardInput = "standard input";

/// A descriptor of its own, also of standard input, so that closing it closes nobody else's.
int openForReading(const std::string& path) {
    if (path == kStandardInput) return ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0);
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

std::string shortened(std::string_view text) {
    if (text.size() <= kQuotedText) return std::string(text);
    return std::string(text.substr(0, kQuotedText)) + "...";
}

} // namespace

CsvReader::CsvReader(std::string filePath)
    : path(getIsStandardStream(filePath) ? kStandardInput : std::move(filePath)), file(openForReading(path)),
      piece(kPieceSize) {
    if (file < 0) throw RecordingException(path + ": cannot be opened: " + std::strerror(errno));
    try {
        struct stat facts {};
        if (::fstat(file, &facts) == 0 && S_ISREG(facts.st_mode)) {
            isPiped = false;
            size = static_cast<std::uint64_t>(facts.st_size);
        }
        cursor = filled = piece.data();
        readHeader();
    } catch (...) {
        ::close(file);
        throw;
    }
}

CsvReader::~CsvReader() {
    ::close(file);
}

void CsvReader::readHeader() {
    bool found = nextLine();
    if (found && std::string_view(lineBegin, lineEnd).starts_with(kByteOrderMark))
        lineBegin += kByteOrderMark.size();
    while (found && (lineBegin == lineEnd || *lineBegin == '#'))
        found = nextLine();
    if (!found) throw RecordingException(path + ": found no header row; expected a row of column names");
    for (const char* begin = lineBegin;; ++begin) {
        const char* end = endOfCell(begin, lineEnd);
        columns.push_back(plainText({begin, end}));
        if (end == lineEnd) break;
        begin = end;
    }
    targets.assign(columns.size(), kPassedOver);
}

void CsvReader::select(const std::vector<std::size_t>& chosen) {
    targets.assign(columns.size(), kPassedOver);
    for (std::size_t i = 0; i < chosen.size(); ++i)
        targets.at(chosen[i]) = i;
    empty.assign(chosen.size(), 0);
    emptyCells = 0;
}

bool CsvReader::readRow(double* values) {
    if (emptyCells > 0) {
        std::fill(empty.begin(), empty.end(), char{0});
        emptyCells = 0;
    }
    do {
        if (!nextLine()) return false;
    } while (lineBegin == lineEnd && columns.size() > 1);

    const char* begin = lineBegin;
    const char* const end = lineEnd;
    const std::size_t width = columns.size();
    for (std::size_t column = 0;; ++column, ++begin) {
        if (column == width) refuseRow(width + 1);
        const std::size_t target = targets[column];
        const char* next = begin;
        if (target == kPassedOver) {
            next = endOfCell(begin, end);
        } else {
            // The common cell is a bare number up to the comma; everything else takes the other road.
            const auto [stop, error] = std::from_chars(begin, end, values[target]);
            next = stop;
            if (error != std::errc() || (stop != end && *stop != ',')) {
                next = endOfCell(begin, end);
                if (plainText({begin, next}).empty())
                    noteEmpty(target);
                else
                    values[target] = parseOdd(begin, next, column);
            }
        }
        if (next == end) {
            if (column + 1 != width) refuseRow(column + 1);
            return true;
        }
        begin = next;
    }
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
        pollfd look{file, POLLIN, 0};
        if (::poll(&look, 1, 0) <= 0) return false; // a signal came between: as good as nothing yet
        refill();
    }
}

void CsvReader::noteEmpty(std::size_t value) {
    empty[value] = 1;
    ++emptyCells;
}

double CsvReader::parseOdd(const char* begin, const char* end, std::size_t column) {
    const std::string text = plainText({begin, end});
    const std::string inner(trimmed(text));
    const bool hasPlus = inner.size() > 1 && inner[0] == '+' && inner[1] != '-';
    const char* first = inner.data() + (hasPlus ? 1 : 0);
    const char* last = inner.data() + inner.size();
    double value = 0.0;
    const auto [stop, error] = std::from_chars(first, last, value);
    if (error == std::errc::result_out_of_range && stop == last)
        refuse(columns[column], text, "a number that a 64-bit float can hold");
    if (error != std::errc() || stop != last) refuse(columns[column], text, "a number");
    return value;
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
    if (stop == nullptr) {
        if (cursor == filled) return false;
        stop = filled; // the last line, without a line end
    }
    lineBegin = cursor;
    lineEnd = stop;
    cursor = stop == filled ? stop : stop + 1;
    if (lineEnd != lineBegin && lineEnd[-1] == '\r') --lineEnd;
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
            throw RecordingException(path + ":" + std::to_string(line + 1) +
                                     ": found a row of more than 64 MiB; expected a table of numbers");
        piece.resize(piece.size() * 2);
    }
    ssize_t count = 0;
    do {
        count = ::read(file, piece.data() + left, piece.size() - left);
    } while (count < 0 && errno == EINTR);
    if (count < 0) throw RecordingException(path + ": cannot be read: " + std::strerror(errno));
    atEnd = count == 0;
    cursor = piece.data();
    filled = piece.data() + left + count;
    return !atEnd;
}

void CsvReader::refuse(std::string_view columnName, std::string_view found,
                       const std::string& expected) const {
    throw RecordingException(path + ":" + std::to_string(line) + ": column '" + std::string(columnName) +
                             "': found \"" + shortened(found) + "\"; expected " + expected);
}

void CsvReader::refuseRow(std::size_t cells) const {
    const std::string header = std::to_string(columns.size());
    if (cells > columns.size())
        throw RecordingException(path + ":" + std::to_string(line) + ": column '" + columns.back() +
                                 "': found more cells behind it in \"" + shortened({lineBegin, lineEnd}) +
                                 "\"; expected " + header + " cells, as the header has");
    throw RecordingException(path + ":" + std::to_string(line) + ": column '" + columns[cells] +
                             "': found a row that ends before it, \"" + shortened({lineBegin, lineEnd}) +
                             "\"; expected " + header + " cells, as the header has");
}

} // namespace Quillmere::Host
