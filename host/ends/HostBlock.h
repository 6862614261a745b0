// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"

#include <string>
#include <vector>

namespace Quillmere::Host {

/// A block that the host knows more of than of others: where samples enter a graph and where they leave it.
/// It has pins like every block; what it is told it is told once, before the run, by settings of a kind that
/// blocks don't have (texts and lists of columns).
///
/// It may come from the host, from the program that runs graphs, or from a plug-in that links the host.
class QUILLMERE_API HostBlock : public Core::Filter {
public:
    /// For people who ask what there is.
    struct SettingDescription {
        std::string name;
        std::string kind;
        std::string defaultText; ///< What holds when it isn't given; empty when it must be.
        std::string meaning;
    };

    using Core::Filter::Filter;

    /// None, if nobody says otherwise. [setup]
    virtual const std::vector<SettingDescription>& getSettingDescriptions() const;

    /// One sentence for people who ask what there is, as `Writes rows to a table.`; empty, if nobody says
    /// otherwise. [setup]
    virtual std::string getPurpose() const;

    /// Takes the settings; what is wrong with them is complained of. `folder` is what the graph's paths are
    /// relative to. Who has no settings needs no operation of his own: this one refuses all. [setup]
    virtual void configure(const GraphDescription::Block& description, const std::string& folder,
                           Complaints& complaints);

protected:
    /// Complains of a setting that there isn't.
    void refuseSetting(const GraphDescription::Setting& setting, Complaints& complaints) const;
};

} // namespace Quillmere::Host
