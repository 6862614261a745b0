// SPDX-License-Identifier: MIT
#include "python/extension/TableSink.h"

#include "host/text/HostException.h"

#include <algorithm>
#include <chrono>
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
    : RowSink(instanceName), result(std::move(tableResult)) {}

TableSink::~TableSink() = default;

/// What is of a file is of none here.
bool TableSink::takeOwn(const GraphDescription::Setting& setting, const std::string&, Complaints&) {
    return setting.name == "file" || setting.name == "overwrite";
}

void TableSink::setUnit(const Quillmere::Core::AbstractInputPin& pin, const std::string& unit) {
    units[pin.getName()] = unit;
}

void TableSink::open() {
    TableRows head;
    head.timeName = getColumns().getTime();
    for (const TableWriter::Group& group : getColumns().getGroups(getInputs())) {
        TableRows::Pin& pin = head.pins.emplace_back();
        pin.name = group.name;
        pin.unit = units[group.name];
        pin.columns = group.columns;
    }
    result->begin(std::move(head));
    beginRows();
    isComplete = false;
}

void TableSink::writeRow(double time, const Samples& samples) {
    result->add(time, samples);
    rowCount.add(1);
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
