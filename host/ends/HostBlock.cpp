// SPDX-License-Identifier: MIT
#include "host/ends/HostBlock.h"

#include "host/text/Complaint.h"

namespace Quillmere::Host {

const std::vector<HostBlock::SettingDescription>& HostBlock::getSettingDescriptions() const {
    static const std::vector<SettingDescription> none;
    return none;
}

std::string HostBlock::getPurpose() const {
    return {};
}

void HostBlock::configure(const GraphDescription::Block& description, const std::string&,
                          Complaints& complaints) {
    for (const GraphDescription::Setting& setting : description.settings)
        refuseSetting(setting, complaints);
}

void HostBlock::refuseSetting(const GraphDescription::Setting& setting, Complaints& complaints) const {
    std::vector<std::string> names;
    for (const SettingDescription& known : getSettingDescriptions())
        names.push_back(known.name);
    complaints.add(Complaint::unknown(setting.where,
                                      "the property '" + setting.name + "' of " + getTypeName(), setting.name,
                                      names, "one of ", "no properties, since it has none"));
}

} // namespace Quillmere::Host
