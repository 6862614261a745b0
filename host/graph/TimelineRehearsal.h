// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/GraphParts.h"
#include "host/plugins/BlockCatalogue.h"

namespace Quillmere::Host {

/// Tries the changes of a graph's timeline, by time, on blocks of their own that are set as those of the
/// graph, and complains of what they don't take: the graph's own blocks are left as they begin. Requires: no
/// setting awaits its rate. [setup]
void rehearseTimeline(GraphParts& parts, const BlockCatalogue& catalogue, Complaints& complaints);

} // namespace Quillmere::Host
