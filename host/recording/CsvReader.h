// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
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
class QUILLMERE_API CsvReader final : public RecordingReader {
public:
    /// Opens the file, or standard input for `-`, and reads the header; of a pipe it waits for one. Raises
    /// when it can't be opened, has no header or is none of our tables.
    explicit CsvReader(const std::string& path);
    /// The same of a file that is open, of which nothing has been read.
    explicit CsvReader(std::unique_ptr<RecordingFile> openFile);

    const std::string& getPath() const override { return file->getName(); }
    void setMissing(std::vector<std::string> texts) override;
    void setStop(const std::stop_token& token) override { file->setStop(token); }

    /// As `takeRow`, but raises what is wrong with a row; false at the end of the file.
    bool readRow(double* values);
    Row takeRow(double* values) override;

    bool getIsRowReady() override;
    bool getIsPiped() const override { return file->getIsPiped(); }
    bool getIsAtEnd() const override { return atEnd && cursor == filled; }
    int getDescriptor() const override { return file->getDescriptor(); }

    std::uint64_t getBytesRead() const override {
        return file->getIsPacked() ? file->getBytesTaken()
                                   : bytesBefore + static_cast<std::uint64_t>(cursor - piece.data());
    }
    std::uint64_t getSize() const override { return file->getSize(); }
    bool getIsChanged() const override { return file->getIsChanged(); }

    std::string getFault() const override;
    std::string getFaultOfCell(std::size_t column, const std::string& expected,
                               const std::string& suggestion = {}) const override;
    std::string getPlace() const override;
    std::string getRowText() const override;

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

    std::unique_ptr<RecordingFile> file;
    std::uint64_t bytesBefore = 0; ///< Bytes of the file in front of `piece`.

    std::vector<char> piece;         ///< What is in memory of the file, and one byte more.
    const char* cursor = nullptr;    ///< Where the next line begins.
    const char* filled = nullptr;    ///< The end of what has been read.
    bool atEnd = false;              ///< The file has no more bytes than those in `piece`.
    const char* lineBegin = nullptr; ///< The line that `nextLine` found, without its end.
    const char* lineEnd = nullptr;

    std::vector<std::string> missing;
    bool hasMissingNumbers = false; ///< Some of those texts are numbers.

    Fault fault = Fault::None; ///< Of the last row the first.
    std::size_t faultyColumn = 0;
};

} // namespace Quillmere::Host
