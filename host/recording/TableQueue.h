// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/MatrixXd.h"
#include "host/recording/TableWriter.h"
#include "host/recording/WorkThread.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

namespace Quillmere::Host {

/// Rows of one table on their way to a thread that writes them, in the order in which they came: the table is
/// the same to the byte as without it. Some thousand numbers go over at a time. Who is ahead by a few such
/// batches prints numbers himself, which is most of the work, and waits where he is ahead all the same.
class QUILLMERE_API TableQueue {
public:
    /// Requires: nobody else writes to the table until the queue is gone.
    TableQueue(TableWriter& table, std::shared_ptr<WorkThread> thread);
    /// Waits for what has gone over.
    ~TableQueue();
    TableQueue(const TableQueue&) = delete;
    TableQueue& operator=(const TableQueue&) = delete;

    /// As `TableWriter::writeRow`; raises what that raised of this row or one before, of a row before as
    /// `LateRowException`.
    void writeRow(double time, const std::vector<const Core::MatrixXd*>& samples);
    /// Waits until every row is written. Raises as `writeRow`.
    void wait();
    /// Rows that came.
    std::uint64_t getRows() const { return rows; }

private:
    static constexpr std::ptrdiff_t kNone = -1;

    struct Batch {
        std::vector<double> numbers;       ///< For each row its time and its elements.
        std::vector<std::ptrdiff_t> sizes; ///< For each row and each group its elements, or `kNone`.
        std::vector<char> text;            ///< Of the rows, if they were printed,
        std::vector<std::size_t> ends;     ///< and where each of them ends in it; else empty.
        std::vector<std::size_t> elements; ///< Of each group, in each of these rows.
    };

    void handOver();
    bool getIsAhead();
    void print(Batch& batch) const;
    void write(Batch& batch);
    void writeRows(const Batch& batch);
    void writePrinted(const Batch& batch);
    std::exception_ptr getRaised() const noexcept;
    void requireWritten() const;

    TableWriter& table;
    const std::shared_ptr<WorkThread> thread;
    std::array<Batch, 4> batches;
    std::size_t filling = 0; ///< The batch that takes rows.
    std::uint64_t rows = 0;
    std::vector<TableWriter::Cells> cells; ///< Of the row that is written.
    double rowTime = 0.0;                  ///< Seconds; the same row's.
    std::mutex state;
    std::condition_variable changed;
    std::size_t underWay = 0; ///< Batches that have gone over.
    std::exception_ptr failure;
};

} // namespace Quillmere::Host
