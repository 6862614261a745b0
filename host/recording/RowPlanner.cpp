// SPDX-License-Identifier: MIT
#include "host/recording/RowPlanner.h"

#include "host/recording/ColumnFinder.h"
#include "host/recording/ColumnPattern.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Quillmere::Host {

namespace {

/// Puts the columns that fit a pattern in its place; false when they have no order. A column of that very
/// name is no pattern.
bool unfoldPatterns(const std::vector<std::string>& names, const std::string& path,
                    RecordingSettings& settings, Complaints& complaints) {
    bool hasAll = true;
    for (RecordingSettings::Pin& pin : settings.pins) {
        std::vector<NamedColumn> columns;
        for (const NamedColumn& column : pin.columns) {
            const bool isPattern = column.name.find('*') != std::string::npos &&
                                   std::find(names.begin(), names.end(), column.name) == names.end();
            const auto found = isPattern ? findByPattern(names, column.name) : std::vector<std::size_t>();
            for (const std::size_t one : found)
                columns.push_back({names[one], column.where});
            if (!found.empty()) continue;
            columns.push_back(column);
            if (!isPattern) continue;
            const std::vector<std::string> fitting = namesThatFit(names, column.name);
            if (fitting.empty()) continue; // planning complains of it as of any name
            hasAll = false;
            complaints.add(column.where,
                           "'" + printable(column.name, kLongestName) + "', which is " +
                               listOfNames(fitting) + " in " + path,
                           "a pattern for one column, or for columns whose names differ by their axis alone: "
                           "x, y and z, or w, x, y and z");
        }
        pin.columns = std::move(columns);
    }
    return hasAll;
}

/// Gathers the columns of a plan. A column may stand in several pins; the reader gives it once.
class CellPlanner {
public:
    CellPlanner(RowPlan& thePlan, const ColumnFinder& theFinder, Complaints& theComplaints)
        : plan(thePlan), finder(theFinder), complaints(theComplaints) {}

    /// The place of its value; 0, with a complaint, when there is no such column.
    std::size_t cellOf(const NamedColumn& column) {
        const std::optional<std::size_t> index = finder.find(column.name, column.where, complaints);
        hasAll = hasAll && index;
        return index ? cellOf(*index) : 0;
    }
    std::size_t cellOf(std::size_t index) {
        const auto [cell, isNew] = cells.try_emplace(index, plan.chosen.size());
        if (isNew) plan.chosen.push_back(index);
        return cell->second;
    }
    bool getHasAll() const { return hasAll; }

private:
    RowPlan& plan;
    const ColumnFinder& finder;
    Complaints& complaints;
    std::unordered_map<std::size_t, std::size_t> cells; ///< Of each column that is chosen.
    bool hasAll = true;
};

/// False when a column isn't there.
bool planCells(const RecordingReader& reader, const std::string& path, const RecordingSettings& settings,
               RowPlan& plan, Complaints& complaints) {
    const std::vector<std::string> names = reader.getColumnNames();
    const ColumnFinder finder(path, names);
    CellPlanner cells(plan, finder, complaints);
    for (const RecordingSettings::Pin& pin : settings.pins) {
        plan.pins.push_back({pin.name, {}});
        for (const NamedColumn& column : pin.columns)
            plan.pins.back().cells.push_back(cells.cellOf(column));
    }
    plan.hasOwnTimes = reader.getHasOwnTimes();
    for (const NamedColumn& column : settings.clock.columns) {
        if (plan.hasOwnTimes)
            finder.find(column.name, column.where, complaints);
        else
            plan.timeCell = cells.cellOf(column);
    }
    if (settings.clock.columns.empty() && reader.getTimeColumn() && !plan.hasOwnTimes && !settings.clock.rate)
        plan.timeCell = cells.cellOf(*reader.getTimeColumn());
    return cells.getHasAll();
}

/// Where nobody says when rows were taken, the file has to.
bool planTimes(const RecordingReader& reader, const std::string& path, const Place& pathPlace,
               const RecordingSettings& settings, RowPlan& plan, Complaints& complaints) {
    plan.rate = settings.clock.rate.value_or(0.0);
    if (settings.clock.rate || plan.timeCell || plan.hasOwnTimes) return true;
    if (reader.getRate()) {
        plan.rate = *reader.getRate();
        return true;
    }
    complaints.add(pathPlace, "no column of times in " + path + ", and no rate",
                   "'time:' and a column, or 'rate:' and rows a second");
    return false;
}

} // namespace

std::optional<RowPlan> planRows(const RecordingReader& reader, const std::string& path,
                                const Place& pathPlace, RecordingSettings& settings, Complaints& complaints) {
    if (!unfoldPatterns(reader.getColumnNames(), path, settings, complaints)) return std::nullopt;
    RowPlan plan;
    plan.isFramed = settings.getIsFramed();
    plan.onBadRow = settings.onBadRow;
    plan.onCutEnd = settings.onCutEnd;
    plan.missing = settings.wishes.missing;
    if (!planCells(reader, path, settings, plan, complaints)) return std::nullopt;
    if (!planTimes(reader, path, pathPlace, settings, plan, complaints)) return std::nullopt;
    return plan;
}

} // namespace Quillmere::Host
