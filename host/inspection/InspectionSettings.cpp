// SPDX-License-Identifier: MIT
#include "host/inspection/InspectionSettings.h"

#include "host/recording/RecordingSettings.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {

std::vector<std::string> knownSettings() {
    std::vector<std::string> names{"data", "time", "rate", "missing", "units"};
    for (const HostBlock::SettingDescription& setting : getReadingSettings())
        names.push_back(setting.name);
    return names;
}

/// A look takes all rows as they are; what becomes of them is the graph's.
Complaint refusalOf(const GraphDescription::Setting& setting) {
    const std::string found = "the setting '" + printable(setting.name, kLongestName) + "' of a recording";
    const auto all = RecordingSettings::getDescriptions();
    const bool isOfGraph = std::any_of(
        all.begin(), all.end(), [&](const auto& description) { return description.name == setting.name; });
    if (!isOfGraph) return Complaint::unknown(setting.where, found, setting.name, knownSettings());
    return {setting.where, found + ", which says what becomes of its rows",
            "it in a graph (--graph writes one), or one of " + listOfNames(knownSettings())};
}

} // namespace

void InspectionSettings::take(GraphDescription::Setting setting, Complaints& complaints) {
    if (setting.name == "units")
        units = takeUnits(setting.value, complaints);
    else if (!takeReadingSetting(setting, wishes, clock, complaints))
        complaints.add(refusalOf(setting));
    std::erase_if(written,
                  [&](const GraphDescription::Setting& other) { return other.name == setting.name; });
    written.push_back(std::move(setting));
}

void InspectionSettings::finish(Complaints& complaints) {
    wishes.findsTimes = clock.columns.empty() && !clock.rate;
    for (const NamedColumn& column : clock.columns)
        wishes.time.push_back(column.name);
    wishes.names = wishes.time;
    if (!wishes.time.empty() && clock.rate)
        complaints.add({"--set"}, "two clocks, 'time' and 'rate'",
                       "either 'time' and a column or 'rate' and rows a second");
}

} // namespace Quillmere::Host
