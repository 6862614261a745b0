// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSink.h"

#include "host/graph/NearestName.h"
#include "host/graph/Printable.h"

#include <algorithm>
#include <set>
#include <unordered_map>

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
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        samples[i] = inputs[i].hasData() ? &inputs[i].take() : nullptr;
        hasAny = hasAny || samples[i] != nullptr;
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
    table->writeRow(time, samples);
    if (writesThrough) table->flush();
}

void RecordingSink::endGatheredRow() {
    if (!isGathering) return;
    isGathering = false;
    writeRow(gatheredTime);
}

const std::vector<HostBlock::SettingDescription>& RecordingSink::getSettingDescriptions() const {
    static const std::vector<SettingDescription> descriptions{
        {"file", "text", "", "the CSV table to write; - is standard output"},
        {"time", "text", "t", "the name of the time column"},
        {"columns", "map", "accel[0] and so on",
         "for a pin the names of its columns, as in {accel: [ax, ay, az]}"}};
    return descriptions;
}

void RecordingSink::configure(const GraphDescription::Block& description, const std::string& folder,
                              Complaints& complaints) {
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.value.isMissing()) continue;
        if (setting.name == "file") {
            takeFile(setting, folder, complaints);
        } else if (setting.name == "time") {
            if (const auto name = toText(setting.value, complaints)) timeName = *name;
        } else if (setting.name == "columns") {
            takeColumns(setting.value, complaints);
        } else {
            refuseSetting(setting, complaints);
        }
    }
    requireFile(description, complaints);
}

void RecordingSink::takeColumns(const Value& value, Complaints& complaints) {
    if (value.kind != Value::Kind::Map) {
        complaints.add(value.where, value.describe(),
                       "for a pin the names of its columns, as in {accel: [ax, ay, az]}");
        return;
    }
    std::set<std::string> used{timeName};
    for (const Value::Entry& entry : value.entries) {
        NamedColumns& named = columns.emplace_back(NamedColumns{entry.key, entry.where, {}});
        if (entry.value.kind != Value::Kind::List || entry.value.items.empty()) {
            complaints.add(entry.value.where, entry.value.describe(), "a list of names, as in [ax, ay, az]");
            continue;
        }
        for (const Value& item : entry.value.items) {
            const auto name = toText(item, complaints);
            if (!name) continue;
            if (name->empty() || name->find_first_of("\r\n") != std::string::npos)
                complaints.add(item.where, item.describe(), "a name in one line");
            else if (!used.insert(*name).second)
                complaints.add(item.where, "the column name '" + *name + "' a second time", "each name once");
            named.names.push_back(*name);
        }
    }
}

Core::AbstractInputPin& RecordingSink::requirePin(const std::string& name) {
    Core::InputPin<Core::MatrixXd>*& pin = inputsByName[name];
    if (pin == nullptr) pin = &inputs.emplace_back(name, this);
    return *pin;
}

void RecordingSink::checkPins(Complaints& complaints) const {
    const auto names = [&] {
        std::vector<std::string> known;
        for (const Core::InputPin<Core::MatrixXd>& pin : inputs)
            known.push_back(pin.getName());
        return known;
    };
    for (const NamedColumns& named : columns)
        if (!inputsByName.contains(named.pin))
            refuseName(complaints, named.where, named.pin,
                       "the pin '" + printable(named.pin, kLongestName) + "' that no connection leads to",
                       "one of ", names);
}

void RecordingSink::open() {
    std::unordered_map<std::string, std::vector<std::string>> names;
    for (const NamedColumns& named : columns)
        names.emplace(named.pin, named.names);
    std::vector<TableWriter::Group> groups;
    for (const Core::InputPin<Core::MatrixXd>& pin : inputs)
        groups.push_back({pin.getName(), names[pin.getName()]});
    table = std::make_unique<TableWriter>(getPath(), timeName, std::move(groups), stop);
    samples.assign(inputs.size(), nullptr);
    gathered.resize(inputs.size());
}

void RecordingSink::complete() {
    endGatheredRow();
    table->complete();
}

void RecordingSink::abandon() {
    if (table == nullptr) return;
    endGatheredRow();
    table->abandon();
}

void RecordingSink::discard() {
    if (table != nullptr) table->discard();
}

} // namespace Quillmere::Host
