// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"

namespace Quillmere::Host {

/// Warns of links between layouts that keep one sample only where several may come at a time, and that nobody
/// has said to be meant so. Requires: the graph's sources are open.
QUILLMERE_API void warnOfBursts(const Graph& graph, Complaints& complaints);

} // namespace Quillmere::Host
