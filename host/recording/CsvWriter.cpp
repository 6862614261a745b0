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
