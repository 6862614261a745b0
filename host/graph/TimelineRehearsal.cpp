// SPDX-License-Identifier: MIT
#include "host/graph/TimelineRehearsal.h"

#include "framework/Quillmere.h"
#include "host/graph/PropertyWriter.h"

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

    /// The setting of that name of the block that stands in for another.
    Core::AbstractProperty& getProperty(const Core::Filter& block, const std::string& name) {
        BlockPtr& standIn = blocks[&block];
        if (standIn == nullptr) standIn = make(*parts.find(block.getName())->description);
        return standIn->getProperty(name);
    }

private:
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
        if (action.property != nullptr)
            writeProperty(standIns.getProperty(*action.block, action.property->getName()), action.value,
                          complaints);
        if (action.command != nullptr)
            fireCommand(dynamic_cast<Core::CommandProperty&>(
                            standIns.getProperty(*action.block, action.command->getName())),
                        action.where, complaints);
    }
}

} // namespace Quillmere::Host
