// SPDX-License-Identifier: MIT
#include "host/recording/RepairSettings.h"

#include "host/description/Quantity.h"
#include "host/recording/ReadingSettings.h"
#include "host/recording/TimeText.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quillmere::Host {

namespace {

/// Seconds, or hertz, with a unit or without.
std::optional<double> takeQuantity(const Value& value, Quantity::Kind kind, const std::string& expected,
                                   Complaints& complaints) {
    Complaints own;
    const std::optional<Quantity> quantity = toQuantity(value);
    if (quantity && quantity->kind == kind) return quantity->number;
    const std::optional<double> number = quantity ? std::nullopt : toNumber(value, own);
    if (number && std::isfinite(*number)) return number;
    complaints.add(value.where, value.describe(), expected, withNearestUnit(value));
    return std::nullopt;
}

/// One of the ends of what counts.
void takeMoment(const Value& value, double& seconds, std::optional<TimeRepairDate>& date,
                Complaints& complaints) {
    if (value.isScalar() && getIsTimeText(value.text)) {
        const auto nanoseconds = nanosecondsOf(value.text, DateOrder::YearFirst);
        if (nanoseconds && !getIsYearLast(value.text)) {
            date.emplace();
            date->nanoseconds = *nanoseconds;
            date->text = printable(value.text, kLongestName);
            date->where = value.where;
            return;
        }
    }
    const auto taken = takeQuantity(value, Quantity::Kind::Time,
                                    "a time in seconds, as 12.5 or 2 min, or a date and a time, as in "
                                    "\"2019-08-06 10:25:50\"",
                                    complaints);
    if (taken) seconds = *taken;
}

} // namespace

std::vector<HostBlock::SettingDescription> RepairSettings::getDescriptions() {
    return {
        {"duplicates", "keep, drop or error", "keep",
         "what a row does that repeats the time stamp before: it is a row as any other, left out, or ends "
         "the run"},
        {"backwards", "keep, drop or error", "keep",
         "what a row does whose time goes back; beside 'gaps' or 'resample' it ends the run without it"},
        {"gaps", "keep, error, nan or hold", "keep",
         "what a step beyond 'gapLimit' does: it stays, ends the run, or is filled with nan or the last "
         "values; nan with 'resample'"},
        {"gapLimit", "number", "none", "seconds behind which a step is a gap"},
        {"resample", "number", "none", "even rows a second, as 100 or 100 Hz, that the rows are made into"},
        {"interpolate", "linear, hold or map", "linear",
         "what stands between rows when they are resampled: a line, or the last value; {flag: hold} for a "
         "pin"},
        {"start", "number or text", "the first row", "the time that the rows begin at, in seconds or a date"},
        {"end", "number or text", "the last row", "the time from which on rows don't count"},
    };
}

bool RepairSettings::take(const GraphDescription::Setting& setting, Complaints& complaints) {
    const Value& value = setting.value;
    if (setting.name == "duplicates") {
        plan.onDuplicate = static_cast<OnDuplicate>(takeChoice(value, {"keep", "drop", "error"}, complaints));
    } else if (setting.name == "backwards") {
        onBackward = static_cast<OnBackward>(takeChoice(value, {"keep", "drop", "error"}, complaints));
    } else if (setting.name == "gaps") {
        onGap = static_cast<OnGap>(takeChoice(value, {"keep", "error", "nan", "hold"}, complaints));
    } else if (setting.name == "gapLimit") {
        takeLimit(value, complaints);
    } else if (setting.name == "resample") {
        takeRate(value, complaints);
    } else if (setting.name == "interpolate") {
        takeInterpolation(value, complaints);
    } else if (setting.name == "start") {
        takeMoment(value, plan.start, plan.startDate, complaints);
    } else if (setting.name == "end") {
        takeMoment(value, plan.end, plan.endDate, complaints);
    } else {
        return false;
    }
    Written& one = written.emplace_back();
    one.name = setting.name;
    one.text = setting.name + (value.isScalar() ? ": " + printable(value.text, kLongestName) : "");
    one.where = value.where;
    return true;
}

void RepairSettings::takeLimit(const Value& value, Complaints& complaints) {
    const std::string expected = "seconds above 0, as 0.05 or 50 ms";
    const auto limit = takeQuantity(value, Quantity::Kind::Time, expected, complaints);
    if (!limit) return;
    plan.gapLimit = *limit;
    if (!(*limit > 0.0)) complaints.add(value.where, value.describe(), expected);
}

void RepairSettings::takeRate(const Value& value, Complaints& complaints) {
    const std::string expected = "a rate above 0 rows a second, as 100 or 100 Hz";
    plan.resampleRate = takeQuantity(value, Quantity::Kind::Frequency, expected, complaints);
    if (plan.resampleRate && !std::isnormal(*plan.resampleRate * (*plan.resampleRate > 0.0 ? 1.0 : 0.0)))
        complaints.add(value.where, value.describe(), expected);
}

void RepairSettings::takeInterpolation(const Value& value, Complaints& complaints) {
    const std::vector<std::string> words{"linear", "hold"};
    if (value.kind != Value::Kind::Map) {
        isHeld = takeChoice(value, words, complaints) == 1;
        return;
    }
    for (const Value::Entry& entry : value.entries) {
        HeldPin& pin = heldPins.emplace_back();
        pin.name = entry.key;
        pin.where = entry.where;
        pin.isHeld = takeChoice(entry.value, words, complaints) == 1;
    }
}

const RepairSettings::Written* RepairSettings::findWritten(const std::string& name) const {
    const auto found =
        std::find_if(written.begin(), written.end(), [&](const Written& one) { return one.name == name; });
    return found == written.end() ? nullptr : &*found;
}

void RepairSettings::finish(const std::vector<std::string>& pins, Complaints& complaints) const {
    const Written* const limit = findWritten("gapLimit");
    const Written* const gaps = findWritten("gaps");
    const Written* const interpolation = findWritten("interpolate");
    if (getHasGaps() && limit == nullptr)
        complaints.add(gaps->where, "'" + gaps->text + "' without a limit",
                       "'gapLimit:' too, and the seconds behind which a step is a gap");
    if (limit != nullptr && !getHasGaps() && findWritten("resample") == nullptr)
        complaints.add(limit->where, "a 'gapLimit' that nothing asks for",
                       "'gaps:' with error, nan or hold, or 'resample:' too");
    if (interpolation != nullptr && findWritten("resample") == nullptr)
        complaints.add(interpolation->where, "'interpolate' without 'resample'",
                       "'resample:' too, and rows a second");
    if (onBackward == OnBackward::Keep && getNeedsOrder())
        complaints.add(findWritten("backwards")->where,
                       std::string("'backwards: keep' beside ") +
                           (plan.resampleRate ? "'resample'" : "'gaps'"),
                       "'error' or 'drop', since time has to go on for it");
    finishCut(complaints);
    for (const HeldPin& pin : heldPins)
        if (std::find(pins.begin(), pins.end(), pin.name) == pins.end())
            refuseName(complaints, pin.where, pin.name, "no pin '" + printable(pin.name, kLongestName) + "'",
                       "one of ", [&] { return pins; });
}

/// Which of two times of day is the later one, the recording tells.
void RepairSettings::finishCut(Complaints& complaints) const {
    const Written* const start = findWritten("start");
    const Written* const end = findWritten("end");
    if (start == nullptr || end == nullptr) return;
    if (plan.startDate.has_value() != plan.endDate.has_value())
        complaints.add(end->where,
                       "'" + end->text + "' beside '" + start->text +
                           "', of which one is a moment and the other counts seconds from the first",
                       "both as moments, or both in seconds of the recording's time");
    const bool isReversed = plan.startDate && plan.endDate
                                ? !plan.startDate->getIsOfDay() && !plan.endDate->getIsOfDay() &&
                                      plan.startDate->nanoseconds >= plan.endDate->nanoseconds
                                : !plan.startDate && !plan.endDate && plan.start >= plan.end;
    if (isReversed)
        complaints.add(end->where, "'" + end->text + "' that isn't behind '" + start->text + "'",
                       "a later one");
}

void RepairSettings::refuseRate(Complaints& complaints) const {
    for (const char* const name : {"duplicates", "backwards", "gaps"}) {
        const Written* const one = findWritten(name);
        if (one != nullptr)
            complaints.add(one->where, "'" + one->text + "' where a rate counts the times",
                           "'time:' and a column of time stamps, or no '" + one->name + ":'");
    }
}

TimeRepairPlan RepairSettings::getPlan(std::vector<TimeRepairPlan::Pin> pins) const {
    TimeRepairPlan whole = plan;
    whole.onBackward = onBackward.value_or(getNeedsOrder() ? OnBackward::Error : OnBackward::Keep);
    whole.onGap = onGap.value_or(plan.resampleRate ? OnGap::Nan : OnGap::Keep);
    whole.pins = std::move(pins);
    for (TimeRepairPlan::Pin& pin : whole.pins) {
        pin.isHeld = isHeld;
        for (const HeldPin& told : heldPins)
            if (told.name == pin.name) pin.isHeld = told.isHeld;
    }
    return whole;
}

} // namespace Quillmere::Host
