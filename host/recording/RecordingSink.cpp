// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSink.h"

#include "host/text/Counted.h"
#include "host/ends/Finite.h"
#include "host/ends/RecordedSource.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/ends/ShapeGiver.h"
#include "host/ends/ColumnName.h"
#include "host/recording/UnitText.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace Quillmere::Host {

namespace {
constexpr const char* kExpectedName = "a name in one line, without control characters";

/// The pin that would have a column of this name, counted as in `accel[0]`, with a unit or without; empty
/// when the name doesn't count.
std::string countedPin(std::string name) {
    if (name.find(" [") != std::string::npos) name = nameWithoutUnit(name);
    const std::size_t bracket = name.rfind('[');
    if (bracket == std::string::npos || name.size() < bracket + 3 || name.back() != ']') return {};
    if (name.find_first_not_of("0123456789", bracket + 1) + 1 != name.size()) return {};
    return name.substr(0, bracket);
}
} // namespace

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
    for (std::size_t i = 0; i < samples.size(); ++i)
        if (samples[i] != nullptr && !getIsFinite(*samples[i])) noteNonFinite(i, time);
    if (writesThrough) table->flush();
}

void RecordingSink::noteNonFinite(std::size_t pin, double time) {
    const Core::MatrixXd& sample = *samples[pin];
    for (Eigen::Index i = 0; i < sample.size(); ++i) {
        if (std::isfinite(sample.data()[i])) continue;
        if (account.nonFiniteOfPin.size() <= pin) account.nonFiniteOfPin.resize(pin + 1);
        ++account.nonFiniteOfPin[pin];
        if (account.nonFiniteValues++ > 0) continue;
        account.firstTime = time;
        account.firstRow = table->getRows();
        account.firstColumn = getColumnName(pin, static_cast<std::size_t>(i));
    }
}

std::string RecordingSink::getColumnName(std::size_t pin, std::size_t element) const {
    const std::string& name = inputs[pin].getName();
    const auto named = std::find_if(columns.begin(), columns.end(),
                                    [&](const NamedColumns& candidate) { return candidate.pin == name; });
    return named == columns.end() ? name + "[" + std::to_string(element) + "]" : named->names[element];
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
        if (setting.name == "time" && !setting.value.isMissing()) takeTimeName(setting.value, complaints);
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.value.isMissing() || setting.name == "time") continue;
        if (setting.name == "file") {
            takeFile(setting, folder, complaints);
        } else if (setting.name == "overwrite") {
            overwrites = toFlag(setting.value, complaints).value_or(false);
        } else if (setting.name == "units") {
            showsUnits = toFlag(setting.value, complaints);
        } else if (setting.name == "columns") {
            takeColumns(setting.value, complaints);
        } else {
            refuseSetting(setting, complaints);
        }
    }
    requireFile(*this, description, complaints);
}

void RecordingSink::takeTimeName(const Value& value, Complaints& complaints) {
    timePlace = value.where;
    const auto name = toText(value, complaints);
    if (!name) return;
    if (!getIsColumnName(*name)) complaints.add(value.where, value.describe(), kExpectedName);
    timeName = *name;
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
            if (!getIsColumnName(*name))
                complaints.add(item.where, item.describe(), kExpectedName);
            else if (!used.insert(*name).second)
                complaints.add(item.where, "the column name '" + *name + "' a second time", "each name once");
            named.names.push_back(*name);
        }
    }
}

void RecordingSink::setUnit(const Core::AbstractInputPin& pin, const std::string& unit) {
    units[pin.getName()] = unitForName(unit);
}

Core::AbstractInputPin* RecordingSink::makePin(const std::string& name) {
    Core::InputPin<Core::MatrixXd>*& pin = inputsByName[name];
    if (pin == nullptr) pin = &inputs.emplace_back(name, this);
    return pin;
}

std::vector<FileEnd::File> RecordingSink::getFiles() const {
    return getPath().empty() ? std::vector<File>() : ResultPath(getPath()).getFiles();
}

void RecordingSink::checkPins(Complaints& complaints) const {
    const auto names = [&] {
        std::vector<std::string> known;
        for (const Core::InputPin<Core::MatrixXd>& pin : inputs)
            known.push_back(pin.getName());
        return known;
    };
    std::unordered_set<std::string> namedPins;
    for (const NamedColumns& named : columns) {
        namedPins.insert(named.pin);
        if (const auto input = inputsByName.find(named.pin); input != inputsByName.end())
            checkWidth(named, *input->second, complaints);
        else
            refuseName(complaints, named.where, named.pin,
                       "the pin '" + printable(named.pin, kLongestName) + "' that no connection leads to",
                       "one of ", names);
    }
    // A pin without names gives its columns `pin[0]` and so on, which others must not have.
    const auto check = [&](const std::string& name, const Place& where) {
        const std::string pin = countedPin(name);
        if (!pin.empty() && inputsByName.contains(pin) && !namedPins.contains(pin))
            complaints.add(where,
                           "the column name '" + printable(name, kLongestName) + "', which a column of '" +
                               printable(pin, kLongestName) + "' has too",
                           "each name once");
    };
    check(timeName, timePlace);
    for (const NamedColumns& named : columns)
        for (const std::string& name : named.names)
            check(name, named.where);
}

/// How many elements a sample has is known beforehand where nothing between a recording and the sink changes
/// its shape.
void RecordingSink::checkWidth(const NamedColumns& named, const Core::AbstractInputPin& pin,
                               Complaints& complaints) const {
    const Core::AbstractOutputPin* const giver = shapeGiverOf(pin);
    const auto* const source =
        giver == nullptr ? nullptr : dynamic_cast<const RecordedSource*>(giver->getManager());
    const auto shape = source == nullptr ? std::nullopt : source->getSampleShape(*giver);
    const std::optional<std::size_t> size =
        shape ? std::optional(shape->rows * shape->columns) : std::nullopt;
    if (!size || *size == 0 || named.names.empty() || *size == named.names.size()) return;
    complaints.add(named.where,
                   counted(named.names.size(), "column name") + " for '" + named.pin +
                       "', whose samples have " + counted(*size, "element"),
                   "as many names as elements");
}

std::vector<TableWriter::Group> RecordingSink::groups() const {
    std::unordered_map<std::string, std::vector<std::string>> names;
    for (const NamedColumns& named : columns)
        names.emplace(named.pin, named.names);
    std::vector<TableWriter::Group> list;
    for (const Core::InputPin<Core::MatrixXd>& pin : inputs) {
        TableWriter::Group& group = list.emplace_back();
        group.name = pin.getName();
        group.columns = names[group.name];
        const auto unit = units.find(group.name);
        const bool isShown = showsUnits.value_or(group.columns.empty());
        if (isShown && unit != units.end()) group.unit = unit->second;
    }
    return list;
}

/// A name and a unit may be what another column is called.
void RecordingSink::checkUnits(Complaints& complaints) const {
    std::set<std::string> used{timeName};
    for (const NamedColumns& named : columns)
        used.insert(named.names.begin(), named.names.end());
    for (const TableWriter::Group& group : groups()) {
        const auto named = std::find_if(columns.begin(), columns.end(), [&](const NamedColumns& candidate) {
            return candidate.pin == group.name;
        });
        for (std::size_t i = 0; i < group.columns.size() && !group.unit.empty(); ++i)
            if (!used.insert(group.getColumn(i)).second)
                complaints.add(named->where, "the column name '" + group.getColumn(i) + "' a second time",
                               "each name once");
    }
}

ResultOptions RecordingSink::options() const {
    const TableForm form{.timeName = timeName, .groups = groups(), .recorded = recorded};
    return {.overwrites = overwrites, .looksOwn = [form](std::string_view head) { return form.fits(head); }};
}

void RecordingSink::checkFile(const std::vector<std::string>& columnsOfRecordings, Complaints& complaints) {
    recorded = columnsOfRecordings;
    checkUnits(complaints);
    if (const auto refusal = ResultPath(getPath()).findRefusal(options()))
        complaints.add(getPathPlace(), refusal->found, refusal->expected);
}

void RecordingSink::open() {
    table = std::make_unique<TableWriter>(getPath(), timeName, groups(), options(), stop);
    samples.assign(inputs.size(), nullptr);
    gathered.resize(inputs.size());
}

void RecordingSink::finish() {
    endGatheredRow();
    table->finish();
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
