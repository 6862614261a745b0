// SPDX-License-Identifier: MIT
#include "host/recording/TableQueue.h"

#include <utility>

namespace Quillmere::Host {

namespace {
/// About a millisecond of writing.
constexpr std::size_t kNumbersOfBatch = 32768;
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
    std::unique_lock lock(state);
    requireWritten();
    ++underWay;
    thread->post([this, batch = &batches[filling]] { write(*batch); });
    filling = (filling + 1) % batches.size();
    changed.wait(lock, [this] { return underWay < batches.size(); });
}

/// Behind a failure nothing more is written, as without a thread.
void TableQueue::write(Batch& batch) {
    std::exception_ptr raised;
    try {
        if (failure == nullptr) writeRows(batch); // which only this thread sets
    } catch (...) {
        raised = std::current_exception();
    }
    batch.numbers.clear();
    batch.sizes.clear();
    // Under the lock to the end: who waits may do away with the queue at once.
    const std::lock_guard guard(state);
    if (raised != nullptr) failure = raised;
    --underWay;
    changed.notify_one();
}

void TableQueue::writeRows(const Batch& batch) {
    const std::size_t groups = table.getGroupCount();
    cells.resize(groups);
    const double* number = batch.numbers.data();
    const double* const end = number + batch.numbers.size();
    const std::ptrdiff_t* size = batch.sizes.data();
    while (number != end) {
        const double time = *number++;
        for (TableWriter::Cells& group : cells) {
            group = {.values = number, .isThere = *size != kNone};
            if (group.isThere) group.size = static_cast<std::size_t>(*size);
            number += group.size;
            ++size;
        }
        table.writeCells(time, cells);
    }
}

void TableQueue::requireWritten() const {
    if (failure != nullptr) std::rethrow_exception(failure);
}

} // namespace Quillmere::Host
