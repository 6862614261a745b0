// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"
#include "host/run/RunOutcome.h"

namespace Quillmere::Host {

/// Warns at the end of a run where the rate of a whole recording isn't the one that hertz and seconds were
/// converted by, which its first rows had; and, where it wasn't known before, that steps are uneven in front
/// of a block which counts on even ones. Requires: nothing is in a step. [any]
void warnOfRates(const Graph& graph, RunOutcome& outcome);

} // namespace Quillmere::Host
