// SPDX-License-Identifier: MIT
#include "python/extension/Collector.h"

#include <algorithm>
#include <new>

namespace Python {

void SampleStore::makeRoom(const Quillmere::Core::MatrixXd& sample) {
    if (last == nullptr || last->rows != sample.rows() || last->columns != sample.cols())
        runs.push_back({0, sample.rows(), sample.cols()});
    last = &runs.back();
    const auto size = static_cast<std::size_t>(sample.size());
    if (size <= capacity - used) return;
    const std::size_t wanted = std::max({used + size, 2 * capacity, runs.size() == 1 ? expected * size : 0});
    auto* const larger = static_cast<double*>(std::realloc(memory.get(), wanted * sizeof(double)));
    if (larger == nullptr) throw std::bad_alloc();
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
