// SPDX-License-Identifier: MIT
#include "host/ends/HostBlock.h"

#include "host/text/NearestName.h"
#include "host/ends/StandardStream.h"

#include <filesystem>

namespace Quillmere::Host {

void HostBlock::takeFile(const GraphDescription::Setting& setting, const std::string& folder,
                         Complaints& complaints) {
    const auto text = toText(setting.value, complaints);
    pathPlace = setting.value.where;
    if (!text) return;
    if (text->empty()) {
        complaints.add(pathPlace, "an empty text", "the name of a file");
        return;
    }
    const bool isFromFile =
        setting.origin == GraphDescription::Setting::Origin::File && !getIsStandardStream(*text);
    // A path that is absolute already stays what it is.
    path = isFromFile ? (std::filesystem::path(folder) / *text).lexically_normal().string() : *text;
}

void HostBlock::refuseSetting(const GraphDescription::Setting& setting, Complaints& complaints) const {
    std::vector<std::string> names;
    for (const SettingDescription& known : getSettingDescriptions())
        names.push_back(known.name);
    complaints.add(setting.where, "the property '" + setting.name + "' of " + getTypeName(),
                   "one of " + listOfNames(names), nearestName(setting.name, names));
}

void HostBlock::requireFile(const GraphDescription::Block& description, Complaints& complaints) const {
    for (const GraphDescription::Setting& setting : description.settings)
        if (setting.name == "file") return;
    complaints.add(description.where,
                   "the " + std::string(getTypeName()) + " '" + getName() + "' without a file",
                   "'file:' and the name of a file");
}

} // namespace Quillmere::Host
