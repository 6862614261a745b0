// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Reads a recording of one form, row by row: the border between `RecordingSource` and what files look like.
///
/// Opening is the constructor's, which raises `RecordingException`; then `getColumns` is whole. The caller
/// says once which columns it wants (`select`) and what stands for a missing value (`setMissing`), and takes
/// rows until `Row::End`. A row is one virtual call, whatever its width, and allocates nothing; memory
/// doesn't grow with the file. What is asked about the row that was read last are plain members, which the
/// reader fills in `takeRow`.
///
/// A new form is a class that derives from this one and a row in `RecordingForms.cpp`.
class QUILLMERE_API RecordingReader {
public:
    enum class Row { Sound, Faulty, End };

    struct Column {
        enum class Kind { Number, Time, Other };

        std::string name; ///< As messages and graphs have it: the header's whole text, with its unit.
        std::string unit; ///< As the file states it, `m/s^2`; empty where it doesn't.
        /// As the file states it, or as far as its begin looks: `Other` holds no numbers.
        Kind kind = Kind::Number;
    };

    RecordingReader() = default;
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;
    virtual ~RecordingReader();

    /// The file as messages name it. [any]
    virtual const std::string& getPath() const = 0;
    const std::vector<Column>& getColumns() const { return columns; }
    std::vector<std::string> getColumnNames() const;
    /// Rows a second, as the file states it; nothing where it doesn't. It counts where there are no times.
    std::optional<double> getRate() const { return rate; }
    /// The column of times, as the caller named it, as the file says or as its begin looks; of a date and a
    /// time the date. Nothing where there is none.
    std::optional<std::size_t> getTimeColumn() const;
    /// Whether that column's cells have to be made seconds of, which `getTime` gives; else they are numbers
    /// in seconds, and whoever wants them selects the column.
    bool getHasOwnTimes() const { return hasOwnTimes; }
    /// What the file was taken for and why, for people: each a part of a sentence, the form first. [any]
    virtual std::vector<std::string> getForm() const { return {}; }
    /// What was guessed or mended and changes numbers, for the user: each a part of a sentence. [run, or
    /// behind it]
    virtual std::vector<std::string> getNotes() const { return {}; }

    /// Chooses what `takeRow` gives: its value i is column `chosen[i]`. The other columns are passed over
    /// unread, so they may hold anything. Requires: indices into `getColumns()`, each at most once. [setup]
    void select(const std::vector<std::size_t>& chosen);
    /// Takes cells of one of these texts for missing values: they become not-a-number, and are counted. An
    /// empty text stands for empty cells. A form whose cells are no texts has none of them. [setup]
    virtual void setMissing(const std::vector<std::string>&) {}
    /// From then on waiting for a pipe ends with `InterruptedException` when a stop is requested. [setup]
    virtual void setStop(const std::stop_token&) {}

    /// Reads the next row into `values`, one number for each selected column. An empty cell leaves its value
    /// as it was and counts in `getIsEmpty`. What is wrong with the row's own data is kept for `getFault`
    /// instead of being raised: cells that aren't numbers become not-a-number, and in a row with too few or
    /// too many cells no value counts. Raises for what ends the reading, as a file that can't be read on.
    /// [run]
    virtual Row takeRow(double* values) = 0;

    /// Whether `takeRow` would give a row or the end without waiting for whoever writes a pipe. Reads what
    /// has come. [run]
    virtual bool getIsRowReady() { return true; }
    /// Whether rows may have to be waited for: no file on a disk, but a pipe, a terminal, a device. [any]
    virtual bool getIsPiped() const { return false; }
    /// Whether nothing is left, as far as has been looked. Asked of pipes only. [run]
    virtual bool getIsAtEnd() const { return false; }
    /// What to wait on for more of a pipe; -1 where there is nothing to wait for. [any]
    virtual int getDescriptor() const { return -1; }

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
    /// Whether the last row has as many cells as there are columns, so that one knows which is which.
    bool getHasAllCells() const { return hasAllCells; }
    /// The last row's time in seconds; not-a-number where its cell holds none. Requires: `getHasOwnTimes`.
    double getTime() const { return time; }
    /// The line of the last row, 1 being the file's first; 0 where a file has no lines.
    std::uint64_t getLine() const { return line; }

    /// How far the reader is in the file and how long that is, for a progress display. The size is 0 for a
    /// pipe. [run]
    virtual std::uint64_t getBytesRead() const = 0;
    virtual std::uint64_t getSize() const = 0;
    /// Whether the file was written to while it was read. Requires: its end has been reached.
    virtual bool getIsChanged() const { return false; }

    /// What times count from: nanoseconds since 1970, or since midnight where times are those of a day;
    /// nothing where they count from no date. Known as soon as a row has been read. [run]
    virtual std::optional<std::int64_t> getOrigin() const { return std::nullopt; }

    /// What was wrong with the last row: `PLACE: column 'NAME': found "TEXT"; expected ...`. Requires: it was
    /// faulty.
    virtual Complaint getFault() const = 0;
    /// The same about a cell of the last row that is wrong for a reason of the caller's.
    virtual Complaint getFaultOfCell(std::size_t column, const std::string& expected,
                                     const std::string& suggestion = {}) const = 0;
    /// Where the last row stands, `FILE:LINE` or what else finds it there, and the row itself in quotes.
    virtual std::string getPlace() const = 0;
    virtual std::string getRowText() const = 0;

protected:
    static constexpr std::size_t kPassedOver = std::numeric_limits<std::size_t>::max();

    /// What every row begins with: no cell of it is empty or missing, and all are there.
    void beginRow();
    void noteEmpty(std::size_t index);
    void noteMissing(std::size_t index);

    std::vector<Column> columns;           ///< Set by the constructor.
    std::optional<double> rate;            ///< The same,
    std::optional<std::size_t> timeColumn; ///< as these; without it the first of kind Time in seconds.
    bool hasOwnTimes = false;
    std::vector<std::size_t> targets; ///< For each column the place of its value, or `kPassedOver`.
    std::uint64_t line = 0;
    double time = 0.0; ///< Seconds.
    bool isCut = false;
    bool hasAllCells = true;

private:
    std::vector<char> empty;     ///< For each value, whether its cell was empty,
    std::vector<char> isMissing; ///< and whether it had a text for missing values.
    std::size_t emptyCells = 0;
    std::size_t missingCells = 0;
};

} // namespace Quillmere::Host
