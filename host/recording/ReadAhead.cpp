// SPDX-License-Identifier: MIT
#include "host/recording/ReadAhead.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quillmere::Host {

namespace {
/// About a millisecond of reading.
constexpr std::size_t kNumbersOfBatch = 32768;
/// So many batches may end early before going to and fro costs more than it brings.
constexpr std::uint64_t kMostShortBatches = 64;
} // namespace

ReadAhead::ReadAhead(std::unique_ptr<RecordingReader> recordingReader, const std::vector<std::size_t>& chosen,
                     std::optional<std::size_t> cellOfTime, std::shared_ptr<WorkThread> workThread)
    : reader(std::move(recordingReader)), width(chosen.size()), timeCell(cellOfTime),
      thread(std::move(workThread)), rowsOfBatch(std::max<std::size_t>(kNumbersOfBatch / (width + 1), 1)) {
    columns = reader->getColumns();
    rate = reader->getRate();
    timeColumn = reader->getTimeColumn();
    hasOwnTimes = reader->getHasOwnTimes();
    select(chosen);
    for (Batch& batch : batches) {
        batch.values.resize(rowsOfBatch * width);
        batch.lines.resize(rowsOfBatch);
        if (hasOwnTimes) batch.times.resize(rowsOfBatch);
    }
}

ReadAhead::~ReadAhead() {
    std::unique_lock lock(state);
    changed.wait(lock, [this] { return posted == come; });
}

RecordingReader::Row ReadAhead::takeRow(double* values) {
    if (isAlone) return takeItself(values);
    while (taken == nullptr || next == taken->rows)
        if (!takeNextBatch()) return isAlone ? takeItself(values) : Row::End;
    const bool isOdd = taken->isOdd && next + 1 == taken->rows;
    if (isOdd) {
        takeOver(values);
    } else {
        beginRow();
        isCut = false;
        std::copy_n(taken->values.data() + next * width, width, values);
        line = taken->lines[next];
        if (hasOwnTimes) time = taken->times[next];
    }
    ++next;
    return isOdd ? taken->last : Row::Sound;
}

/// Gives the batch back and waits for the one behind it. False when there are no more: then it is the
/// recording's end, or the next row is to be read without the thread.
bool ReadAhead::takeNextBatch() {
    if (taken != nullptr) {
        if (taken->failure != nullptr) std::rethrow_exception(taken->failure);
        if (taken->last == Row::End) return false;
    }
    std::unique_lock lock(state);
    if (taken != nullptr) {
        if (taken->isOdd && taken->rows < rowsOfBatch / 2) ++shortBatches;
        ++freed;
        if (isResting && filled == freed) isResting = false;
        taken = nullptr;
        if (shortBatches > kMostShortBatches && filled == freed && filling == Filling::Idle) {
            isAlone = true;
            return false;
        }
    }
    postIfIdle();
    if (filled == freed && filling == Filling::Posted) fillNext(lock);
    changed.wait(lock, [this] { return filled != freed; });
    taken = &batches[freed % batches.size()];
    next = 0;
    return true;
}

/// Requires: locked.
void ReadAhead::postIfIdle() {
    if (filling != Filling::Idle || isResting || filled - freed == batches.size()) return;
    filling = Filling::Posted;
    thread->post([this, number = ++posted] { fillInTurn(number); });
}

/// One batch, unless it was done meanwhile; work that others have for the thread comes before the next.
void ReadAhead::fillInTurn(std::uint64_t number) {
    // Under the lock to the end: who waits may do away with the reader at once.
    std::unique_lock lock(state);
    if (filling == Filling::Posted && number == posted) fillNext(lock);
    ++come;
    changed.notify_all();
}

/// Requires: posted, and locked, which it is again behind it.
void ReadAhead::fillNext(std::unique_lock<std::mutex>& lock) {
    filling = Filling::UnderWay;
    Batch& batch = batches[filled % batches.size()];
    lock.unlock();
    fill(batch);
    lock.lock();
    filling = Filling::Idle;
    isResting = batch.getEndsReading();
    ++filled;
    postIfIdle();
}

void ReadAhead::fill(Batch& batch) {
    batch.rows = 0;
    batch.last = Row::Sound;
    batch.isOdd = false;
    batch.failure = nullptr;
    try {
        while (batch.rows < rowsOfBatch && !batch.getEndsReading()) {
            double* const values = batch.values.data() + batch.rows * width;
            batch.last = reader->takeRow(values);
            if (batch.last == Row::End) break;
            batch.lines[batch.rows] = reader->getLine();
            if (hasOwnTimes) batch.times[batch.rows] = reader->getTime();
            batch.isOdd = !getIsPlain(batch.last, values);
            ++batch.rows;
        }
    } catch (...) {
        batch.failure = std::current_exception();
    }
    batch.bytesRead = reader->getBytesRead();
}

/// Whether nobody has anything to ask about a row.
bool ReadAhead::getIsPlain(Row row, const double* values) const {
    const bool hasTime =
        hasOwnTimes ? std::isfinite(reader->getTime()) : !timeCell || std::isfinite(values[*timeCell]);
    return row == Row::Sound && hasTime && !reader->getHasEmptyCells() && reader->getMissingCells() == 0 &&
           !reader->getIsCut() && reader->getHasAllCells();
}

RecordingReader::Row ReadAhead::takeItself(double* values) {
    const Row row = reader->takeRow(values);
    noteCells();
    return row;
}

/// The reader rests at the row. Cells that are empty leave what was there.
void ReadAhead::takeOver(double* values) {
    const double* const read = taken->values.data() + next * width;
    for (std::size_t i = 0; i < width; ++i)
        if (!reader->getIsEmpty(i)) values[i] = read[i];
    noteCells();
}

void ReadAhead::noteCells() {
    beginRow();
    line = reader->getLine();
    time = reader->getTime();
    isCut = reader->getIsCut();
    hasAllCells = reader->getHasAllCells();
    for (std::size_t i = 0; i < width; ++i) {
        if (reader->getIsEmpty(i)) noteEmpty(i);
        if (reader->getIsMissing(i)) noteMissing(i);
    }
}

/// Waits until the thread has left the reader alone, which it does as long as the lock is held.
std::unique_lock<std::mutex> ReadAhead::rest() const {
    std::unique_lock lock(state);
    changed.wait(lock, [this] { return filling != Filling::UnderWay; });
    return lock;
}

void ReadAhead::setStop(const std::stop_token& stop) {
    const auto lock = rest();
    reader->setStop(stop);
}

std::vector<std::string> ReadAhead::getNotes() const {
    const auto lock = rest();
    return reader->getNotes();
}

std::optional<std::int64_t> ReadAhead::getOrigin() const {
    const auto lock = rest();
    return reader->getOrigin();
}

bool ReadAhead::getIsChanged() const {
    const auto lock = rest();
    return reader->getIsChanged();
}

std::uint64_t ReadAhead::getBytesRead() const {
    if (isAlone) return reader->getBytesRead();
    return taken == nullptr ? 0 : taken->bytesRead;
}

} // namespace Quillmere::Host
