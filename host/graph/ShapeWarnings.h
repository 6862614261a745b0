// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"

namespace Quillmere::Host {

/// Warns of windows and transforms that a source feeds, directly or through blocks that keep the shape, with
/// single rows or with frames of several columns.
void warnOfShapes(const Graph& graph, Complaints& complaints);

} // namespace Quillmere::Host
