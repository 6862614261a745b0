// SPDX-License-Identifier: MIT
#include "host/recording/TableQueue.h"

#include "host/ends/LateRowException.h"
#include "host/recording/NumberText.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Quillmere::Host {

namespace {
/// About a millisecond of writing.
constexpr std::size_t kNumbersOfBatch = 32768;
constexpr std::size_t kLongestCell = 25; ///< A number's text, and a comma.
} // namespace

TableQueue::TableQueue(TableWriter& writer, std::shared_ptr<WorkThread> workThread)
    : table(writer), thread(std::move(workThread)) {}

TableQueue::~TableQueue() {
    std::unique_lock lock(state);
    changed.wait(lock, [this] { return underWay == 0; });
}

void TableQueue::writeRow(double time, const std::vector<const Core::MatrixXd*>& samples) {
    Batch& batch = batches[filling];
    batch.numbers.push_back(time);
    for (const Core::MatrixXd* const sample : samples) {
        batch.sizes.push_back(sample == nullptr ? kNone : sample->size());
        if (sample != nullptr)
            batch.numbers.insert(batch.numbers.end(), sample->data(), sample->data() + sample->size());
    }
    ++rows;
    if (batch.numbers.size() >= kNumbersOfBatch) handOver();
}

void TableQueue::wait() {
    if (!batches[filling].numbers.empty()) handOver();
    std::unique_lock lock(state);
    changed.wait(lock, [this] { return underWay == 0; });
    requireWritten();
}

/// The next batch is free when fewer than all are under way, since they come back in their order.
void TableQueue::handOver() {
    if (getIsAhead()) print(batches[filling]);
    std::unique_lock lock(state);
    requireWritten();
    ++underWay;
    thread->post([this, batch = &batches[filling]] { write(*batch); });
    filling = (filling + 1) % batches.size();
    changed.wait(lock, [this] { return underWay < batches.size(); });
}

/// Whether one batch more would have to be waited for.
bool TableQueue::getIsAhead() {
    const std::lock_guard guard(state);
    return underWay + 1 == batches.size();
}

/// Prints rows in which every group has a sample, each time of as many elements, as nearly always. Whether
/// the table takes them as they are is known when their turn comes.
void TableQueue::print(Batch& batch) const {
    const auto groups = static_cast<std::ptrdiff_t>(table.getGroupCount());
    const auto sizes = batch.sizes.begin();
    const bool isEven = groups > 0 && std::find(sizes, sizes + groups, kNone) == sizes + groups &&
                        std::equal(sizes + groups, batch.sizes.end(), sizes);
    if (!isEven) return;
    batch.elements.assign(sizes, sizes + groups);
    const std::size_t ofRow = std::accumulate(batch.elements.begin(), batch.elements.end(), std::size_t{1});
    batch.text.resize(std::max(batch.text.size(), batch.numbers.size() * kLongestCell + kNumberRoom));
    char* to = batch.text.data();
    for (std::size_t i = 0; i < batch.numbers.size();) {
        for (const std::size_t end = i + ofRow; i < end; ++i) {
            to = numberToText(to, batch.numbers[i]);
            *to++ = ',';
        }
        to[-1] = '\n';
        batch.ends.push_back(static_cast<std::size_t>(to - batch.text.data()));
    }
}

/// Behind a failure nothing more is written, as without a thread.
void TableQueue::write(Batch& batch) {
    std::exception_ptr raised;
    try {
        if (failure == nullptr) writeRows(batch); // which only this thread sets
    } catch (...) {
        raised = getRaised();
    }
    batch.numbers.clear();
    batch.sizes.clear();
    batch.ends.clear();
    // Under the lock to the end: who waits may do away with the queue at once.
    const std::lock_guard guard(state);
    if (raised != nullptr) failure = raised;
    --underWay;
    changed.notify_one();
}

/// What is being handled, with the time of the row.
std::exception_ptr TableQueue::getRaised() const noexcept {
    try {
        throw;
    } catch (const InterruptedException&) {
        return std::current_exception();
    } catch (const RecordingException& exception) {
        try {
            return std::make_exception_ptr(LateRowException(exception, rowTime));
        } catch (...) { // no memory for that
            return std::current_exception();
        }
    } catch (...) {
        return std::current_exception();
    }
}

void TableQueue::writePrinted(const Batch& batch) {
    const std::size_t ofRow = batch.numbers.size() / batch.ends.size();
    const double* time = batch.numbers.data();
    std::size_t begin = 0;
    for (const std::size_t end : batch.ends) {
        rowTime = *time;
        table.writePrinted({batch.text.data() + begin, end - begin});
        begin = end;
        time += ofRow;
    }
}

void TableQueue::writeRows(const Batch& batch) {
    if (!batch.ends.empty() && table.getTakes(batch.elements)) return writePrinted(batch);
    const std::size_t groups = table.getGroupCount();
    cells.resize(groups);
    const double* number = batch.numbers.data();
    const double* const end = number + batch.numbers.size();
    const std::ptrdiff_t* size = batch.sizes.data();
    while (number != end) {
        rowTime = *number++;
        for (TableWriter::Cells& group : cells) {
            group = {.values = number, .isThere = *size != kNone};
            if (group.isThere) group.size = static_cast<std::size_t>(*size);
            number += group.size;
            ++size;
        }
        table.writeCells(rowTime, cells);
    }
}

void TableQueue::requireWritten() const {
    if (failure != nullptr) std::rethrow_exception(failure);
}

} // namespace Quillmere::Host
