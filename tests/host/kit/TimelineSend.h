// SPDX-License-Identifier: MIT
#pragma once

#include "host/description/GraphDescription.h"

#include <string>

namespace Support {

/// Has the timeline send a number to a pin at one second.
inline void sendAtOneSecond(Quillmere::Host::GraphDescription& graph, const std::string& block,
                            const std::string& pin, double number) {
    using Quillmere::Host::GraphDescription;
    GraphDescription::TimelineEntry& entry = graph.timeline.emplace_back();
    entry.at = 1.0;
    GraphDescription::TimelineChange& change = entry.changes.emplace_back();
    change.kind = GraphDescription::TimelineChange::Kind::Send;
    change.block = block;
    change.name = pin;
    change.value = Quillmere::Host::valueOf(number);
}

} // namespace Support
