// SPDX-License-Identifier: MIT
#include "host/inspection/InspectionSettings.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"
namespace Quillmere::Host {

namespace {

std::vector<std::string> knownSettings() {
    std::vector<std::string> names{"data", "time", "rate", "missing", "units"};
    for (const HostBlock::SettingDescription& setting : getReadingSettings())
        names.push_back(setting.name);
    return names;
}

} // namespace

void InspectionSettings::take(GraphDescription::Setting setting, Complaints& complaints) {
    if (setting.name == "units")
        units = takeUnits(setting.value, complaints);
    else if (!takeReadingSetting(setting, wishes, clock, complaints))
        complaints.add(Complaint::unknown(
            setting.where, "the setting '" + printable(setting.name, kLongestName) + "' of a recording",
            setting.name, knownSettings()));
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
