// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Reads a recording of numbers row by row: comma-separated, a header row of column names, a number a cell.
///
/// Before the header, lines that begin with `#` are comments. Names and cells may be quoted, blanks around them don't
/// count, lines end with LF or CRLF, a byte order mark at the start is passed over, and so are blank lines (but not in
/// a file of one column, where a blank line is a row with an empty cell). Numbers are what `std::from_chars` takes,
/// and a leading `+`; the sign and the bits of what `CsvWriter` wrote come back.
///
/// Memory holds one piece of the file and no more, however long the recording is; only a row longer than that piece
/// makes it larger. Every complaint is a `RecordingException` with file, line, column name and the text found.
class QUILLMERE_API CsvReader {
public:
    /// Opens the file, or standard input for `-`, and reads the header; of a pipe it waits for one. Raises when it can't be
    /// opened or has no header.
    explicit CsvReader(std::string path);
    ~CsvReader();
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;

    const std::string& getPath() const { return path; }
    const std::vector<std::string>& getColumns() const { return columns; }

    /// Chooses what `readRow` gives: its value i is column `chosen[i]`. The other columns are passed over unread, so
    /// they may hold any text. Requires: indices into `getColumns()`, each at most once.
    void select(const std::vector<std::size_t>& chosen);

    /// Reads the next row into `values`, one number for each selected column; false at the end of the file. An empty
    /// cell leaves its value as it was and counts in `getIsEmpty`. Raises for a cell that isn't a number and for a row
    /// with more or fewer cells than the header.
    bool readRow(double* values);

    /// Whether `readRow` would give a row or the end of the file without waiting for whoever writes a pipe. Reads what
    /// has come.
    bool getIsRowReady();
    /// Whether rows may have to be waited for: no file on a disk, but a pipe, a terminal, a device.
    bool getIsPiped() const { return isPiped; }
    /// Whether nothing is left, as far as has been looked.
    bool getIsAtEnd() const { return atEnd && cursor == filled; }
    /// What to wait on for more of a pipe.
    int getDescriptor() const { return file; }

    /// Whether the cell behind value `index` of the last row was empty.
    bool getIsEmpty(std::size_t index) const { return emptyCells > 0 && empty[index] != 0; }
    bool getHasEmptyCells() const { return emptyCells > 0; }

    /// The line of the last row read, 1 being the file's first.
    std::uint64_t getLine() const { return line; }

    /// How far the reader is in the file and how long that is, for a progress display. The size is 0 for a pipe.
    std::uint64_t getBytesRead() const {
        return bytesBefore + static_cast<std::uint64_t>(cursor - piece.data());
    }
    std::uint64_t getSize() const { return size; }

    /// Raises a complaint about the last row: `FILE:LINE: column 'NAME': found "TEXT"; expected ...`.
    [[noreturn]] void refuse(std::string_view columnName, std::string_view found,
                             const std::string& expected) const;

private:
    void readHeader();
    bool nextLine();
    bool refill();
    double parseOdd(const char* begin, const char* end, std::size_t column);
    void noteEmpty(std::size_t value);
    [[noreturn]] void refuseRow(std::size_t cells) const;

    std::string path; ///< As messages name it.
    int file;
    bool isPiped = true;
    std::uint64_t size = 0;
    std::uint64_t bytesBefore = 0; ///< Bytes of the file in front of `piece`.

    std::vector<char> piece;         ///< What is in memory of the file, and one byte more.
    const char* cursor = nullptr;    ///< Where the next line begins.
    const char* filled = nullptr;    ///< The end of what has been read.
    bool atEnd = false;              ///< The file has no more bytes than those in `piece`.
    const char* lineBegin = nullptr; ///< The line that `nextLine` found, without its end.
    const char* lineEnd = nullptr;
    std::uint64_t line = 0;

    std::vector<std::string> columns;
    std::vector<std::size_t> targets; ///< For each column the place of its value, or `kPassedOver`.
    std::vector<char> empty;          ///< For each value, whether its cell was empty.
    std::size_t emptyCells = 0;
};

} // namespace Quillmere::Host
