// SPDX-License-Identifier: MIT
#include "host/live/RowGathering.h"

#include <set>

namespace Quillmere::Host {

namespace {
/// Whether what a block waits for comes from another layout, directly or through other blocks. Control inputs
/// don't count: what comes over them makes no sample.
bool getIsFedFromElsewhere(const Core::PinManager& block, const Core::LayoutManager& layout,
                           std::set<const Core::PinManager*>& seen) {
    for (const Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        if (sender == nullptr || !pin->getIsBlocking()) continue;
        if (Core::layoutOf(*sender) != &layout) return true;
        const Core::PinManager* const owner = sender->getManager();
        if (seen.insert(owner).second && getIsFedFromElsewhere(*owner, layout, seen)) return true;
    }
    return false;
}
} // namespace

void gatherRows(const Core::LayoutManager& layout, const std::vector<Sink*>& sinks, bool isDriven,
                const FollowerSet& followers) {
    for (Sink* const sink : sinks) {
        std::set<const Core::PinManager*> seen{sink};
        sink->setGathersByTime(!isDriven || followers.contains(sink) ||
                               getIsFedFromElsewhere(*sink, layout, seen));
    }
}

} // namespace Quillmere::Host
