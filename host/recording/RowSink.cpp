// SPDX-License-Identifier: MIT
#include "host/recording/RowSink.h"

#include "host/ends/Finite.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

RowSink::RowSink(const std::string& instanceName) : Sink(instanceName, true) {}

RowSink::~RowSink() = default;

void RowSink::process() {
    if (gathersByTime) {
        for (std::size_t i = 0; i < inputs.size(); ++i)
            if (inputs[i].hasData()) gather(i);
        if (isGathering && getIsRowFull()) endGatheredRow();
        return;
    }
    endGatheredRow(); // begun before rows were those of rounds again
    bool hasAny = false;
    auto sample = row.begin();
    for (Core::InputPin<Core::MatrixXd>& input : inputs) {
        *sample = input.hasData() ? &input.take() : nullptr;
        hasAny = hasAny || *sample != nullptr;
        ++sample;
    }
    if (hasAny) endRow(streamTime);
}

void RowSink::gather(std::size_t pin) {
    const double time = inputs[pin].getTimeStamp();
    // A time stamp that is no number is like no other.
    if (isGathering && (row[pin] != nullptr || !(time == gatheredTime))) endGatheredRow();
    if (!isGathering) std::fill(row.begin(), row.end(), nullptr);
    Core::copySample(gathered[pin], inputs[pin].take());
    row[pin] = &gathered[pin];
    gatheredTime = time;
    isGathering = true;
}

bool RowSink::getIsRowFull() const {
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (row[i] == nullptr && inputs[i].isAttached()) return false;
    return true;
}

void RowSink::endGatheredRow() {
    if (!isGathering) return;
    isGathering = false;
    endRow(gatheredTime);
}

void RowSink::endRow(double time) {
    writeRow(time, row);
    for (std::size_t i = 0; i < row.size(); ++i)
        if (row[i] != nullptr && !getIsFinite(*row[i])) noteNonFinite(i, time);
}

void RowSink::noteNonFinite(std::size_t pin, double time) {
    const Core::MatrixXd& sample = *row[pin];
    for (Eigen::Index i = 0; i < sample.size(); ++i) {
        if (std::isfinite(sample.data()[i])) continue;
        if (account.nonFiniteOfPin.size() <= pin) account.nonFiniteOfPin.resize(pin + 1);
        ++account.nonFiniteOfPin[pin];
        if (account.nonFiniteValues++ > 0) continue;
        account.firstTime = time;
        account.firstRow = getRows();
        account.firstColumn = columns.getName(inputs[pin].getName(), static_cast<std::size_t>(i));
    }
}

void RowSink::configure(const GraphDescription::Block& description, const std::string& folder,
                        Complaints& complaints) {
    // First, since no other column may have its name.
    for (const GraphDescription::Setting& setting : description.settings)
        if (setting.name == "time" && !setting.value.isMissing()) columns.takeTime(setting.value, complaints);
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.value.isMissing() || setting.name == "time") continue;
        if (!takeOwn(setting, folder, complaints) && !columns.take(setting, complaints))
            refuseSetting(setting, complaints);
    }
}

Core::AbstractInputPin* RowSink::makePin(const std::string& name) {
    Core::InputPin<Core::MatrixXd>*& pin = inputsByName[name];
    if (pin == nullptr) pin = &inputs.emplace_back(name, this);
    return pin;
}

void RowSink::beginRows() {
    row.assign(inputs.size(), nullptr);
    gathered.resize(inputs.size());
    isGathering = false;
    account = {};
}

} // namespace Quillmere::Host
