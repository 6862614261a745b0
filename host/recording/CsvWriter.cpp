// SPDX-License-Identifier: MIT
#include "host/recording/CsvWriter.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
} // namespace

CsvWriter::CsvWriter(ResultFile& target)
    : file(target), buffer(kBufferSize), cursor(buffer.data()), bufferEnd(buffer.data() + buffer.size()) {}

void CsvWriter::writeHeader(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        writeText(quoted(name));
        writeText(",");
    }
    cursor[-1] = '\n';
    hasHeader = true;
}

std::string CsvWriter::quoted(const std::string& name) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    const bool isPlain = !name.empty() && name.find_first_of(",\"\r\n") == std::string::npos &&
                         name.front() != '#' && !name.starts_with(kByteOrderMark) && !isBlank(name.front()) &&
                         !isBlank(name.back());
    if (isPlain) return name;
    std::string text = "\"";
    for (const char c : name)
        text.append(c == '"' ? 2 : 1, c);
    return text + "\"";
}

void CsvWriter::writeText(std::string_view text) {
    for (const char c : text) {
        reserve();
        *cursor++ = c;
    }
}

/// Drains in front of the same cells as `writeNumber`, so that whatever goes wrong does so in the same row.
void CsvWriter::writeRow(std::string_view row) {
    for (std::size_t cell = 0; (cell = findCellWithoutRoom(row)) != std::string_view::npos;) {
        cursor = std::copy_n(row.data(), cell, cursor);
        row.remove_prefix(cell);
        drain();
    }
    cursor = std::copy_n(row.data(), row.size(), cursor);
    if (!hasFailed) ++rows;
}

/// Where the first cell begins that `reserve` makes room for.
std::size_t CsvWriter::findCellWithoutRoom(std::string_view row) const {
    const auto room = static_cast<std::size_t>(bufferEnd - cursor);
    if (room < kLongestCell) return 0;
    const std::size_t comma = row.find(',', room - kLongestCell);
    return comma == std::string_view::npos ? comma : comma + 1;
}

void CsvWriter::drain() {
    const std::ptrdiff_t count = cursor - buffer.data() - 1;
    if (count <= 0) return;
    handOver(static_cast<std::size_t>(count));
    buffer.front() = cursor[-1];
    cursor = buffer.data() + 1;
}

void CsvWriter::flush() {
    handOver(static_cast<std::size_t>(cursor - buffer.data()));
    cursor = buffer.data();
}

/// What comes behind something that is missing would be wrong, so after a failure nothing is handed over.
void CsvWriter::handOver(std::size_t count) {
    if (hasFailed) return;
    const std::uint64_t before = file.getWritten();
    try {
        file.write(buffer.data(), count);
        noteWholeRows(before, count);
    } catch (...) {
        hasFailed = true;
        const auto taken = static_cast<std::size_t>(file.getWritten() - before);
        noteWholeRows(before, taken);
        lines += static_cast<std::uint64_t>(std::count(buffer.data(), buffer.data() + taken, '\n'));
        rows = lines - std::min<std::uint64_t>(lines, hasHeader ? 1 : 0);
        file.cutTo(wholeRows); // a full disk has cut a row in the middle
        throw;
    }
    // All that have ended, but for one whose end `drain` keeps: nobody has to count what is in the buffer.
    const bool isOneKept = buffer.data() + count != cursor && cursor[-1] == '\n';
    lines = rows + (hasHeader ? 1 : 0) - (isOneKept ? 1 : 0);
}

/// Keeps where the last whole row ends in the file, when `count` bytes of the buffer are in it behind
/// `before` others.
void CsvWriter::noteWholeRows(std::uint64_t before, std::size_t count) {
    const std::string_view taken(buffer.data(), count);
    const std::size_t end = taken.rfind('\n');
    if (end == std::string_view::npos) return;
    wholeRows = before + end + 1;
}

} // namespace Quillmere::Host
