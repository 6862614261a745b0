// SPDX-License-Identifier: MIT
#include "host/recording/ResultColumns.h"

#include "host/description/Unit.h"
#include "host/ends/ColumnName.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/ShapeGiver.h"
#include "host/recording/UnitText.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <set>
#include <unordered_set>

namespace Quillmere::Host {

namespace {
constexpr const char* kExpectedName = "a name in one line, without control characters";

/// The pin that would have a column of this name, counted as in `accel[0]`, with a unit or without; empty
/// when the name doesn't count.
std::string countedPin(std::string name) {
    if (name.find(" [") != std::string::npos) name = nameWithoutUnit(name);
    const std::optional<CountedName> counted = countedNameOf(name);
    return counted ? std::string(counted->pin) : std::string();
}

/// How many elements a sample has is known beforehand where nothing between a recording and the sink changes
/// its shape.
void checkWidth(const std::string& pin, const std::vector<std::string>& names, const Place& where,
                const Core::AbstractInputPin& input, Complaints& complaints) {
    const Core::AbstractOutputPin* const giver = shapeGiverOf(input);
    const auto* const source =
        giver == nullptr ? nullptr : dynamic_cast<const RecordedSource*>(giver->getManager());
    const auto shape = source == nullptr ? std::nullopt : source->getSampleShape(*giver);
    const std::optional<std::size_t> size =
        shape ? std::optional(shape->rows * shape->columns) : std::nullopt;
    if (!size || *size == 0 || names.empty() || *size == names.size()) return;
    complaints.add(where,
                   counted(names.size(), "column name") + " for '" + pin + "', whose samples have " +
                       counted(*size, "element"),
                   "as many names as elements");
}

/// Of a name with a unit in it that the values don't have.
void warnOfOtherUnit(const std::string& name, const std::string& unit, const Place& where,
                     Complaints& complaints) {
    const Unit* const told = findUnit(unitOfName(name));
    const Unit* const real = findUnit(unit);
    if (told == nullptr || real == nullptr || told == real) return;
    const Complaint complaint{{},
                              "the column name '" + printable(name, kLongestName) + "' for values in " + unit,
                              "a name with that unit, or without one"};
    complaints.warn(where, complaint.getText());
}
} // namespace

void ResultColumns::takeTime(const Value& value, Complaints& complaints) {
    timePlace = value.where;
    const auto name = toText(value, complaints);
    if (!name) return;
    if (!getIsColumnName(*name)) complaints.add(value.where, value.describe(), kExpectedName);
    timeName = *name;
}

bool ResultColumns::take(const GraphDescription::Setting& setting, Complaints& complaints) {
    if (setting.name == "columns")
        takeNames(setting.value, complaints);
    else if (setting.name == "units")
        showsUnits = toFlag(setting.value, complaints);
    else
        return false;
    return true;
}

void ResultColumns::takeNames(const Value& value, Complaints& complaints) {
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

void ResultColumns::setUnit(const std::string& pin, const std::string& unit) {
    units[pin] = unitForName(unit);
}

void ResultColumns::check(const Pins& pins, Complaints& complaints) const {
    std::unordered_map<std::string, const Core::AbstractInputPin*> inputs;
    std::vector<std::string> known;
    for (const auto& pin : pins) {
        inputs.emplace(pin.getName(), &pin);
        known.push_back(pin.getName());
    }
    std::unordered_set<std::string> namedPins;
    for (const NamedColumns& named : columns) {
        namedPins.insert(named.pin);
        if (const auto input = inputs.find(named.pin); input != inputs.end())
            checkWidth(named.pin, named.names, named.where, *input->second, complaints);
        else
            refuseName(complaints, named.where, named.pin,
                       "the pin '" + printable(named.pin, kLongestName) + "' that no connection leads to",
                       "one of ", [&] { return known; });
    }
    // A pin without names gives its columns `pin[0]` and so on, which others must not have.
    const auto checkName = [&](const std::string& name, const Place& where) {
        const std::string pin = countedPin(name);
        if (!pin.empty() && inputs.contains(pin) && !namedPins.contains(pin))
            complaints.add(where,
                           "the column name '" + printable(name, kLongestName) + "', which a column of '" +
                               printable(pin, kLongestName) + "' has too",
                           "each name once");
    };
    checkName(timeName, timePlace);
    for (const NamedColumns& named : columns)
        for (const std::string& name : named.names)
            checkName(name, named.where);
}

/// A name and a unit may be what another column is called.
void ResultColumns::checkUnits(const Pins& pins, Complaints& complaints) const {
    std::set<std::string> used{timeName};
    for (const NamedColumns& named : columns)
        used.insert(named.names.begin(), named.names.end());
    for (const TableWriter::Group& group : getGroups(pins))
        for (std::size_t i = 0; i < group.columns.size() && !group.unit.empty(); ++i)
            if (!used.insert(group.getColumn(i)).second)
                complaints.add(find(group.name)->where,
                               "the column name '" + group.getColumn(i) + "' a second time",
                               "each name once");
    for (const NamedColumns& named : columns)
        if (const auto unit = units.find(named.pin); unit != units.end())
            for (const std::string& name : named.names)
                warnOfOtherUnit(name, unit->second, named.where, complaints);
}

std::vector<TableWriter::Group> ResultColumns::getGroups(const Pins& pins) const {
    std::unordered_map<std::string, std::vector<std::string>> names;
    for (const NamedColumns& named : columns)
        names.emplace(named.pin, named.names);
    std::vector<TableWriter::Group> list;
    for (const auto& pin : pins) {
        TableWriter::Group& group = list.emplace_back();
        group.name = pin.getName();
        group.columns = names[group.name];
        const auto unit = units.find(group.name);
        const bool isShown = showsUnits.value_or(group.columns.empty());
        if (isShown && unit != units.end()) group.unit = unit->second;
    }
    return list;
}

const ResultColumns::NamedColumns* ResultColumns::find(const std::string& pin) const {
    const auto named = std::find_if(columns.begin(), columns.end(),
                                    [&](const NamedColumns& candidate) { return candidate.pin == pin; });
    return named == columns.end() ? nullptr : &*named;
}

std::string ResultColumns::getName(const std::string& pin, std::size_t element) const {
    const NamedColumns* const named = find(pin);
    return named == nullptr ? pin + "[" + std::to_string(element) + "]" : named->names[element];
}

} // namespace Quillmere::Host
