// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/GraphParts.h"

#include <cstdint>

namespace Quillmere::Host {

/// How many samples a link keeps whose sender makes times, where the graph doesn't say: all that may come in
/// one step, as of two long frames. Room is made when it is needed.
inline constexpr std::uint32_t kSamplesOfAStep = 1U << 25;
/// The same where samples may have to wait for others in turn: for those of another block that makes times,
/// which may lag behind, or for another layout's thread.
inline constexpr std::uint32_t kSamplesThatWait = 1U << 20;

/// Gives the links of blocks that make times their room, where the graph doesn't say. Requires: all links of
/// the graph are there. [setup]
void makeRoomForBursts(GraphParts& parts);

} // namespace Quillmere::Host
