// SPDX-License-Identifier: MIT
#include "host/inspection/InspectionReport.h"

#include "host/ends/StandardStream.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/text/Table.h"

#include <cstdio>
#include <utility>

namespace Quillmere::Host {

namespace {

using Clock = Inspection::Clock;

constexpr std::size_t kColumnsShown = 200;
constexpr std::size_t kPictureWidth = 40;
constexpr double kGap = 10.0; ///< Median steps, as gaps are counted.

std::string shortNumber(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string shortNumber(const std::optional<double>& number) {
    return number ? shortNumber(*number) : "-";
}

std::string quotedName(const std::string& name) {
    return std::string("'").append(printable(name, kLongestName)) + "'";
}

std::string pathOf(const Inspection& found) {
    return getIsStandardStream(found.path) ? "standard input" : printable(found.path, kLongestName * 4);
}

std::string headOf(const Inspection& found) {
    std::string text =
        pathOf(found) + ": " + counted(found.rows, "row") + ", " + counted(found.columns.size(), "column");
    if (found.clock != Clock::None && found.rows > 1)
        text += ", " + shortNumber(found.times.getLength()) + " s";
    return text;
}

std::string clockOf(const Inspection& found) {
    switch (found.clock) {
    case Clock::Column:
        for (const Inspection::Column& column : found.columns)
            if (column.isTime)
                return "column " + quotedName(column.described.name) + ", from " +
                       shortNumber(found.times.firstTime) + " s to " + shortNumber(found.times.lastTime) +
                       " s";
        break;
    case Clock::SaidRate:
        return "rows counted by the rate that is given";
    case Clock::FilesRate:
        return "rows counted by the rate that the file states";
    case Clock::None:
        break;
    }
    return "none: no column of times and no rate; say 'time' and a column, or 'rate' and rows a second";
}

std::string rateOf(const Inspection& found) {
    std::string text = found.statedRate ? shortNumber(*found.statedRate) + " rows/s stated" : "none stated";
    if (found.measuredRate)
        text += ", " + shortNumber(found.measuredRate->perSecond) + " rows/s measured" +
                (found.measuredRate->getIsSteady() ? "" : ", unsteadily");
    return text;
}

std::string stepsOf(const Inspection& found) {
    return "5 % up to " + shortNumber(found.shortStep) + " s, median " + shortNumber(found.middleStep) +
           " s, 95 % up to " + shortNumber(found.longStep) + " s, largest " + shortNumber(found.longestStep) +
           " s";
}

std::string findingOf(const SourceAccount::Finding& finding, const std::string& one,
                      const std::string& several) {
    std::string text = counted(finding.count, one, several);
    if (finding.count == 0) return text;
    const SourceAccount::Spot& spot = finding.first;
    return text + ", first in " +
           (spot.line > 0 ? "line " + std::to_string(spot.line) : "row " + std::to_string(spot.row)) + " (" +
           shortNumber(spot.before) + " s, then " + shortNumber(spot.time) + " s)";
}

/// A heading beside the first of its lines.
void add(Table& table, const std::string& heading, const std::vector<std::string>& lines) {
    bool isFirst = true;
    for (const std::string& line : lines)
        table.add({std::exchange(isFirst, false) ? heading : "", line});
}

std::vector<std::string> faultsOf(const Inspection& found) {
    std::vector<std::string> lines;
    if (found.badRows > 0)
        lines.push_back(counted(found.badRows, "row") +
                        " not counted: too few or too many cells, or no time");
    if (found.mendedRows > 0)
        lines.push_back(counted(found.mendedRows, "row") + " with a cell that is no number");
    for (const std::string& fault : found.firstFaults)
        lines.push_back(fault);
    if (found.isChangedMeanwhile) lines.emplace_back("the file was written to while it was read");
    return lines;
}

std::string aboutRows(const Inspection& found) {
    Table table(2);
    add(table, "form", found.form);
    add(table, "guessed", found.notes);
    add(table, "times", {clockOf(found)});
    if (found.clock != Clock::None) add(table, "rate", {rateOf(found)});
    if (found.clock == Clock::Column && found.middleStep) {
        add(table, "steps", {stepsOf(found)});
        add(table, "odd",
            {findingOf(found.times.equal, "time stamp equal to the one before",
                       "time stamps equal to the ones before"),
             findingOf(found.times.backward, "time stamp that goes back", "time stamps that go back"),
             findingOf(found.times.jumps, "gap of more than ten median steps",
                       "gaps of more than ten median steps")});
    }
    add(table, "faults", faultsOf(found));
    return table.getText();
}

/// What a user should look at.
std::string remarkOf(const Inspection::Column& column) {
    if (column.isTime) return "times";
    if (!column.isRead) return "no numbers";
    if (column.isConstant) return "constant";
    if (column.rowsClippedBelow > 0 && column.rowsClippedAbove > 0) return "clipped on both sides";
    if (column.rowsClippedBelow > 0) return "clipped below";
    return column.rowsClippedAbove > 0 ? "clipped above" : "";
}

std::string shareText(double share) {
    char text[40];
    const double percent = 100.0 * share;
    std::snprintf(text, sizeof text, percent < 99.5 ? "%.2g %%" : "%.3g %%", percent); // no 1e+02
    return share > 0.0 ? text : "";
}

std::string aboutColumns(const Inspection& found, bool isUtf8) {
    Table table(2);
    table.add({"column", "unit", "smallest", "largest", "missing", "", ""});
    for (std::size_t i = 0; i < found.columns.size() && i < kColumnsShown; ++i) {
        const Inspection::Column& column = found.columns[i];
        table.add({printable(column.described.name.empty() ? "''" : column.described.name, kLongestName),
                   column.described.unit.empty() ? "-" : printable(column.described.unit, kLongestName),
                   shortNumber(column.smallest), shortNumber(column.largest),
                   shareText(column.getShareWithout()), remarkOf(column),
                   column.isTime ? "" : pictureText(column.picture, kPictureWidth, isUtf8)});
    }
    std::string text = table.getText();
    if (found.columns.size() > kColumnsShown)
        text += "  and " + counted(found.columns.size() - kColumnsShown, "more column") + "\n";
    return text;
}

std::string aboutGroups(const Inspection& found) {
    std::string text;
    for (const Inspection::Group& group : found.groups) {
        std::vector<std::string> names;
        for (const std::size_t column : group.axes.columns)
            names.push_back(found.columns[column].described.name);
        const std::string name =
            group.axes.name.empty() ? listOfNames(names) : printable(group.axes.name, kLongestName);
        if (!group.medianLength) continue;
        text += "  no unit is stated for " + name + ", whose median length is " +
                shortNumber(*group.medianLength) +
                (group.guessedUnit.empty() ? "" : ": " + group.guessedUnit + "?") + "\n";
    }
    return text;
}

/// What a source can do about times that are odd, if that is what is wanted.
std::string aboutRepairs(const Inspection& found) {
    if (found.clock != Clock::Column) return "";
    std::string text;
    if (found.times.equal.count > 0)
        text += "  'duplicates: drop' leaves out rows that repeat a time stamp\n";
    if (found.times.backward.count > 0) text += "  'backwards: drop' leaves out rows that go back\n";
    if (found.times.jumps.count > 0)
        text += "  'gaps: nan' and 'gapLimit: " + shortNumber(kGap * *found.times.medianStep) +
                "' fill the gaps of more than ten median steps\n";
    if (found.measuredRate && !found.measuredRate->getIsSteady())
        text += "  'resample: " + shortNumber(found.measuredRate->perSecond) + "' makes the steps even\n";
    return text;
}

} // namespace

std::string inspectionAsText(const Inspection& found, bool isUtf8) {
    std::string text = headOf(found) + "\n" + aboutRows(found) + "\n" + aboutColumns(found, isUtf8);
    for (const std::string& part : {aboutGroups(found), aboutRepairs(found)})
        if (!part.empty()) text += "\n" + part;
    return text;
}

} // namespace Quillmere::Host
