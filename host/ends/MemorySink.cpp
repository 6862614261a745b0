// SPDX-License-Identifier: MIT
#include "host/ends/MemorySink.h"

#include "host/ends/Finite.h"

#include <cmath>
#include <utility>

namespace Quillmere::Host {

MemorySink::MemorySink(const std::string& instanceName, Keeper resultKeeper)
    : Sink(instanceName, true), keeper(std::move(resultKeeper)) {}

MemorySink::~MemorySink() = default;

Core::AbstractInputPin* MemorySink::makePin(const std::string& name) {
    Core::InputPin<Core::MatrixXd>*& pin = inputsByName[name];
    if (pin == nullptr) pin = &inputs.emplace_back(name, this);
    return pin;
}

void MemorySink::open() {
    std::vector<std::string> names;
    for (const Core::InputPin<Core::MatrixXd>& pin : inputs)
        names.push_back(pin.getName());
    result = std::make_shared<MemoryResult>(names);
    samples.assign(inputs.size(), nullptr);
    isInRow.assign(inputs.size(), false);
    account = {};
    account.nonFiniteOfPin.assign(inputs.size(), 0);
    keeper(getName(), result);
}

void MemorySink::process() {
    bool hasAny = false;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        samples[i] = nullptr;
        if (!inputs[i].hasData()) continue;
        if (gathersByTime) {
            gather(i);
            continue;
        }
        samples[i] = &inputs[i].take();
        hasAny = true;
    }
    if (!hasAny) return;
    result->add(streamTime, samples);
    rows.add(1);
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (samples[i] != nullptr) noteNonFinite(i, *samples[i], streamTime);
}

/// What belongs to one row counts once.
void MemorySink::gather(std::size_t pin) {
    const double time = inputs[pin].getTimeStamp();
    const Core::MatrixXd& sample = inputs[pin].take();
    result->add(time, pin, sample);
    // A time stamp that is no number is like no other.
    if (rows.get() == 0 || isInRow[pin] || !(time == rowTime)) {
        rows.add(1);
        rowTime = time;
        isInRow.assign(inputs.size(), false);
    }
    isInRow[pin] = true;
    noteNonFinite(pin, sample, time);
}

void MemorySink::noteNonFinite(std::size_t pin, const Core::MatrixXd& sample, double time) {
    if (getIsFinite(sample)) return;
    for (Eigen::Index i = 0; i < sample.size(); ++i) {
        if (std::isfinite(sample.data()[i])) continue;
        ++account.nonFiniteOfPin[pin];
        if (account.nonFiniteValues++ > 0) continue;
        account.firstTime = time;
        account.firstRow = rows.get();
        account.firstColumn = inputs[pin].getName() + "[" + std::to_string(i) + "]";
    }
}

void MemorySink::complete() {
    result->setIsComplete();
}

void MemorySink::discard() {
    if (result != nullptr) result->clear();
}

} // namespace Quillmere::Host
