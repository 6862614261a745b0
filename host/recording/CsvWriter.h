// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/NumberText.h"
#include "host/recording/ResultFile.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Writes a table of numbers: a header row, then cells, each the shortest text that reads back to the same
/// bits. Lines end with LF. What is written passes through one buffer of fixed size.
class QUILLMERE_API CsvWriter {
public:
    /// Requires: `target` outlives the writer.
    explicit CsvWriter(ResultFile& target);

    /// A row of names; a name with a comma, a quote or a blank at its ends is quoted. Requires: it is the
    /// first row, and no name has a line end.
    void writeHeader(const std::vector<std::string>& names);

    /// A name as it stands in a header.
    static std::string quoted(const std::string& name);

    /// A cell with a number in it.
    void writeNumber(double value) {
        reserve();
        cursor = numberToText(cursor, value);
        *cursor++ = ',';
    }
    /// A cell with nothing in it.
    void writeEmpty() {
        reserve();
        *cursor++ = ',';
    }
    /// Ends the row. Requires: at least one cell was written since the last row ended.
    void endRow() {
        cursor[-1] = '\n';
        if (!hasFailed) ++rows; // behind a failure a row gets into the file no more
    }

    /// Whether anything waits in the buffer.
    bool getHoldsRows() const { return cursor != buffer.data(); }
    /// A row that was printed elsewhere, as those operations do it, with its end.
    void writeRow(std::string_view row);
    /// Hands everything over to the file.
    void flush();

    /// Rows ended, the header not counted; when the file couldn't take them all, those that are in it.
    std::uint64_t getRows() const { return rows; }
    /// Whether the file couldn't take everything. It ends with a whole row then, and takes no more.
    bool getHasFailed() const { return hasFailed; }

private:
    static constexpr std::size_t kBufferSize = std::size_t{1} << 18;
    static constexpr std::size_t kLongestCell = kNumberRoom + 1; ///< And a comma.

    /// Makes room for one cell. The last character stays in the buffer: `endRow` turns it into the line's
    /// end.
    void reserve() {
        if (bufferEnd - cursor < static_cast<std::ptrdiff_t>(kLongestCell)) drain();
    }
    std::size_t findCellWithoutRoom(std::string_view row) const;
    void drain();
    void handOver(std::size_t count);
    void noteWholeRows(std::uint64_t before, std::size_t count);
    void writeText(std::string_view text);

    ResultFile& file;
    std::vector<char> buffer;
    char* cursor;
    char* bufferEnd;
    std::uint64_t rows = 0;
    std::uint64_t lines = 0;     ///< Whole ones in the file, the header among them.
    std::uint64_t wholeRows = 0; ///< Bytes of the file up to the end of the last of them.
    bool hasHeader = false;
    bool hasFailed = false;
};

} // namespace Quillmere::Host
