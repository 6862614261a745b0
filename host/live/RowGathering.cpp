// SPDX-License-Identifier: MIT
#include "host/live/RowGathering.h"

#include "host/plugins/KnownTypes.h"

#include <set>

namespace Quillmere::Host {

namespace {
/// Whether what a block waits for comes from another layout, or from a block that makes times, directly or
/// through other blocks. Of control inputs only those count that such a block feeds itself: what comes over
/// others makes no sample.
bool getIsFedFromElsewhere(const Core::PinManager& block, const Core::LayoutManager& layout,
                           std::set<const Core::PinManager*>& seen) {
    for (const Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        if (getMakesTimes(sender)) return true;
        if (sender == nullptr || !pin->getIsBlocking()) continue;
        if (Core::layoutOf(*sender) != &layout) return true;
        const Core::PinManager* const owner = sender->getManager();
        if (seen.insert(owner).second && getIsFedFromElsewhere(*owner, layout, seen)) return true;
    }
    return false;
}
} // namespace

void gatherRows(const Core::LayoutManager& layout, const std::vector<Sink*>& sinks, bool isDriven) {
    for (Sink* const sink : sinks) {
        std::set<const Core::PinManager*> seen{sink};
        sink->setGathersByTime(!isDriven || getIsFedFromElsewhere(*sink, layout, seen));
    }
}

} // namespace Quillmere::Host
