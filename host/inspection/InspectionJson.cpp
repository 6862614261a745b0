// SPDX-License-Identifier: MIT
#include "host/inspection/InspectionJson.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host::Json {

namespace {

Text numberOrNull(const std::optional<double>& value) {
    return value ? number(*value) : null();
}

Text textOrNull(const std::string& value) {
    return value.empty() ? null() : text(value);
}

Text finding(const SourceAccount::Finding& found) {
    Members members{{"count", std::to_string(found.count)}};
    if (found.count > 0) {
        members.emplace_back("row", std::to_string(found.first.row));
        members.emplace_back("line", found.first.line > 0 ? std::to_string(found.first.line) : null());
        members.emplace_back("before", number(found.first.before));
        members.emplace_back("time", number(found.first.time));
    }
    return object(members);
}

Text times(const Inspection& found) {
    constexpr const char* kClocks[] = {"none", "column", "given rate", "file's rate"};
    Members members{{"clock", text(kClocks[static_cast<std::size_t>(found.clock)])}};
    const bool isTimed = found.clock != Inspection::Clock::None && found.rows > 0;
    members.emplace_back("first", isTimed ? number(found.times.firstTime) : null());
    members.emplace_back("last", isTimed ? number(found.times.lastTime) : null());
    members.emplace_back("duration", isTimed ? number(found.times.getLength()) : null());
    members.emplace_back("statedRate", numberOrNull(found.statedRate));
    members.emplace_back("measuredRate", found.measuredRate ? number(found.measuredRate->perSecond) : null());
    members.emplace_back("isSteady", found.measuredRate ? flag(found.measuredRate->getIsSteady()) : null());
    members.emplace_back("step5", numberOrNull(found.shortStep));
    members.emplace_back("step50", numberOrNull(found.middleStep));
    members.emplace_back("step95", numberOrNull(found.longStep));
    members.emplace_back("stepLargest", numberOrNull(found.longestStep));
    members.emplace_back("duplicates", finding(found.times.equal));
    members.emplace_back("backwards", finding(found.times.backward));
    members.emplace_back("gaps", finding(found.times.jumps));
    return object(members);
}

/// Two lists of numbers, null where a piece has none.
Text picture(const std::vector<NumberRange>& pieces) {
    std::vector<Text> low;
    std::vector<Text> high;
    for (const NumberRange& piece : pieces) {
        low.push_back(number(piece.smallest)); // null where it is infinite
        high.push_back(number(piece.largest));
    }
    return object({{"smallest", list(low)}, {"largest", list(high)}});
}

Text column(const Inspection::Column& found) {
    return object({{"name", text(found.described.name)},
                   {"unit", textOrNull(found.described.unit)},
                   {"isTime", flag(found.isTime)},
                   {"isNumber", flag(found.isRead)},
                   {"numbers", std::to_string(found.numbers)},
                   {"emptyCells", std::to_string(found.emptyCells)},
                   {"missingCells", std::to_string(found.missingCells)},
                   {"oddCells", std::to_string(found.oddCells)},
                   {"smallest", numberOrNull(found.smallest)},
                   {"largest", numberOrNull(found.largest)},
                   {"isConstant", flag(found.isConstant)},
                   {"rowsClippedBelow", std::to_string(found.rowsClippedBelow)},
                   {"rowsClippedAbove", std::to_string(found.rowsClippedAbove)},
                   {"picture", picture(found.picture)}});
}

Text group(const Inspection& found, const Inspection::Group& one) {
    std::vector<std::string> names;
    for (const std::size_t index : one.axes.columns)
        names.push_back(found.columns[index].described.name);
    return object({{"name", text(one.axes.name)},
                   {"columns", listOfTexts(names)},
                   {"medianLength", numberOrNull(one.medianLength)},
                   {"guessedUnit", textOrNull(one.guessedUnit)}});
}

} // namespace

Text inspection(const Inspection& found) {
    std::vector<Text> columns;
    for (const Inspection::Column& one : found.columns)
        columns.push_back(column(one));
    std::vector<Text> groups;
    for (const Inspection::Group& one : found.groups)
        groups.push_back(group(found, one));
    return object({{"file", text(found.path)},
                   {"form", listOfTexts(found.form)},
                   {"notes", listOfTexts(found.notes)},
                   {"rows", std::to_string(found.rows)},
                   {"badRows", std::to_string(found.badRows)},
                   {"mendedRows", std::to_string(found.mendedRows)},
                   {"firstFaults", listOfTexts(found.firstFaults)},
                   {"changedMeanwhile", flag(found.isChangedMeanwhile)},
                   {"times", times(found)},
                   {"columns", list(columns)},
                   {"groups", list(groups)}});
}

} // namespace Quillmere::Host::Json
