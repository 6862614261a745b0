// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingFile.h"
#include "host/recording/RecordingReader.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Numbers in a file, rows by columns, that are read piece by piece.
class QUILLMERE_API NumberTable {
public:
    NumberTable(std::uint64_t rowCount, std::size_t columnCount) : rows(rowCount), width(columnCount) {}
    NumberTable(const NumberTable&) = delete;
    NumberTable& operator=(const NumberTable&) = delete;
    virtual ~NumberTable() = default;

    std::uint64_t getRows() const { return rows; }
    std::size_t getWidth() const { return width; }
    /// Reads `count` rows into `to`, row by row. Requires: `first` is where the last call ended, and at the
    /// first call 0. Raises `RecordingException`. [run]
    virtual void read(std::uint64_t first, std::size_t count, double* to) = 0;

private:
    const std::uint64_t rows;
    const std::size_t width;
};

/// What a file that isn't made of lines has for a recording.
struct ArrayContent {
    std::string path; ///< Of the data in the file, for messages; empty where the file has no more than that.
    std::vector<RecordingReader::Column> columns; ///< Of the data, and one for `times`.
    std::unique_ptr<NumberTable> data;
    std::unique_ptr<NumberTable> times; ///< One column, as long as `data`, or null.
    std::optional<double> rate;         ///< Rows a second, where the file says it.
};

/// Reads the rows of a table of numbers. Memory holds a piece of it, 512 KiB or a row.
class QUILLMERE_API ArrayReader final : public RecordingReader {
public:
    ArrayReader(std::unique_ptr<RecordingFile> openFile, ArrayContent what);
    ~ArrayReader() override;

    const std::string& getPath() const override { return file->getName(); }
    std::vector<std::string> getForm() const override;
    Row takeRow(double* values) override;

    std::uint64_t getBytesRead() const override;
    std::uint64_t getSize() const override { return file->getSize(); }
    bool getIsChanged() const override { return file->getHasChanged(); }

    Complaint getFault() const override { return {{getPlace()}, getRowText(), "a row of numbers"}; }
    Complaint getFaultOfCell(std::size_t column, const std::string& expected,
                             const std::string& suggestion = {}) const override;
    std::string getPlace() const override;
    std::string getRowText() const override;

private:
    void refill();
    double getValue(std::size_t column) const;

    std::unique_ptr<RecordingFile> file;
    ArrayContent content;
    std::size_t rowsAtOnce;
    std::vector<double> data;  ///< The rows from `first` on,
    std::vector<double> times; ///< and their times.
    std::uint64_t first = 0;   ///< Counted from 0, as
    std::uint64_t filled = 0;  ///< the row behind the last in memory
    std::uint64_t next = 0;    ///< and the row that `takeRow` gives.
};

} // namespace Quillmere::Host
