// SPDX-License-Identifier: MIT
#include "host/inspection/InspectionSettings.h"

#include "host/recording/ReadingSettings.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

namespace {

std::vector<std::string> knownSettings() {
    std::vector<std::string> names{"data", "time", "rate", "missing"};
    for (const HostBlock::SettingDescription& setting : getReadingSettings())
        names.push_back(setting.name);
    return names;
}

std::vector<std::string> textsOf(const Value& value, const std::string& expected, Complaints& complaints) {
    std::vector<std::string> texts;
    if (value.kind == Value::Kind::Map || value.kind == Value::Kind::Null) {
        complaints.add(value.where, value.describe(), expected);
        return texts;
    }
    for (const Value& item : value.isScalar() ? std::vector<Value>{value} : value.items)
        if (const auto text = toText(item, complaints)) texts.push_back(*text);
    return texts;
}

} // namespace

void InspectionSettings::take(GraphDescription::Setting setting, Complaints& complaints) {
    const Value& value = setting.value;
    if (setting.name == "data") {
        wishes.data = toText(value, complaints).value_or("");
    } else if (setting.name == "time") {
        takeTime(value, complaints);
    } else if (setting.name == "rate") {
        rate = toNumber(value, complaints);
        if (rate && !(*rate > 0.0 && std::isfinite(*rate)))
            complaints.add(value.where, value.describe(), "a rate above 0 rows a second");
    } else if (setting.name == "missing") {
        wishes.missing = textsOf(value, "a list of texts, as in [NA, \"\"]", complaints);
    } else if (!takeReadingSetting(setting, wishes, complaints)) {
        complaints.add(Complaint::unknown(
            setting.where, "the setting '" + printable(setting.name, kLongestName) + "' of a recording",
            setting.name, knownSettings()));
    }
    std::erase_if(written,
                  [&](const GraphDescription::Setting& other) { return other.name == setting.name; });
    written.push_back(std::move(setting));
}

void InspectionSettings::takeTime(const Value& value, Complaints& complaints) {
    wishes.time = textsOf(value, "a column, or two with the date and the time: [date, time]", complaints);
    if (value.kind == Value::Kind::List && (value.items.empty() || value.items.size() > 2))
        complaints.add(value.where, value.describe(),
                       "a column, or two with the date and the time: [date, time]");
}

void InspectionSettings::finish(Complaints& complaints) {
    wishes.findsTimes = wishes.time.empty() && !rate;
    wishes.names = wishes.time;
    if (!wishes.time.empty() && rate)
        complaints.add({"--set"}, "two clocks, 'time' and 'rate'",
                       "either 'time' and a column or 'rate' and rows a second");
}

} // namespace Quillmere::Host
