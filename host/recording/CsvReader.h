// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingFile.h"

#include <cstddef>
#include <cstdint>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Reads a recording of numbers row by row: comma-separated, a header row of column names, a number a cell.
///
/// Before the header, lines that begin with `#` are comments. Names and cells may be quoted, blanks around
/// them don't count, lines end with LF or CRLF, a byte order mark at the start is passed over, and so are
/// blank lines (but not in a file of one column, where a blank line is a row with an empty cell). Numbers are
/// what `std::from_chars` takes, and a leading `+`; the sign and the bits of what `CsvWriter` wrote come
/// back.
///
/// Memory holds one piece of the file and no more, however long the recording is; only a row longer than that
/// piece makes it larger. A row allocates nothing. Every complaint is a `RecordingException` with file, line,
/// column name and the text found.
class QUILLMERE_API CsvReader {
public:
    enum class Row { Sound, Faulty, End };

    /// Opens the file, or standard input for `-`, and reads the header; of a pipe it waits for one. Raises
    /// when it can't be opened, has no header or is none of our tables.
    explicit CsvReader(const std::string& path);
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;

    const std::string& getPath() const { return file.getName(); }
    const std::vector<std::string>& getColumns() const { return columns; }

    /// Chooses what `readRow` gives: its value i is column `chosen[i]`. The other columns are passed over
    /// unread, so they may hold any text. Requires: indices into `getColumns()`, each at most once.
    void select(const std::vector<std::size_t>& chosen);
    /// Takes cells of one of these texts for missing values: they become not-a-number, and are counted. An
    /// empty text stands for empty cells.
    void setMissing(std::vector<std::string> texts);
    /// From then on waiting for a pipe ends with `InterruptedException` when `flag` is true. [setup]
    void setStop(const std::stop_token& token) { file.setStop(token); }

    /// Reads the next row into `values`, one number for each selected column; false at the end of the file.
    /// An empty cell leaves its value as it was and counts in `getIsEmpty`. Raises for a cell that isn't a
    /// number and for a row with more or fewer cells than the header.
    bool readRow(double* values);
    /// The same, but what is wrong with the row's own text is kept for `getFault` instead of being raised.
    /// Cells that aren't numbers become not-a-number; in a row with too few or too many cells no value
    /// counts.
    Row takeRow(double* values);

    /// Whether `readRow` would give a row or the end of the file without waiting for whoever writes a pipe.
    /// Reads what has come.
    bool getIsRowReady();
    /// Whether rows may have to be waited for: no file on a disk, but a pipe, a terminal, a device.
    bool getIsPiped() const { return file.getIsPiped(); }
    /// Whether nothing is left, as far as has been looked.
    bool getIsAtEnd() const { return atEnd && cursor == filled; }
    /// What to wait on for more of a pipe.
    int getDescriptor() const { return file.getDescriptor(); }

    /// Whether the cell behind value `index` of the last row was empty.
    bool getIsEmpty(std::size_t index) const { return emptyCells > 0 && empty[index] != 0; }
    bool getHasEmptyCells() const { return emptyCells > 0; }
    /// How many cells of the last row had a text for missing values.
    std::size_t getMissingCells() const { return missingCells; }
    /// Whether the cell behind value `index` of the last row was one of them.
    bool getIsMissing(std::size_t index) const { return missingCells > 0 && isMissing[index] != 0; }
    /// Whether the last row ended with the file and not with a line end, so that there may have been more of
    /// it.
    bool getIsCut() const { return isCut; }

    /// The line of the last row read, 1 being the file's first.
    std::uint64_t getLine() const { return line; }

    /// How far the reader is in the file and how long that is, for a progress display. The size is 0 for a
    /// pipe.
    std::uint64_t getBytesRead() const {
        return bytesBefore + static_cast<std::uint64_t>(cursor - piece.data());
    }
    std::uint64_t getSize() const { return file.getSize(); }
    /// Whether the file was written to while it was read. Requires: its end has been reached.
    bool getIsChanged() const { return file.getIsChanged(); }

    /// What was wrong with the last row: `FILE:LINE: column 'NAME': found "TEXT"; expected ...`. Requires: it
    /// was faulty.
    std::string getFault() const;
    /// Whether the last row has as many cells as the header, so that one knows which is which.
    bool getHasAllCells() const { return hasAllCells; }
    /// The same about a cell of the last row that is wrong for a reason of the caller's.
    std::string getFaultOfCell(std::size_t column, const std::string& expected,
                               const std::string& suggestion = {}) const;
    /// Where the last row stands, `FILE:LINE`, and the row itself in quotes.
    std::string getPlace() const;
    std::string getRowText() const;

private:
    enum class Fault { None, NoNumber, TooLarge, CellsMissing, CellsTooMany };

    void readHeader();
    void refuseDialect() const;
    bool nextLine();
    bool refill();
    const char* readOddCell(const char* begin, std::size_t column, double& value);
    double parse(std::string_view text, std::size_t column);
    void noteFault(Fault fault, std::size_t column);
    std::string textOfCell(std::size_t column) const;
    std::string placeOf(std::size_t column) const;
    std::string getFaultOfRow(const std::string& found) const;

    RecordingFile file;
    std::uint64_t bytesBefore = 0; ///< Bytes of the file in front of `piece`.

    std::vector<char> piece;         ///< What is in memory of the file, and one byte more.
    const char* cursor = nullptr;    ///< Where the next line begins.
    const char* filled = nullptr;    ///< The end of what has been read.
    bool atEnd = false;              ///< The file has no more bytes than those in `piece`.
    const char* lineBegin = nullptr; ///< The line that `nextLine` found, without its end.
    const char* lineEnd = nullptr;
    bool isCut = false;
    std::uint64_t line = 0;

    std::vector<std::string> columns;
    std::vector<std::string> missing;
    bool hasMissingNumbers = false;   ///< Some of those texts are numbers.
    std::vector<std::size_t> targets; ///< For each column the place of its value, or `kPassedOver`.
    std::vector<char> empty;          ///< For each value, whether its cell was empty,
    std::vector<char> isMissing;      ///< and whether it had a text for missing values.
    std::size_t emptyCells = 0;
    std::size_t missingCells = 0;

    Fault fault = Fault::None; ///< Of the last row the first.
    std::size_t faultyColumn = 0;
    bool hasAllCells = true;
};

} // namespace Quillmere::Host
