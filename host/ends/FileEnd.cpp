// SPDX-License-Identifier: MIT
#include "host/ends/FileEnd.h"

#include "host/ends/HostBlock.h"
#include "host/ends/StandardStream.h"

#include <filesystem>

namespace Quillmere::Host {

void FileEnd::takeFile(const GraphDescription::Setting& setting, const std::string& folder,
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

void FileEnd::requireFile(const HostBlock& block, const GraphDescription::Block& description,
                          Complaints& complaints) {
    for (const GraphDescription::Setting& setting : description.settings)
        if (setting.name == "file") return;
    complaints.add(description.where,
                   "the " + std::string(block.getTypeName()) + " '" + block.getName() + "' without a file",
                   "'file:' and the name of a file");
}

} // namespace Quillmere::Host
