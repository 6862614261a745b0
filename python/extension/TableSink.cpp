// SPDX-License-Identifier: MIT
#include "python/extension/TableSink.h"

#include "host/ends/Finite.h"
#include "host/text/HostException.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace Python {

using namespace Quillmere::Host;
using Quillmere::Core::MatrixXd;

namespace {
constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

/// The same without rows.
TableRows headOf(const TableRows& rows) {
    TableRows head;
    head.timeName = rows.timeName;
    for (const TableRows::Pin& pin : rows.pins) {
        TableRows::Pin& empty = head.pins.emplace_back();
        empty.name = pin.name;
        empty.unit = pin.unit;
        empty.columns = pin.columns;
        empty.width = pin.width;
    }
    return head;
}

[[noreturn]] void refuseWidth(const TableRows::Pin& pin, std::size_t size) {
    throw HostException(Complaint({}, std::to_string(size) + " elements at the pin '" + pin.name + "'",
                                  std::to_string(pin.width) + ", as in the samples before"));
}
} // namespace

std::size_t TableRows::countColumns() const {
    std::size_t count = 0;
    for (const Pin& pin : pins)
        count += std::max({pin.width, pin.columns.size(), std::size_t{1}});
    return count;
}

std::string TableRows::nameOfColumn(const Pin& pin, std::size_t element) {
    if (element < pin.columns.size()) return pin.columns[element];
    return pin.name + "[" + std::to_string(element) + "]";
}

void TableResult::begin(TableRows empty) {
    const std::lock_guard lock(state);
    rows = std::move(empty);
    hasEnded = false;
}

void TableResult::add(double time, const std::vector<const MatrixXd*>& samples) {
    const std::lock_guard lock(state);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        TableRows::Pin& pin = rows.pins[i];
        if (samples[i] == nullptr) {
            pin.values.resize(pin.values.size() + pin.width, kNothing);
            continue;
        }
        const auto size = static_cast<std::size_t>(samples[i]->size());
        if (pin.width == 0) {
            pin.width = size;
            pin.values.assign(rows.times.size() * size, kNothing);
        }
        if (pin.width != size) refuseWidth(pin, size);
        pin.values.insert(pin.values.end(), samples[i]->data(), samples[i]->data() + size);
    }
    rows.times.push_back(time);
    if (rows.times.size() == 1) hasMore.notify_all();
}

void TableResult::clear() {
    const std::lock_guard lock(state);
    rows = headOf(rows);
}

void TableResult::end() {
    const std::lock_guard lock(state);
    hasEnded = true;
    hasMore.notify_all();
}

TableRows TableResult::take() {
    const std::lock_guard lock(state);
    TableRows head = headOf(rows);
    return std::exchange(rows, std::move(head));
}

TableRows TableResult::read(std::size_t first) const {
    const std::lock_guard lock(state);
    TableRows part = headOf(rows);
    first = std::min(first, rows.times.size());
    part.times.assign(rows.times.begin() + static_cast<std::ptrdiff_t>(first), rows.times.end());
    for (std::size_t i = 0; i < rows.pins.size(); ++i) {
        const auto& values = rows.pins[i].values;
        part.pins[i].values.assign(values.begin() + static_cast<std::ptrdiff_t>(first * rows.pins[i].width),
                                   values.end());
    }
    return part;
}

bool TableResult::waitFor(double seconds) const {
    std::unique_lock lock(state);
    hasMore.wait_for(lock, std::chrono::duration<double>(seconds),
                     [&] { return hasEnded || !rows.times.empty(); });
    return !rows.times.empty();
}

TableSink::TableSink(const std::string& instanceName, std::shared_ptr<TableResult> tableResult)
    : Sink(instanceName, true), result(std::move(tableResult)) {}

TableSink::~TableSink() = default;

void TableSink::configure(const GraphDescription::Block& description, const std::string&,
                          Complaints& complaints) {
    // First, since no other column may have its name.
    for (const GraphDescription::Setting& setting : description.settings)
        if (setting.name == "time" && !setting.value.isMissing()) columns.takeTime(setting.value, complaints);
    for (const GraphDescription::Setting& setting : description.settings) {
        const bool isOfFile = setting.name == "file" || setting.name == "overwrite" || setting.name == "time";
        if (isOfFile || setting.value.isMissing()) continue;
        if (!columns.take(setting, complaints)) refuseSetting(setting, complaints);
    }
}

Quillmere::Core::AbstractInputPin* TableSink::makePin(const std::string& name) {
    auto*& pin = inputsByName[name];
    if (pin == nullptr) pin = &inputs.emplace_back(name, this);
    return pin;
}

void TableSink::setUnit(const Quillmere::Core::AbstractInputPin& pin, const std::string& unit) {
    units[pin.getName()] = unit;
}

void TableSink::open() {
    TableRows head;
    head.timeName = columns.getTime();
    for (const TableWriter::Group& group : columns.getGroups(inputs)) {
        TableRows::Pin& pin = head.pins.emplace_back();
        pin.name = group.name;
        pin.unit = units[group.name];
        pin.columns = group.columns;
    }
    result->begin(std::move(head));
    samples.assign(inputs.size(), nullptr);
    gathered.resize(inputs.size());
    account = {};
    account.nonFiniteOfPin.assign(inputs.size(), 0);
    isComplete = false;
}

void TableSink::process() {
    if (gathersByTime) {
        for (std::size_t i = 0; i < inputs.size(); ++i)
            if (inputs[i].hasData()) gather(i);
        if (isGathering && getIsRowFull()) endGatheredRow();
        return;
    }
    endGatheredRow(); // begun before rows were those of rounds again
    bool hasAny = false;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        samples[i] = inputs[i].hasData() ? &inputs[i].take() : nullptr;
        hasAny = hasAny || samples[i] != nullptr;
    }
    if (hasAny) writeRow(streamTime);
}

void TableSink::gather(std::size_t pin) {
    const double time = inputs[pin].getTimeStamp();
    // A time stamp that is no number is like no other.
    if (isGathering && (samples[pin] != nullptr || !(time == gatheredTime))) endGatheredRow();
    if (!isGathering) std::fill(samples.begin(), samples.end(), nullptr);
    Quillmere::Core::copySample(gathered[pin], inputs[pin].take());
    samples[pin] = &gathered[pin];
    gatheredTime = time;
    isGathering = true;
}

bool TableSink::getIsRowFull() const {
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (samples[i] == nullptr && inputs[i].isAttached()) return false;
    return true;
}

void TableSink::endGatheredRow() {
    if (!isGathering) return;
    isGathering = false;
    writeRow(gatheredTime);
}

void TableSink::writeRow(double time) {
    result->add(time, samples);
    rowCount.add(1);
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (samples[i] != nullptr && !getIsFinite(*samples[i])) noteNonFinite(i, time);
}

void TableSink::noteNonFinite(std::size_t pin, double time) {
    const MatrixXd& sample = *samples[pin];
    for (Eigen::Index i = 0; i < sample.size(); ++i) {
        if (std::isfinite(sample.data()[i])) continue;
        ++account.nonFiniteOfPin[pin];
        if (account.nonFiniteValues++ > 0) continue;
        account.firstTime = time;
        account.firstRow = rowCount.get();
        account.firstColumn = columns.getName(inputs[pin].getName(), static_cast<std::size_t>(i));
    }
}

void TableSink::complete() {
    endGatheredRow();
    isComplete = true;
    result->end();
}

void TableSink::abandon() {
    endGatheredRow();
    result->end();
}

void TableSink::discard() {
    result->clear();
    result->end();
}

} // namespace Python
