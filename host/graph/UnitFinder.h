// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/GraphParts.h"
#include "host/graph/ManualShelf.h"

#include <map>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Follows links back from an input to what it gets, up to a recording whose columns have a unit: through
/// blocks whose manuals say that they keep it. What no manual tells is unknown, not guessed.
///
/// Requires: nobody changes links, and nodes and manuals outlive it.
class UnitFinder {
public:
    UnitFinder(const std::vector<GraphParts::Node>& nodes, ManualShelf& manuals);

    /// Of what comes to an input; empty where nobody knows.
    std::string unitAt(const Core::AbstractInputPin& input);

private:
    const Core::AbstractInputPin* inputBefore(const GraphParts::Node& node,
                                              const Core::AbstractOutputPin& output);

    std::map<const Core::PinManager*, const GraphParts::Node*> nodes;
    ManualShelf& manuals;
};

/// Tells sinks the units of what comes to them, and warns of blocks that take another unit than comes to
/// them. Requires: the sources are open. [setup]
void carryUnits(const GraphParts& parts, ManualShelf& manuals, Complaints& complaints);

} // namespace Quillmere::Host
