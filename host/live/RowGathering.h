// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/ends/Sink.h"
#include "host/graph/Followers.h"

#include <vector>

namespace Quillmere::Host {

/// Tells the sinks of a layout what makes a row. Where a round of the layout is all that a sink's row can
/// come from, the round makes it; where nothing drives the layout, or samples come from others directly or
/// through blocks of its own, their time stamp does, as it does behind blocks that make times (`followers`,
/// of all layouts). Requires: the layout's gate is held, or no thread runs. [any, guarded]
void gatherRows(const Core::LayoutManager& layout, const std::vector<Sink*>& sinks, bool isDriven,
                const FollowerSet& followers);

} // namespace Quillmere::Host
