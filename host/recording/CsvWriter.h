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

/// Writes a table of numbers: a header row, then cells, each the shortest text that reads back to the same bits.
/// Lines end with LF. What is written passes through one buffer of fixed size.
class QUILLMERE_API CsvWriter {
public:
    /// Requires: `target` outlives the writer.
    explicit CsvWriter(ResultFile& target);

    /// A row of names; a name with a comma, a quote or a blank at its ends is quoted.
    void writeHeader(const std::vector<std::string>& names);

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
        ++rows;
    }

    /// Hands everything over to the file.
    void flush();

    /// Rows ended, the header not counted.
    std::uint64_t getRows() const { return rows; }

private:
    static constexpr std::size_t kBufferSize = std::size_t{1} << 18;
    static constexpr std::size_t kLongestCell = kNumberRoom + 1; ///< And a comma.

    /// Makes room for one cell. The last character stays in the buffer: `endRow` turns it into the line's end.
    void reserve() {
        if (bufferEnd - cursor < static_cast<std::ptrdiff_t>(kLongestCell)) drain();
    }
    void drain();
    void writeText(std::string_view text);

    ResultFile& file;
    std::vector<char> buffer;
    char* cursor;
    char* bufferEnd;
    std::uint64_t rows = 0;
};

} // namespace Quillmere::Host
