// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"
#include "host/graph/Graph.h"
#include "host/run/FiniteWatch.h"
#include "host/run/RunEnd.h"
#include "host/run/RunOutcome.h"

#include <vector>

namespace Quillmere::Host {

/// What a run of `graph` has done so far, and how it ended. `blocks` are those that take part, the graph's
/// own and later ones, `nonFinite` what was found of them. Requires: none of them is in a step. [any]
RunOutcome outcomeOf(const Graph& graph, const std::vector<Core::Filter*>& blocks,
                     const std::vector<FirstNonFinite>& nonFinite, const RunProgress& progress,
                     const RunEnding& ending);

/// The outcome of a run of `graph` that isn't begun, since this has ended it. [any]
RunOutcome refusedBy(const Graph& graph, const RunEnding& ending);

} // namespace Quillmere::Host
