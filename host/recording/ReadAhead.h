// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/WorkThread.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A recording whose rows another thread reads ahead, some thousand numbers at a time.
///
/// Who takes rows faster than the thread comes to read them reads them himself, so that neither waits while
/// there is something to do.
///
/// Of rows in which everything is as it should be, all that is asked is a few numbers, which go over with
/// them. In front of whatever is to be said of another one, as one with an empty or a faulty cell, the thread
/// rests, so that the reader below stands at the very row. Where such rows are many, nothing is read ahead
/// any more.
class QUILLMERE_API ReadAhead final : public RecordingReader {
public:
    /// `timeCell` is the place among the chosen columns of a row's time, where one is. Requires: no pipe; the
    /// reader has been told the chosen columns and what stands for missing values.
    ReadAhead(std::unique_ptr<RecordingReader> reader, const std::vector<std::size_t>& chosen,
              std::optional<std::size_t> timeCell, std::shared_ptr<WorkThread> thread);
    ~ReadAhead() override;

    const std::string& getPath() const override { return reader->getPath(); }
    std::vector<std::string> getForm() const override { return reader->getForm(); }
    std::vector<std::string> getNotes() const override;
    std::optional<std::int64_t> getOrigin() const override;
    void setStop(const std::stop_token& stop) override;
    Row takeRow(double* values) override;
    std::uint64_t getBytesRead() const override;
    std::uint64_t getSize() const override { return reader->getSize(); }
    bool getIsChanged() const override;
    Complaint getFault() const override { return reader->getFault(); }
    Complaint getFaultOfCell(std::size_t column, const std::string& expected,
                             const std::string& suggestion = {}) const override {
        return reader->getFaultOfCell(column, expected, suggestion);
    }
    std::string getPlace() const override { return reader->getPlace(); }
    std::string getRowText() const override { return reader->getRowText(); }

private:
    struct Batch {
        std::vector<double> values;
        std::vector<double> times; ///< Where the reader makes them.
        std::vector<std::uint64_t> lines;
        std::size_t rows = 0;
        Row last = Row::Sound; ///< What the last one is, or that there is none.
        bool isOdd = false;    ///< The reader rests at the last row.
        std::uint64_t bytesRead = 0;
        std::exception_ptr failure; ///< Instead of the row behind the last.

        bool getEndsReading() const { return isOdd || failure != nullptr || last == Row::End; }
    };

    enum class Filling { Idle, Posted, UnderWay };

    void fillInTurn(std::uint64_t number);
    void fillNext(std::unique_lock<std::mutex>& lock);
    void fill(Batch& batch);
    bool getIsPlain(Row row, const double* values) const;
    void postIfIdle();
    bool takeNextBatch();
    Row takeItself(double* values);
    void takeOver(double* values);
    void noteCells();
    std::unique_lock<std::mutex> rest() const;

    const std::unique_ptr<RecordingReader> reader; ///< The thread's, or ours while that rests.
    const std::size_t width;
    const std::optional<std::size_t> timeCell;
    const std::shared_ptr<WorkThread> thread;
    std::array<Batch, 4> batches;
    std::size_t rowsOfBatch;
    Batch* taken = nullptr; ///< The batch whose rows are given.
    std::size_t next = 0;   ///< The place in it of the next row.
    std::uint64_t shortBatches = 0;
    bool isAlone = false; ///< Nothing is read ahead any more.

    mutable std::mutex state;
    mutable std::condition_variable changed;
    std::uint64_t filled = 0; ///< Batches, each the one with that number modulo how many there are;
    std::uint64_t freed = 0;
    Filling filling = Filling::Idle;
    std::uint64_t posted = 0; ///< How often the thread was asked, and how often it has come to it.
    std::uint64_t come = 0;
    bool isResting = false; ///< Until what was read is taken.
};

} // namespace Quillmere::Host
