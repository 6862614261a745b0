// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"

namespace Quillmere::Host {

/// Warns of each block whose published design keeps fewer than six digits, or isn't finite, with the settings
/// that it starts with. Only the coefficients that a filter publishes tell; so another block of the type is
/// made, set alike and given one sample, and the graph's own is left alone. [setup]
QUILLMERE_API void warnOfLostDigits(const Graph& graph, const BlockCatalogue& catalogue,
                                    Complaints& complaints);

} // namespace Quillmere::Host
