// SPDX-License-Identifier: MIT
#include "host/ends/MemoryResult.h"

#include "host/text/Complaint.h"
#include "host/text/HostException.h"

#include <algorithm>

namespace Quillmere::Host {

MemoryResult::MemoryResult(const std::vector<std::string>& names) {
    for (const std::string& name : names)
        pins.push_back({name, {}});
}

void MemoryResult::add(double time, const std::vector<const Core::MatrixXd*>& samples) {
    const std::lock_guard lock(state);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (samples[i] == nullptr) continue;
        pins[i].got.samples.append(*samples[i]);
        pins[i].got.times.push_back(time);
    }
}

void MemoryResult::add(double time, std::size_t pin, const Core::MatrixXd& sample) {
    const std::lock_guard lock(state);
    pins[pin].got.samples.append(sample);
    pins[pin].got.times.push_back(time);
}

void MemoryResult::setIsComplete() {
    const std::lock_guard lock(state);
    isComplete = true;
}

void MemoryResult::clear() {
    const std::lock_guard lock(state);
    for (Pin& pin : pins)
        pin.got = {};
}

std::vector<std::string> MemoryResult::getPins() const {
    std::vector<std::string> names;
    for (const Pin& pin : pins) // names never change
        names.push_back(pin.name);
    return names;
}

bool MemoryResult::getIsComplete() const {
    const std::lock_guard lock(state);
    return isComplete;
}

TimedSamples MemoryResult::read(const std::string& sink, const std::string& name, std::size_t first) const {
    const auto pin =
        std::find_if(pins.begin(), pins.end(), [&](const Pin& candidate) { return candidate.name == name; });
    if (pin == pins.end())
        throw HostException(Complaint::unknown({}, "the pin '" + name + "' of the MemorySink '" + sink + "'",
                                               name, getPins()));
    const std::lock_guard lock(state);
    const std::size_t begin = std::min(first, pin->got.times.size());
    return {{pin->got.times.begin() + static_cast<std::ptrdiff_t>(begin), pin->got.times.end()},
            pin->got.samples.getTail(begin)};
}

} // namespace Quillmere::Host
