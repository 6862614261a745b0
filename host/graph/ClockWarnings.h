// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"

namespace Quillmere::Host {

/// Warns of stamps of the wall clock that come to a block which reads times, directly or through blocks that
/// pass them on; and to a sink where they make its rows: where they are the time of the graph's rounds, and
/// where rows are gathered by time, across layouts and behind blocks that make times. Nothing is told of a
/// graph whose blocks stamp the stream's time.
void warnOfWallClock(const Graph& graph, Complaints& complaints);

/// Complains of what an offline run couldn't do: stamp the stream's time where the block that tells it, in a
/// graph without sources, stamps the wall clock.
QUILLMERE_API void requireStreamClock(const Graph& graph, Complaints& complaints);
/// Warns of the wall clock as above, for a live run, which stamps it whatever the graph says. [setup]
QUILLMERE_API void warnOfLiveWallClock(const Graph& graph, Complaints& complaints);

} // namespace Quillmere::Host
