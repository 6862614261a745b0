// SPDX-License-Identifier: MIT
#include "host/recording/RecordingSettings.h"

#include "host/description/Quantity.h"
#include "host/text/Counted.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace Quillmere::Host {

namespace {

constexpr std::int64_t kLargestCount = std::numeric_limits<std::int32_t>::max();

std::size_t takeCount(const Value& value, Complaints& complaints) {
    const auto count = toWhole(value, complaints);
    if (!count) return 1;
    if (*count >= 1 && *count <= kLargestCount) return static_cast<std::size_t>(*count);
    complaints.add(value.where, value.describe(), "a whole number from 1 to 2147483647");
    return 1;
}

void takeColumns(const Value& value, RecordingSettings::Pin& pin, Complaints& complaints) {
    const std::string expected = "a list of columns, as in [ax, ay, az]";
    if (value.isScalar()) {
        pin.columns.push_back({value.text, value.where});
        return;
    }
    if (value.kind != Value::Kind::List || value.items.empty()) {
        complaints.add(value.where, value.kind == Value::Kind::List ? "an empty list" : value.describe(),
                       expected);
        return;
    }
    for (const Value& item : value.items)
        if (const auto name = toText(item, complaints)) pin.columns.push_back({*name, item.where});
}

/// `{columns: [ax, ay, az], unit: g}`.
void takePin(const Value& value, RecordingSettings::Pin& pin, Complaints& complaints) {
    if (value.kind != Value::Kind::Map) return takeColumns(value, pin, complaints);
    for (const Value::Entry& entry : value.entries) {
        if (entry.key == "columns")
            takeColumns(entry.value, pin, complaints);
        else if (entry.key == "unit")
            pin.unit = takeUnit(entry.value, complaints).value_or(NamedUnit{});
        else
            complaints.add(Complaint::unknown(entry.where,
                                              "the key '" + printable(entry.key, kLongestName) + "'",
                                              entry.key, {"columns", "unit"}));
    }
    if (value.find("columns") == nullptr)
        complaints.add(value.where, "no columns for the pin '" + printable(pin.name, kLongestName) + "'",
                       "'columns:' and a list, as in {columns: [ax, ay, az], unit: g}");
}

/// Of none it is the file that may have one.
void refuseTwoClocks(const GraphDescription::Block& description, const std::string& name,
                     Complaints& complaints) {
    std::vector<std::string> ofFile;
    std::size_t ofCaller = 0;
    for (const GraphDescription::Setting& setting : description.settings) {
        if (setting.name != "time" && setting.name != "rate") continue;
        if (setting.origin == GraphDescription::Setting::Origin::File)
            ofFile.push_back(setting.name);
        else
            ++ofCaller;
    }
    const std::size_t clocks = ofFile.size() + ofCaller;
    if (clocks < 2) return;
    const std::string wayOut =
        ofFile.size() == 1 && ofCaller == 1
            ? "; '--set " + name + "." + ofFile.front() + "=null' takes the graph's away"
            : "";
    complaints.add(description.where, "the RecordingSource '" + name + "' with two clocks",
                   "either 'time:' and a column or 'rate:' and rows a second" + wayOut);
}

} // namespace

std::vector<HostBlock::SettingDescription> RecordingSettings::getDescriptions() {
    std::vector<HostBlock::SettingDescription> all{
        {"data", "text", "the one", "the path of a variable in a MAT or HDF5 file, as in imu/LowerBack/Acc"},
        {"pins", "map", "",
         "for each output pin the list of its columns, as in {accel: [ax, ay, az]}, or a pattern: "
         "{accel: acc*}; or with the unit that it is to have: {accel: {columns: acc*, unit: g}}"},
        {"units", "map", "as the file says",
         "the unit that columns have, by name or by pattern, as in {ax: mg, \"gyr*\": deg/s}"},
        {"time", "text or list", "as the file looks",
         "the column, or the path of the variable, that holds the time in seconds, or [date, time]"},
        {"rate", "number or frequency", "by time", "rows a second, for a recording without a time column"},
        {"nominalRate", "number or frequency", "by time",
         "rows a second for settings in hertz and seconds, beside times that don't tell it"},
        {"frame", "whole number or time", "none", "rows that make one sample; without it each row is one"},
        {"hop", "whole number or time", "as frame",
         "rows from the begin of a frame to the begin of the next"},
        {"onBadRow", "error, skip or nan", "error",
         "what a row with a bad cell does: it ends the run, is passed over, or has nan there"},
        {"missing", "list", "none", "texts of cells that stand for nan, as in [NA, \"\"]"},
        {"onCutEnd", "keep, error or drop", "keep",
         "what a last line without its end does: it is a row as any other, ends the run, or is left "
         "out"}};
    for (auto& more : {getReadingSettings(), RepairSettings::getDescriptions()})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

bool RecordingSettings::take(const GraphDescription::Setting& setting, Complaints& complaints) {
    const Value& value = setting.value;
    if (setting.name == "frame") {
        frameWhere = value.where;
        frameRows = takeLength(value, frameTime, complaints);
    } else if (setting.name == "hop") {
        hop = takeLength(value, hopTime, complaints);
    } else if (setting.name == "nominalRate") {
        nominalRate = takeRate(value, complaints);
    } else if (setting.name == "pins") {
        takePins(value, complaints);
    } else if (setting.name == "units") {
        units = takeUnits(value, complaints);
    } else if (setting.name == "onBadRow") {
        onBadRow = static_cast<OnBadRow>(takeChoice(value, {"error", "skip", "nan"}, complaints));
    } else if (setting.name == "onCutEnd") {
        onCutEnd = static_cast<OnCutEnd>(takeChoice(value, {"keep", "error", "drop"}, complaints));
    } else if (!repairs.take(setting, complaints)) {
        return takeReadingSetting(setting, wishes, clock, complaints);
    }
    return true;
}

void RecordingSettings::takePins(const Value& value, Complaints& complaints) {
    if (value.kind != Value::Kind::Map || value.entries.empty()) {
        complaints.add(value.where, value.kind == Value::Kind::Map ? "no pins" : value.describe(),
                       "for each pin its columns, as in {accel: [ax, ay, az]}");
        return;
    }
    for (const Value::Entry& entry : value.entries) {
        if (entry.key.empty()) complaints.add(entry.where, "a pin without a name", "a name");
        pins.emplace_back().name = entry.key;
        takePin(entry.value, pins.back(), complaints);
    }
}

void RecordingSettings::finish(const std::string& block, const GraphDescription::Block& description,
                               Complaints& complaints) {
    refuseTwoClocks(description, block, complaints);
    const auto isPins = [](const GraphDescription::Setting& setting) { return setting.name == "pins"; };
    if (std::none_of(description.settings.begin(), description.settings.end(), isPins))
        complaints.add(description.where, "the RecordingSource '" + block + "' without pins",
                       "'pins:' and for each pin its columns, as in {accel: [ax, ay, az]}");
    if ((hop != 0 || hopTime.seconds > 0.0) && !getIsFramed())
        complaints.add(description.where, "a hop without a frame in '" + block + "'", "'frame:' too");
    if (nominalRate && (clock.rate || repairs.getResampleRate()))
        complaints.add(description.where, "the RecordingSource '" + block + "' with two rates",
                       "'rate:' or 'resample:' alone, or 'nominalRate:' beside times as they are");
    if (hop == 0 && hopTime.seconds == 0.0) hop = frameRows;
    std::vector<std::string> names;
    for (const Pin& pin : pins)
        names.push_back(pin.name);
    repairs.finish(names, complaints);
    if (clock.rate) repairs.refuseRate(complaints);
    if (const auto stated = getStatedRate(); stated && complaints.isEmpty())
        settleFrames(*stated, complaints);
}

std::optional<double> RecordingSettings::getStatedRate() const {
    if (const auto& resampled = repairs.getResampleRate()) return resampled;
    return nominalRate ? nominalRate : clock.rate;
}

/// Rows; 0 where they are said in seconds.
std::size_t RecordingSettings::takeLength(const Value& value, Length& length, Complaints& complaints) {
    const auto quantity = toQuantity(value);
    if (!quantity) return takeCount(value, complaints);
    if (quantity->kind != Quantity::Kind::Time || !(quantity->number > 0.0))
        complaints.add(value.where, value.describe(), "a number of rows, or a time above 0, as 200 ms");
    else
        length = {.seconds = quantity->number, .written = printable(value.text, kLongestName)};
    return 0;
}

void RecordingSettings::settleFrames(double rowsASecond, Complaints& complaints) {
    settle(frameTime, frameRows, rowsASecond, complaints);
    settle(hopTime, hop, rowsASecond, complaints);
    if (hop == 0) hop = frameRows;
}

void RecordingSettings::settle(Length& length, std::size_t& rows, double rowsASecond,
                               Complaints& complaints) const {
    if (!length.getIsOpen()) return;
    const double count = std::round(length.seconds * rowsASecond);
    const bool isCount = count >= 1.0 && count <= static_cast<double>(kLargestCount);
    if (!isCount)
        complaints.add(frameWhere,
                       "'" + length.written + "' at " + shortestText(rowsASecond) + " rows a second",
                       "a time of 1 to 2147483647 rows");
    rows = length.rows = isCount ? static_cast<std::size_t>(count) : 1;
}

std::vector<std::string> RecordingSettings::getNotes() const {
    std::vector<std::string> notes;
    if (frameTime.rows > 0)
        notes.push_back("a frame of " + frameTime.written + " is " + counted(frameTime.rows, "row"));
    if (hopTime.rows > 0)
        notes.push_back("a hop of " + hopTime.written + " is " + counted(hopTime.rows, "row"));
    return notes;
}

ReadingWishes RecordingSettings::gatherWishes() const {
    ReadingWishes all = wishes;
    all.findsTimes = clock.columns.empty() && !clock.rate;
    for (const NamedColumn& column : clock.columns)
        all.time.push_back(column.name);
    all.names = all.time;
    for (const Pin& pin : pins)
        for (const NamedColumn& column : pin.columns)
            all.names.push_back(column.name);
    return all;
}

} // namespace Quillmere::Host
