// SPDX-License-Identifier: MIT
#include "host/graph/TimelineRehearsal.h"

#include "framework/Quillmere.h"
#include "host/graph/PropertyWriter.h"
#include "host/plugins/PluginLibrary.h"

#include <map>
#include <utility>
#include <vector>

namespace Quillmere::Host {

namespace {
/// Blocks on which changes of a graph's blocks are tried.
class StandIns {
public:
    StandIns(const GraphParts& graphParts, const BlockCatalogue& types)
        : parts(graphParts), catalogue(types) {}

    /// The setting of that name of the block that stands in for another; null, and one complaint, where its
    /// plug-in makes no other.
    Core::AbstractProperty* findProperty(const Core::Filter& block, const std::string& name,
                                         Complaints& complaints) {
        const auto [known, isNew] = blocks.try_emplace(&block);
        if (isNew) known->second = tryToMake(*parts.find(block.getName())->description, complaints);
        return known->second == nullptr ? nullptr : known->second->getPropertyBag().find(name);
    }

private:
    BlockPtr tryToMake(const GraphDescription::Block& description, Complaints& complaints) const {
        try {
            return make(description);
        } catch (const PluginException& exception) {
            complaints.add(description.typeWhere,
                           "a block that its plug-in doesn't make once more, to try the timeline on (" +
                               std::string(exception.what()) + ")",
                           "one that it makes whenever it is asked");
            return nullptr;
        }
    }

    /// Of the same type, with the same settings.
    BlockPtr make(const GraphDescription::Block& description) const {
        BlockPtr block = catalogue.create(description.type, description.id);
        std::vector<PropertyWrite> writes;
        for (const GraphDescription::Setting& setting : description.settings)
            if (Core::AbstractProperty* const property = block->getPropertyBag().find(setting.name))
                if (!setting.value.isMissing()) writes.push_back({property, &setting.value});
        Complaints heardAlready;
        writeProperties(std::move(writes), heardAlready);
        return block;
    }

    const GraphParts& parts;
    const BlockCatalogue& catalogue;
    std::map<const Core::Filter*, BlockPtr> blocks; ///< For a block of the graph its stand-in.
};
} // namespace

void rehearseTimeline(GraphParts& parts, const BlockCatalogue& catalogue, Complaints& complaints) {
    StandIns standIns(parts, catalogue);
    for (const Timeline::Action& action : parts.timeline.getActions()) {
        if (action.property == nullptr && action.command == nullptr) continue;
        const std::string& name =
            action.property != nullptr ? action.property->getName() : action.command->getName();
        Core::AbstractProperty* const property = standIns.findProperty(*action.block, name, complaints);
        if (property == nullptr) continue;
        if (action.property != nullptr)
            writeProperty(*property, action.value, complaints);
        else
            fireCommand(dynamic_cast<Core::CommandProperty&>(*property), action.where, complaints);
    }
}

} // namespace Quillmere::Host
