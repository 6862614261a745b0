// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"

#include <span>

namespace Quillmere::Host {

/// Settings of a block type that contradict each other. The blocks accept them: a bound that one of two
/// writes has already crossed would make their order matter.
struct SettingRule {
    const char* type;
    const char* first;  ///< A setting, a number or a flag (0 and 1).
    const char* second; ///< Another, or null.
    bool (*isBroken)(double first, double second);
    const char* text;       ///< Behind the block's name and the values.
    bool isOfBands = false; ///< Only in a "Mode" whose label begins with "Band".
};

/// All of them, by type. A test holds each against the living blocks.
QUILLMERE_API std::span<const SettingRule> getSettingRules();

/// Warns of blocks whose settings contradict each other, of blocks that feed themselves, of samples whose
/// shape windows and transforms don't expect, and of wall clocks that matter.
void warnOfContradictions(const Graph& graph, Complaints& complaints);

/// Warns of blocks that do nothing until a command is fired, which no entry of the timeline does, and whose
/// results go somewhere. Not for a run whose commands somebody can fire. [setup]
QUILLMERE_API void warnOfIdleBlocks(const Graph& graph, Complaints& complaints);

} // namespace Quillmere::Host
