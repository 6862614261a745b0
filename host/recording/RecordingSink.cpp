// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSink.h"

#include "host/ends/Finite.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quillmere::Host {

RecordingSink::RecordingSink(const std::string& instanceName) : Sink(instanceName, true) {}

RecordingSink::~RecordingSink() = default;

void RecordingSink::process() {
    if (gathersByTime) {
        for (std::size_t i = 0; i < inputs.size(); ++i)
            if (inputs[i].hasData()) gather(i);
        if (isGathering && getIsRowFull()) endGatheredRow();
        return;
    }
    endGatheredRow(); // begun before rows were those of rounds again
    bool hasAny = false;
    auto sample = samples.begin();
    for (Core::InputPin<Core::MatrixXd>& input : inputs) {
        *sample = input.hasData() ? &input.take() : nullptr;
        hasAny = hasAny || *sample != nullptr;
        ++sample;
    }
    if (hasAny) writeRow(streamTime);
}

void RecordingSink::gather(std::size_t pin) {
    const double time = inputs[pin].getTimeStamp();
    // A time stamp that is no number is like no other.
    if (isGathering && (samples[pin] != nullptr || !(time == gatheredTime))) endGatheredRow();
    if (!isGathering) std::fill(samples.begin(), samples.end(), nullptr);
    Core::copySample(gathered[pin], inputs[pin].take());
    samples[pin] = &gathered[pin];
    gatheredTime = time;
    isGathering = true;
}

bool RecordingSink::getIsRowFull() const {
    for (std::size_t i = 0; i < inputs.size(); ++i)
        if (samples[i] == nullptr && inputs[i].isAttached()) return false;
    return true;
}

void RecordingSink::writeRow(double time) {
    if (queue != nullptr)
        queue->writeRow(time, samples);
    else
        table->writeRow(time, samples);
    for (RowWatcher* const watcher : watchers)
        watcher->takeRow(time, samples);
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (samples[i] != nullptr && !getIsFinite(*samples[i])) noteNonFinite(i, time);
}

void RecordingSink::noteNonFinite(std::size_t pin, double time) {
    const Core::MatrixXd& sample = *samples[pin];
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

void RecordingSink::endGatheredRow() {
    if (!isGathering) return;
    isGathering = false;
    writeRow(gatheredTime);
}

std::string RecordingSink::getPurpose() const {
    return "Writes what comes to its pins to a CSV table, a row for each time.";
}

const std::vector<HostBlock::SettingDescription>& RecordingSink::getSettingDescriptions() const {
    static const std::vector<SettingDescription> descriptions{
        {"file", "text", "", "the CSV table to write; - is standard output"},
        {"time", "text", "t", "the name of the time column"},
        {"columns", "map", "accel[0] and so on",
         "for a pin the names of its columns, as in {accel: [ax, ay, az]}"},
        {"units", "flag", "unless named",
         "whether the units that are known stand behind the names of columns, as in accel[0] [g]"},
        {"overwrite", "flag", "false",
         "whether a file under that name may be replaced that no run has written"}};
    return descriptions;
}

void RecordingSink::configure(const GraphDescription::Block& description, const std::string& folder,
                              Complaints& complaints) {
    // First, since no other column may have its name.
    for (const GraphDescription::Setting& setting : description.settings)
        if (setting.name == "time" && !setting.value.isMissing()) columns.takeTime(setting.value, complaints);
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.value.isMissing() || setting.name == "time") continue;
        if (setting.name == "file") {
            takeFile(setting, folder, complaints);
        } else if (setting.name == "overwrite") {
            overwrites = toFlag(setting.value, complaints).value_or(false);
        } else if (!columns.take(setting, complaints)) {
            refuseSetting(setting, complaints);
        }
    }
    requireFile(*this, description, complaints);
}

void RecordingSink::setUnit(const Core::AbstractInputPin& pin, const std::string& unit) {
    columns.setUnit(pin.getName(), unit);
}

Core::AbstractInputPin* RecordingSink::makePin(const std::string& name) {
    Core::InputPin<Core::MatrixXd>*& pin = inputsByName[name];
    if (pin == nullptr) pin = &inputs.emplace_back(name, this);
    return pin;
}

std::vector<FileEnd::File> RecordingSink::getFiles() const {
    return getPath().empty() ? std::vector<File>() : ResultPath(getPath()).getFiles();
}

ResultOptions RecordingSink::options() const {
    const TableForm form{
        .timeName = columns.getTime(), .groups = columns.getGroups(inputs), .recorded = recorded};
    return {.overwrites = overwrites, .looksOwn = [form](std::string_view head) { return form.fits(head); }};
}

void RecordingSink::checkFile(const std::vector<std::string>& columnsOfRecordings, Complaints& complaints) {
    recorded = columnsOfRecordings;
    columns.checkUnits(inputs, complaints);
    if (const auto refusal = ResultPath(getPath()).findRefusal(options()))
        complaints.add(getPathPlace(), refusal->found, refusal->expected);
}

void RecordingSink::open() {
    table = std::make_unique<TableWriter>(getPath(), columns.getTime(), columns.getGroups(inputs), options(),
                                          stop);
    samples.assign(inputs.size(), nullptr);
    gathered.resize(inputs.size());
}

void RecordingSink::setThread(std::shared_ptr<WorkThread> thread) {
    queue = std::make_unique<TableQueue>(*table, std::move(thread));
}

std::uint64_t RecordingSink::getRows() const {
    if (queue != nullptr) return queue->getRows();
    return table == nullptr ? 0 : table->getRows();
}

/// Everything is written by then, or it is raised why not.
void RecordingSink::endQueue() {
    if (queue == nullptr) return;
    const std::unique_ptr<TableQueue> ending = std::move(queue);
    ending->wait();
}

void RecordingSink::finish() {
    endGatheredRow();
    endQueue();
    table->finish();
}

void RecordingSink::complete() {
    endGatheredRow();
    endQueue();
    table->complete();
}

void RecordingSink::abandon() {
    if (table == nullptr) return;
    try {
        endGatheredRow();
        endQueue();
    } catch (...) {
        queue.reset(); // who abandons a result knows why
    }
    table->abandon();
}

void RecordingSink::discard() {
    queue.reset();
    if (table != nullptr) table->discard();
}

} // namespace Quillmere::Host
