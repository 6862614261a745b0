// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"

#include <span>

namespace Quillmere::Host {

/// The types of blocks that take each sample for one whole signal. Tests hold both against living blocks.
QUILLMERE_API std::span<const char* const> getWindows();
QUILLMERE_API std::span<const char* const> getTransforms();

/// Warns of windows and transforms that a source feeds, directly or through blocks that keep the shape, with
/// single rows or with frames of several columns.
void warnOfShapes(const Graph& graph, Complaints& complaints);

} // namespace Quillmere::Host
