// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"
#include "host/recording/CsvWriter.h"
#include "host/recording/ResultFile.h"

#include <cstdint>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Writes samples of several groups as one CSV table: a time column, then for each group one column an
/// element, named `group[0]`, `group[1]` and so on, or by names of its own, with the unit behind it where the
/// group has one: `group[0] [g]`. A group that has no sample in a row leaves its cells empty.
///
/// How wide a group is, is known when its first sample comes, which may be long after the first row. Rows are
/// written at once all the same, in the widths known so far; when widths have grown in between, closing the
/// table copies it once and fills in the cells that the early rows lack. Memory never holds more than a row.
///
/// A pipe can't be copied: there, a group without names that has no sample yet when the first row is written
/// gets one column, and a sample that is wider than its columns is refused.
class QUILLMERE_API TableWriter {
public:
    struct Group {
        std::string name;
        std::vector<std::string> columns; ///< Names of its own, or empty.
        std::string unit = {};            ///< Behind the name of each column, or empty.

        /// The name of the column of an element: `accel[0]`, or its own, and the unit behind it.
        std::string getColumn(std::size_t element) const;
    };

    /// What a group has in a row: elements one after the other, or nothing.
    struct Cells {
        const double* values = nullptr;
        std::size_t size = 0;
        bool isThere = false; ///< A sample may be empty.
    };

    /// Opens the result. Raises `RecordingException` when it can't be written. `stop`: see `ResultFile`.
    /// Requires: no name has a line end.
    TableWriter(const std::string& path, std::string timeName, std::vector<Group> groups,
                ResultOptions options = {}, const std::stop_token& stop = {});

    /// Writes a row: `samples[i]` belongs to group i and may be null. Raises when a group with names of its
    /// own gets a sample with another number of elements, and when the file can't be written.
    void writeRow(double time, const std::vector<const Core::MatrixXd*>& samples);
    /// The same of samples that aren't matrices any more.
    void writeCells(double time, const std::vector<Cells>& cells);

    /// Whether rows of samples of so many elements, one for each group, stand in the table as they are.
    bool getTakes(const std::vector<std::size_t>& elements) const {
        return hasBegun && widths.back().columns == elements;
    }
    /// The same as `writeCells` of such a row, whose text is known. Requires: it is taken.
    void writePrinted(std::string_view row) { writer.writeRow(row); }

    std::size_t getGroupCount() const { return groups.size(); }

    /// Whether rows wait for the next `flush`.
    bool getHoldsRows() const { return writer.getHoldsRows(); }
    /// Hands the rows so far over to the file, so that who reads along sees them.
    void flush() { writer.flush(); }

    /// Waits no more for who reads a pipe; see `ResultFile`. [any]
    void giveUp() { file.giveUp(); }

    /// Ends the table and brings it to the disk, still under its partial name. A second call does nothing.
    void finish();
    /// Gives a table that is whole its final name.
    void complete();
    /// Ends a table that isn't whole: it stays under its partial name. After a failed write it ends with the
    /// last whole row that the file could take.
    void abandon();
    /// Closes a table that nobody wants: nothing stays.
    void discard();

    const std::string& getPath() const { return file.getPath(); }
    const std::string& getPartialPath() const { return file.getPartialPath(); }
    /// Rows written; after a failed write, those in the file.
    std::uint64_t getRows() const { return writer.getRows(); }
    bool getIsComplete() const { return isComplete; }

private:
    /// From one row on, how many columns each group has.
    struct Widths {
        std::uint64_t firstRow;
        std::vector<std::size_t> columns;
    };

    bool getFits(const std::vector<Cells>& cells) const;
    void grow(const std::vector<Cells>& cells);
    void requireNamedWidth(std::size_t group, std::size_t elements) const;
    void requireKnownWidth(std::size_t group, std::size_t elements) const;
    std::vector<std::string> header(const std::vector<std::size_t>& columns) const;
    void begin();
    void end();
    void widenEarlyRows();
    void copyWidened(ResultFile& to) const;

    ResultFile file;
    CsvWriter writer;
    std::string timeName;
    std::vector<Group> groups;
    std::vector<Cells> cellsOfRow; ///< That is written, one for each group.
    /// The last entry is in force; the first is the header's as long as it is the only one.
    std::vector<Widths> widths;
    bool hasBegun = false;
    bool isEnded = false;
    bool isWidened = false;
    bool isComplete = false;
};

} // namespace Quillmere::Host
