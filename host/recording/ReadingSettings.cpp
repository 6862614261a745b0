// SPDX-License-Identifier: MIT
#include "host/recording/ReadingSettings.h"

#include "host/description/Quantity.h"
#include "host/recording/RecordingProfile.h"
#include "host/text/NearestName.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace Quillmere::Host {

namespace {

constexpr std::int64_t kMostLines = 1'000'000'000;
constexpr int kMostBits = 48;

std::optional<std::int64_t> takeUpTo(const Value& value, std::int64_t most, Complaints& complaints) {
    const auto count = toWhole(value, complaints);
    if (!count || (*count >= 0 && *count <= most)) return count;
    complaints.add(value.where, value.describe(), "a whole number from 0 to " + std::to_string(most));
    return std::nullopt;
}

std::vector<std::string> profileNames() {
    std::vector<std::string> names;
    for (const RecordingProfile& profile : recordingProfiles())
        if (std::find(names.begin(), names.end(), profile.name) == names.end())
            names.emplace_back(profile.name);
    names.emplace_back("none");
    return names;
}

/// The sign itself will do too.
void takeSeparator(const Value& value, ReadingWishes& wishes, Complaints& complaints) {
    constexpr std::array kSigns{',', ';', '\t', '|'};
    const auto sign = value.isScalar() && value.text.size() == 1
                          ? std::find(kSigns.begin(), kSigns.end(), value.text.front())
                          : kSigns.end();
    wishes.separator = sign != kSigns.end()
                           ? *sign
                           : kSigns[takeChoice(value, {"comma", "semicolon", "tab", "bar"}, complaints)];
}

void takeStart(const Value& value, ReadingWishes& wishes, Complaints& complaints) {
    const auto text = toText(value, complaints);
    if (!text) return;
    wishes.start = nanosecondsOf(*text, DateOrder::YearFirst);
    if (!wishes.start || getIsYearLast(*text))
        complaints.add(value.where, value.describe(), "a date and a time, as in \"2019-08-06 10:25:50\"");
}

bool takeTimeSetting(const std::string& name, const Value& value, ReadingWishes& wishes,
                     Complaints& complaints) {
    if (name == "timeUnit") {
        constexpr std::array kPerSecond{1.0, 1e3, 1e6, 1e9};
        wishes.perSecond = kPerSecond[takeChoice(value, {"s", "ms", "us", "ns"}, complaints)];
    } else if (name == "timeFormat") {
        wishes.dateOrder = static_cast<DateOrder>(takeChoice(value, {"ymd", "dmy", "mdy"}, complaints));
    } else if (name == "timeStart") {
        takeStart(value, wishes, complaints);
    } else if (name == "counterBits") {
        if (const auto bits = takeUpTo(value, kMostBits, complaints))
            wishes.counterBits = static_cast<int>(*bits);
    } else if (name == "wholeSeconds") {
        wishes.isSpread = takeChoice(value, {"keep", "spread"}, complaints) == 1;
    } else {
        return false;
    }
    return true;
}

bool takeFormSetting(const std::string& name, const Value& value, ReadingWishes& wishes,
                     Complaints& complaints) {
    if (name == "separator") {
        takeSeparator(value, wishes, complaints);
    } else if (name == "decimal") {
        wishes.decimal = takeChoice(value, {"point", "comma"}, complaints) == 1 ? ',' : '.';
    } else if (name == "comment") {
        wishes.comment = toText(value, complaints);
    } else if (name == "skipLines") {
        if (const auto count = takeUpTo(value, kMostLines, complaints))
            wishes.skipLines = static_cast<std::size_t>(*count);
    } else if (name == "headerRows") {
        if (const auto count = takeUpTo(value, 2, complaints))
            wishes.headerRows = static_cast<std::size_t>(*count);
    } else if (name == "unitsRow") {
        wishes.hasUnitsRow = toFlag(value, complaints);
    } else if (name == "profile") {
        const std::vector<std::string> names = profileNames();
        wishes.profile = names[takeChoice(value, names, complaints)];
    } else {
        return takeTimeSetting(name, value, wishes, complaints);
    }
    return true;
}

void takeTime(const Value& value, RecordingClock& clock, Complaints& complaints) {
    clock.columns.clear();
    if (value.kind != Value::Kind::List) {
        if (const auto name = toText(value, complaints)) clock.columns.push_back({*name, value.where});
        return;
    }
    for (const Value& item : value.items)
        if (const auto name = toText(item, complaints)) clock.columns.push_back({*name, item.where});
    if (value.items.empty() || value.items.size() > 2)
        complaints.add(value.where, value.describe(),
                       "a column, or two with the date and the time: [date, time]");
}

void takeMissing(const Value& value, ReadingWishes& wishes, Complaints& complaints) {
    if (value.kind == Value::Kind::Map || value.kind == Value::Kind::Null) {
        complaints.add(value.where, value.describe(), "a list of texts, as in [NA, \"\"]");
        return;
    }
    wishes.missing.clear();
    for (const Value& text : value.isScalar() ? std::vector<Value>{value} : value.items)
        if (const auto word = toText(text, complaints)) wishes.missing.push_back(*word);
}

} // namespace

std::vector<HostBlock::SettingDescription> getReadingSettings() {
    return {
        {"separator", "comma, semicolon, tab or bar", "as the file looks", "what stands between cells"},
        {"decimal", "point or comma", "as the file looks", "the decimal sign of numbers"},
        {"comment", "text", "#, // and %", "what lines in front of the rows begin with that are passed over"},
        {"skipLines", "whole number", "as the file looks", "lines in front of the column names"},
        {"headerRows", "0, 1 or 2", "as the file looks",
         "rows of column names; of two the upper one names groups, as in left.acc_x; without any columns are "
         "1, 2 and so on"},
        {"unitsRow", "flag", "as the file looks", "whether a row of units follows the names"},
        {"profile", "text", "by its fingerprint", "the device or program that wrote the file, or none"},
        {"timeUnit", "s, ms, us or ns", "as the file looks", "the unit of a time column of numbers"},
        {"timeFormat", "ymd, dmy or mdy", "as the file looks", "the order of year, month and day in dates"},
        {"timeStart", "text", "the first row", "the date and time that times count from"},
        {"counterBits", "whole number", "as the file looks",
         "bits of a time counter that begins anew when it is full; 0 for one that doesn't"},
        {"wholeSeconds", "keep or spread", "as the file looks",
         "whether rows with the same whole second are spread evenly over it"},
    };
}

bool takeReadingSetting(const GraphDescription::Setting& setting, ReadingWishes& wishes,
                        RecordingClock& clock, Complaints& complaints) {
    const Value& value = setting.value;
    if (setting.name == "data") {
        wishes.data = toText(value, complaints).value_or("");
    } else if (setting.name == "time") {
        takeTime(value, clock, complaints);
    } else if (setting.name == "rate") {
        clock.rate = takeRate(value, complaints);
    } else if (setting.name == "missing") {
        takeMissing(value, wishes, complaints);
    } else {
        return takeFormSetting(setting.name, value, wishes, complaints);
    }
    return true;
}

std::optional<double> takeRate(const Value& value, Complaints& complaints) {
    const auto rate = toNumberOf(Quantity::Kind::Frequency, value, complaints);
    if (rate && !(*rate > 0.0 && std::isfinite(*rate)))
        complaints.add(value.where, value.describe(), "a rate above 0 rows a second");
    return rate;
}

std::size_t takeChoice(const Value& value, const std::vector<std::string>& words, Complaints& complaints) {
    const auto found = value.isScalar() ? std::find(words.begin(), words.end(), value.text) : words.end();
    if (found != words.end()) return static_cast<std::size_t>(found - words.begin());
    complaints.add(value.where, value.describe(), "one of " + listOfNames(words),
                   value.isScalar() ? nearestName(value.text, words) : "");
    return 0;
}

} // namespace Quillmere::Host
