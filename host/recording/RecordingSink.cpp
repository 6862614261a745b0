// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSink.h"

#include <utility>

namespace Quillmere::Host {

RecordingSink::RecordingSink(const std::string& instanceName) : RowSink(instanceName) {}

RecordingSink::~RecordingSink() = default;

void RecordingSink::writeRow(double time, const Samples& samples) {
    if (queue != nullptr)
        queue->writeRow(time, samples);
    else
        table->writeRow(time, samples);
    for (RowWatcher* const watcher : watchers)
        watcher->takeRow(time, samples);
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
    RowSink::configure(description, folder, complaints);
    requireFile(*this, description, complaints);
}

bool RecordingSink::takeOwn(const GraphDescription::Setting& setting, const std::string& folder,
                            Complaints& complaints) {
    if (setting.name == "file")
        takeFile(setting, folder, complaints);
    else if (setting.name == "overwrite")
        overwrites = toFlag(setting.value, complaints).value_or(false);
    else
        return false;
    return true;
}

void RecordingSink::setUnit(const Core::AbstractInputPin& pin, const std::string& unit) {
    getColumns().setUnit(pin.getName(), unit);
}

std::vector<FileEnd::File> RecordingSink::getFiles() const {
    return getPath().empty() ? std::vector<File>() : ResultPath(getPath()).getFiles();
}

ResultOptions RecordingSink::options() const {
    const TableForm form{.timeName = getColumns().getTime(), .groups = getGroups(), .recorded = recorded};
    return {.overwrites = overwrites, .looksOwn = [form](std::string_view head) { return form.fits(head); }};
}

void RecordingSink::checkFile(const std::vector<std::string>& columnsOfRecordings, Complaints& complaints) {
    recorded = columnsOfRecordings;
    getColumns().checkUnits(getInputs(), complaints);
    if (const auto refusal = ResultPath(getPath()).findRefusal(options()))
        complaints.add(getPathPlace(), refusal->found, refusal->expected);
}

void RecordingSink::open() {
    table = std::make_unique<TableWriter>(getPath(), getColumns().getTime(), getGroups(), options(), stop);
    beginRows();
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
