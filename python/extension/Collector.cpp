// SPDX-License-Identifier: MIT
#include "python/extension/Collector.h"

#include <algorithm>
#include <new>

namespace Python {

void SampleStore::grow(std::size_t size) {
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
