// SPDX-License-Identifier: MIT
#include "host/recording/BidsReader.h"

#include "host/description/Value.h"
#include "host/description/ValueReader.h"
#include "host/ends/RecordingException.h"
#include "host/recording/NumberText.h"
#include "host/text/Complaint.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 18;
constexpr std::size_t kLongestRow = std::size_t{1} << 26;
constexpr std::size_t kLongestBeside = std::size_t{1} << 26; // of the files beside the recording
constexpr std::size_t kQuotedText = 40;
constexpr std::string_view kMotion = "_motion.tsv";

std::string quoted(std::string_view text) {
    return "\"" + printable(text, kQuotedText) + "\"";
}

/// Takes the text up to `separator` from the front of `text`, and that with it.
std::string_view takeFront(std::string_view& text, char separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view front = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return front;
}

std::string_view withoutReturn(std::string_view line) {
    return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

std::vector<std::string> cellsOf(std::string_view line) {
    std::vector<std::string> cells;
    for (bool isMore = true; isMore;) {
        isMore = line.find('\t') != std::string_view::npos;
        cells.emplace_back(takeFront(line, '\t'));
    }
    return cells;
}

std::string wholeText(const std::string& path) {
    RecordingFile file(path);
    std::string text;
    std::string part(kPieceSize, '\0');
    while (const std::size_t count = file.read(part.data(), part.size())) {
        text.append(part, 0, count);
        if (text.size() > kLongestBeside)
            throw RecordingException(
                {{file.getName()}, "more than 64 MiB", "a list of channels, or a few facts"});
    }
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    return text;
}

/// The text in the column of that name, if there is one.
std::string cellUnder(const std::vector<std::string>& names, const std::vector<std::string>& cells,
                      const char* name) {
    const auto found = std::find(names.begin(), names.end(), name);
    const auto place = static_cast<std::size_t>(found - names.begin());
    const std::string text = place < cells.size() ? cells[place] : "";
    return text == "n/a" ? "" : text;
}

} // namespace

BidsReader::BidsReader(std::unique_ptr<RecordingFile> openFile)
    : file(std::move(openFile)), piece(kPieceSize) {
    const std::string path = file->getPath();
    const std::string base = path.substr(0, path.size() - std::min(path.size(), kMotion.size()));
    readChannels(base + "_channels.tsv");
    const auto isLatency = [](const Column& column) { return column.kind == Column::Kind::Time; };
    if (std::none_of(columns.begin(), columns.end(), isLatency)) readFacts(base + "_motion.json");
    targets.assign(columns.size(), kPassedOver);
    // Some write the names all the same.
    if (nextLine() && getCell(0) != columns.front().name) {
        cursor = 0;
        line = 0;
    }
}

void BidsReader::readChannels(const std::string& path) {
    const std::string text = wholeText(path);
    std::string_view rest = text;
    const std::vector<std::string> names = cellsOf(withoutReturn(takeFront(rest, '\n')));
    if (std::find(names.begin(), names.end(), "name") == names.end())
        throw RecordingException({{printable(path, kLongestRow)},
                                  "no column 'name' in its first line",
                                  "a row of column names, and a row for each channel"});
    while (!rest.empty()) {
        const std::string_view one = withoutReturn(takeFront(rest, '\n'));
        if (one.empty()) continue;
        const std::vector<std::string> cells = cellsOf(one);
        Column& column = columns.emplace_back();
        column.name = cellUnder(names, cells, "name");
        column.unit = cellUnder(names, cells, "units");
        if (cellUnder(names, cells, "type") != "LATENCY") continue;
        column.kind = Column::Kind::Time;
        // Another unit would have to be said in the graph.
        if (!timeColumn && (column.unit.empty() || column.unit == "s")) timeColumn = columns.size() - 1;
    }
    if (columns.empty())
        throw RecordingException({{printable(path, kLongestRow)}, "no channels", "a row for each"});
}

/// Without the file nobody knows the rate, which the graph may well say.
void BidsReader::readFacts(const std::string& path) {
    if (getIsPipe(path)) return;
    std::string text;
    try {
        text = wholeText(path);
    } catch (const RecordingException&) {
        return;
    }
    std::replace(text.begin(), text.end(), '\t', ' '); // between values, where JSON has them and YAML hasn't
    Complaints complaints;
    const std::optional<Value> facts = readValueText(text, printable(path, kLongestRow), true, complaints);
    if (!complaints.isEmpty()) throw RecordingException(complaints.getSorted().front());
    if (!facts || facts->kind != Value::Kind::Map) return;
    for (const Value::Entry& entry : facts->entries) {
        if (entry.key != "SamplingFrequency") continue;
        const auto stated = toNumber(entry.value, complaints);
        if (!stated || !(*stated > 0.0 && std::isfinite(*stated)))
            throw RecordingException({{printable(path, kLongestRow)},
                                      "the SamplingFrequency " + entry.value.describe(),
                                      "rows a second, above 0"});
        rate = stated;
    }
}

void BidsReader::setMissing(const std::vector<std::string>& texts) {
    missing = texts;
    missing.emplace_back("n/a");
}

RecordingReader::Row BidsReader::takeRow(double* values) {
    beginRow();
    faultyColumn = kNone;
    do {
        if (!nextLine()) return Row::End;
    } while (row.empty() && columns.size() > 1);
    std::string_view rest = row;
    bool isMore = true;
    for (cellsFound = 0; isMore; ++cellsFound) {
        isMore = rest.find('\t') != std::string_view::npos;
        const std::string_view cell = takeFront(rest, '\t');
        if (cellsFound < columns.size() && targets[cellsFound] != kPassedOver)
            readCell(cell, cellsFound, values[targets[cellsFound]]);
    }
    hasAllCells = cellsFound == columns.size();
    return hasAllCells && faultyColumn == kNone ? Row::Sound : Row::Faulty;
}

void BidsReader::readCell(std::string_view cell, std::size_t column, double& value) {
    if (std::find(missing.begin(), missing.end(), cell) != missing.end()) {
        value = std::numeric_limits<double>::quiet_NaN();
        noteMissing(targets[column]);
        return;
    }
    if (cell.empty()) return noteEmpty(targets[column]);
    const char* const end = cell.data() + cell.size();
    const auto [stop, error] = textToNumber(cell.data(), end, value);
    if (error == std::errc() && stop == end) return;
    value = std::numeric_limits<double>::quiet_NaN();
    if (faultyColumn == kNone) faultyColumn = column;
}

bool BidsReader::nextLine() {
    const char* stop = nullptr;
    for (std::size_t searched = cursor;;) {
        stop = static_cast<const char*>(std::memchr(piece.data() + searched, '\n', filled - searched));
        if (stop != nullptr) break;
        const std::size_t behind = filled - cursor;
        if (!refill()) break;
        searched = behind; // what is left begins the piece now
    }
    isCut = stop == nullptr;
    if (isCut && cursor == filled) return false;
    const std::size_t end = isCut ? filled : static_cast<std::size_t>(stop - piece.data());
    row = withoutReturn({piece.data() + cursor, end - cursor});
    cursor = isCut ? end : end + 1;
    ++line;
    return true;
}

/// Moves what is left to the front of the piece and reads more behind it; false when there is nothing more.
bool BidsReader::refill() {
    const std::size_t left = filled - cursor;
    std::memmove(piece.data(), piece.data() + cursor, left);
    bytesBefore += cursor;
    cursor = 0;
    filled = left;
    if (left == piece.size()) {
        if (left >= kLongestRow)
            throw RecordingException({{getPath() + ":" + std::to_string(line + 1)},
                                      "a row of more than 64 MiB",
                                      "a table of numbers"});
        piece.resize(2 * piece.size());
    }
    const std::size_t count = file->read(piece.data() + filled, piece.size() - filled);
    filled += count;
    return count > 0;
}

Complaint BidsReader::getFault() const {
    if (hasAllCells) return getFaultOfCell(faultyColumn, "a number, or n/a");
    return {{getPlace()},
            counted(cellsFound, "cell") + " in " + getRowText(),
            counted(columns.size(), "cell") + ", as it has channels"};
}

Complaint BidsReader::getFaultOfCell(std::size_t column, const std::string& expected,
                                     const std::string& suggestion) const {
    Complaint complaint({getPlace()}, quoted(getCell(column)), expected, suggestion);
    complaint.part = "column '" + printable(columns[column].name, kLongestName) + "'";
    return complaint;
}

std::string_view BidsReader::getCell(std::size_t column) const {
    std::string_view rest = row;
    for (std::size_t i = 0; i < column; ++i)
        takeFront(rest, '\t');
    return takeFront(rest, '\t');
}

std::string BidsReader::getPlace() const {
    return getPath() + ":" + std::to_string(line);
}

std::string BidsReader::getRowText() const {
    return quoted(row);
}

} // namespace Quillmere::Host
