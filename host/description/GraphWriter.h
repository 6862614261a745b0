// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

namespace Quillmere::Host {

/// A graph as the map that its file holds: keys in one order, and none that says nothing.
Value mapOf(const GraphDescription& graph);

} // namespace Quillmere::Host
