// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/LineReader.h"
#include "host/recording/ReadingWishes.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/RowClock.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Reads a table of text row by row, whose form `openTable` finds out: in the plain one cells are separated
/// by commas below a row of column names, in front of which lines that begin with `#` are comments.
///
/// Names and cells may be quoted, blanks around them don't count, lines end with LF or CRLF, a byte order
/// mark at the start is passed over, and so are blank lines (but not in a file of one column, where a blank
/// line is a row with an empty cell). Numbers are what `std::from_chars` takes, and a leading `+`; the sign
/// and the bits of what `CsvWriter` wrote come back.
///
/// Memory holds one piece of the file and no more, however long the recording is; only a row longer than that
/// piece makes it larger, and a second of rows whose times are whole seconds. A row allocates nothing where
/// its time is a number. Every complaint is a `RecordingException` with file, line, column name and the text
/// found.
class QUILLMERE_API CsvReader final : public RecordingReader {
public:
    /// Opens the file, or standard input for `-`, and reads the header; of a pipe it waits for one. Raises
    /// when it can't be opened, has no header or is none of our tables.
    explicit CsvReader(const std::string& path, const ReadingWishes& wishes = {});
    /// The same of a file that is open, of which nothing has been read.
    explicit CsvReader(std::unique_ptr<RecordingFile> file, const ReadingWishes& wishes = {});

    const std::string& getPath() const override { return lines.getFile().getName(); }
    std::vector<std::string> getForm() const override { return form; }
    std::vector<std::string> getNotes() const override;
    std::optional<std::int64_t> getOrigin() const override;
    void setMissing(const std::vector<std::string>& texts) override;
    void setStop(const std::stop_token& token) override { lines.getFile().setStop(token); }

    /// As `takeRow`, but raises what is wrong with a row; false at the end of the file.
    bool readRow(double* values);
    Row takeRow(double* values) override;

    bool getIsRowReady() override;
    bool getIsPiped() const override { return lines.getFile().getIsPiped(); }
    bool getIsAtEnd() const override { return lines.getIsAllAhead() && lines.getAhead().empty(); }
    int getDescriptor() const override { return lines.getFile().getDescriptor(); }

    std::uint64_t getBytesRead() const override {
        const RecordingFile& file = lines.getFile();
        return file.getIsPacked() ? file.getBytesTaken() : lines.getBytesRead();
    }
    std::uint64_t getSize() const override { return lines.getFile().getSize(); }
    bool getIsChanged() const override { return lines.getFile().getIsChanged(); }

    Complaint getFault() const override;
    Complaint getFaultOfCell(std::size_t column, const std::string& expected,
                             const std::string& suggestion = {}) const override;
    std::string getPlace() const override;
    std::string getRowText() const override;

private:
    enum class Fault { None, NoNumber, TooLarge, CellsMissing, CellsTooMany };

    /// Rows of a whole second, and what ended them.
    struct Second {
        std::uint64_t rows = 0;
        bool isLast = false;
    };

    const char* readOddCell(const char* begin, std::size_t column, double& value);
    double parse(std::string_view text, std::size_t column);
    void noteFault(Fault fault, std::size_t column);
    std::string textOfCell(std::size_t column) const;
    Complaint faultAt(std::size_t column, const std::string& found, const std::string& expected) const;
    Complaint getFaultOfRow(const std::string& found) const;
    bool nextRow();
    std::string_view timeTextOf(std::string_view text);
    void takeTime();
    void beginSecond();
    Second countSecond(std::size_t& offset);
    bool getIsSecondAhead();
    [[noreturn]] void refuseSpreading() const;

    LineReader lines;
    char separator = ',';
    char decimal = '.';
    bool endsWithSeparator = false;
    std::vector<std::string> form;
    std::vector<std::string> notes;

    std::unique_ptr<RowClock> clock; ///< Null where times are numbers in seconds.
    std::string timeText;            ///< Of a date and a time, put together.
    std::uint64_t secondLeft = 0;    ///< Rows to come of the second that is spread.
    std::uint64_t rowsOfSecond = 0;  ///< In the last whole one; 0 before the first.

    std::vector<std::string> missing;
    bool isEveryCellOdd = false; ///< A number may stand for nothing, or has a decimal comma.

    Fault fault = Fault::None; ///< Of the last row the first.
    std::size_t faultyColumn = 0;
};

} // namespace Quillmere::Host
