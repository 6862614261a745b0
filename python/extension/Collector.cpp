// SPDX-License-Identifier: MIT
#include "python/extension/Collector.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include <sys/mman.h>

namespace Python {

namespace {
/// Numbers that are asked for ahead at most: who expects more has no more of it than who grows, and a block
/// that makes one frame of many samples needs far less than a frame for each.
constexpr std::size_t kMostAhead = std::size_t{1} << 24U;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kWorthHugePages = std::size_t{1} << 22U; // bytes, as NumPy has it for its arrays

/// Asks for large pages: to be given small ones, one by one as they are first written, takes longer than to
/// filter what is written there.
void askForHugePages([[maybe_unused]] double* memory, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
    if (bytes < kWorthHugePages) return;
    const std::size_t before = kPage - reinterpret_cast<std::uintptr_t>(memory) % kPage;
    (void)madvise(reinterpret_cast<char*>(memory) + before, bytes - before, MADV_HUGEPAGE); // a wish
#endif
}
} // namespace

void SampleStore::makeRoom(std::size_t count, Eigen::Index rows, Eigen::Index columns) {
    if (last == nullptr || last->rows != rows || last->columns != columns) runs.push_back({0, rows, columns});
    last = &runs.back();
    const std::size_t each = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    const std::size_t size = count * each;
    if (size <= capacity - used) return;
    const std::size_t ahead = runs.size() == 1 && each > 0 ? std::min(expected, kMostAhead / each) * each : 0;
    const std::size_t wanted = std::max({used + size, 2 * capacity, ahead});
    auto* const larger = static_cast<double*>(std::realloc(memory.get(), wanted * sizeof(double)));
    if (larger == nullptr) throw std::bad_alloc();
    askForHugePages(larger, wanted * sizeof(double));
    (void)memory.release();
    memory.reset(larger);
    capacity = wanted;
}

Collector::Collector(const std::string& name) : Pin(name, nullptr), InputPinBase(name, nullptr) {}

Collector::~Collector() {
    InputPinBase::detachAll();
}

void Collector::clear() {
    samples.clear();
    times.clear();
}

void Collector::setConnectedOutput(Quillmere::Core::AbstractOutputPin* output, bool synchronous) {
    connectedOutput = output;
    isSynchronous = synchronous;
}

} // namespace Python
