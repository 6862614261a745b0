// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/CommandProperty.h"
#include "framework/core/Filter.h"
#include "host/graph/Followers.h"

#include <vector>

namespace Quillmere::Host {

/// A block that holds something back as long as more may come, and sends it, or what it knows by then, in the
/// step behind its command "Finish".
struct Finisher {
    Core::Filter* block;
    Core::CommandProperty* command;
    FollowerSet stepped; ///< The block, and those that samples come to by way of it.
};

/// Those among `blocks` that have inputs, in their order. A runner fires their commands one by one, in the
/// order in which blocks run, when a run that is to be whole has nothing more to move. Requires: links don't
/// change meanwhile.
QUILLMERE_API std::vector<Finisher> finishersAmong(const std::vector<Core::Filter*>& blocks);

} // namespace Quillmere::Host
