// SPDX-License-Identifier: MIT
#include "host/recording/UnitPlanner.h"

#include "host/recording/ColumnUnits.h"
#include "host/recording/UnitText.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace Quillmere::Host {

namespace {

using Columns = std::vector<RecordingReader::Column>;

/// Columns of a pin that have one unit.
struct UnitGroup {
    ColumnUnit unit;
    std::vector<std::string> columns;
};

std::vector<UnitGroup> groupsOf(const std::vector<std::size_t>& indices, const Columns& columns,
                                const std::vector<ColumnUnit>& units) {
    std::vector<UnitGroup> groups;
    std::map<std::tuple<const Unit*, std::string, std::string>, std::size_t> known; // there may be many
    for (const std::size_t index : indices) {
        const ColumnUnit& unit = units[index];
        const std::string text = unit.unit == nullptr ? unit.text : std::string();
        const auto [group, isNew] = known.try_emplace({unit.unit, text, unit.overruled}, groups.size());
        if (isNew) groups.emplace_back().unit = unit;
        groups[group->second].columns.push_back(columns[index].name);
    }
    return groups;
}

std::string quotedDimension(const Unit& unit) {
    return std::string(" (") + nameOf(unit.dimension) + ")";
}

/// Complains of columns that can't be converted into what a pin is to have.
void refuseGroup(const UnitGroup& group, const RecordingSettings::Pin& pin, const std::string& path,
                 Complaints& complaints) {
    const bool isOne = group.columns.size() == 1;
    const std::string columns = (isOne ? "the column " : "the columns ") + listOfNames(group.columns);
    const std::string where = columns + " in " + path;
    const std::string wish = ", while the pin '" + printable(pin.name, kLongestName) + "' is to have " +
                             printable(pin.unit.text, kLongestName) + quotedDimension(*pin.unit.unit);
    const std::string statement = "'units: {" +
                                  printable(nameWithoutUnit(group.columns.front()), kLongestName) +
                                  ": UNIT}' with what " + (isOne ? "it is in" : "each of them is in");
    const std::string text = printable(group.unit.text, kLongestName);
    if (group.unit.text.empty())
        complaints.add(pin.unit.where, "no unit of " + where + wish, statement);
    else if (group.unit.unit == nullptr)
        complaints.add(pin.unit.where, "the unit '" + text + "' of " + where + wish,
                       std::string(kSomeUnits) + ", or " + statement, nearestUnit(group.unit.text));
    else
        complaints.add(pin.unit.where,
                       columns + " of " + path + " in " + text + quotedDimension(*group.unit.unit) + wish,
                       "one of " + listOfNames(namesOfUnits(group.unit.unit->dimension)) + ", or " +
                           statement);
}

/// `accel: m/s^2 from g (ax, ay), m/s^2 from mg as the graph says, not g (az)`; empty where nothing is
/// converted, and the graph overrules nothing.
std::string noteOf(const RecordingSettings::Pin& pin, const std::vector<UnitGroup>& groups) {
    std::string note;
    for (const UnitGroup& group : groups) {
        const bool isConverted = pin.unit.unit != nullptr && pin.unit.unit != group.unit.unit;
        const bool isOverruled = !group.unit.overruled.empty();
        if (!isConverted && !isOverruled) continue;
        note += note.empty() ? printable(pin.name, kLongestName) + ": " : ", ";
        if (isConverted) note += printable(pin.unit.text, kLongestName) + " from ";
        note += printable(group.unit.text, kLongestName);
        if (isOverruled) note += " as the graph says, not " + printable(group.unit.overruled, kLongestName);
        if (groups.size() > 1) note += " (" + listOfNames(group.columns) + ")";
    }
    return note;
}

/// What all elements of a pin's samples have.
std::string unitOf(const RecordingSettings::Pin& pin, const std::vector<UnitGroup>& groups) {
    if (pin.unit.unit != nullptr) return pin.unit.text;
    if (groups.empty()) return {};
    const ColumnUnit& first = groups.front().unit;
    const bool isOne = std::all_of(groups.begin(), groups.end(), [&](const UnitGroup& group) {
        return group.unit.unit == first.unit && (first.unit != nullptr || group.unit.text == first.text);
    });
    return isOne ? first.text : "";
}

/// Nothing, with complaints, for a unit that the columns can't have.
std::optional<UnitPlan::Pin> planPin(const RecordingSettings::Pin& pin,
                                     const std::vector<std::size_t>& indices,
                                     const std::vector<ColumnUnit>& units,
                                     const std::vector<UnitGroup>& groups, const std::string& path,
                                     Complaints& complaints) {
    UnitPlan::Pin planned;
    planned.unit = unitOf(pin, groups);
    if (pin.unit.unit == nullptr) return planned;
    bool isPossible = true;
    for (const UnitGroup& group : groups) {
        if (group.unit.unit != nullptr && conversionBetween(*group.unit.unit, *pin.unit.unit)) continue;
        refuseGroup(group, pin, path, complaints);
        isPossible = false;
    }
    if (!isPossible) return std::nullopt;
    bool isAny = false;
    for (const std::size_t index : indices) {
        planned.conversions.push_back(*conversionBetween(*units[index].unit, *pin.unit.unit));
        isAny = isAny || planned.conversions.back().kind != UnitConversion::Kind::None;
    }
    if (!isAny) planned.conversions.clear();
    return planned;
}

} // namespace

void UnitPlan::Pin::convert(double* sample, std::size_t size) const {
    const std::size_t columns = conversions.size();
    for (std::size_t column = 0; column < columns; ++column) {
        const UnitConversion conversion = conversions[column];
        for (std::size_t i = column; i < size; i += columns)
            sample[i] = conversion.applyTo(sample[i]);
    }
}

std::optional<UnitPlan> planUnits(const RecordingReader& reader, const std::string& path,
                                  const RecordingSettings& settings, const RowPlan& plan,
                                  Complaints& complaints) {
    Complaints own;
    const std::vector<ColumnUnit> units = findUnits(reader.getColumns(), settings.units, path, own);
    UnitPlan result;
    std::vector<char> isRead(units.size(), 0);
    for (std::size_t i = 0; i < plan.pins.size(); ++i) {
        std::vector<std::size_t> indices;
        for (const std::size_t cell : plan.pins[i].cells) {
            indices.push_back(plan.chosen[cell]);
            isRead[indices.back()] = 1;
        }
        const RecordingSettings::Pin& pin = settings.pins[i];
        const std::vector<UnitGroup> groups = groupsOf(indices, reader.getColumns(), units);
        if (auto planned = planPin(pin, indices, units, groups, path, own))
            result.pins.push_back(std::move(*planned));
        if (std::string note = noteOf(pin, groups); !note.empty()) result.notes.push_back(std::move(note));
    }
    const auto time = plan.timeCell ? std::optional(plan.chosen[*plan.timeCell]) : reader.getTimeColumn();
    const bool isTimed = time && plan.rate == 0.0;
    if (isTimed && isRead[*time] == 0) refuseUnitOfTime(reader.getColumns()[*time].name, settings.units, own);
    complaints.add(own);
    return own.isEmpty() ? std::optional(std::move(result)) : std::nullopt;
}

} // namespace Quillmere::Host
