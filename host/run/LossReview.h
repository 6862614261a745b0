// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"
#include "host/graph/Graph.h"
#include "host/run/RunOutcome.h"

#include <vector>

namespace Quillmere::Host {

/// Warns of what links have lost, and of what still waits: more than the one sample that every link may hold,
/// say for a block that never looked at it. A run that failed midway leaves some everywhere. [any]
void warnOfLosses(bool isCutShort, RunOutcome& outcome);

/// Takes down what blocks tell of what they left out (`Core::LossTeller`). Requires: none of them is in a
/// step. [any]
void askForLosses(const Graph& graph, const std::vector<Core::Filter*>& blocks, RunOutcome& outcome);

} // namespace Quillmere::Host
