// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"

namespace Quillmere::Host {

/// Adds the block types of the plug-ins that the graph names, and complains of those that can't be used.
/// Their code runs: that is what they are named for. [setup]
QUILLMERE_API void loadPlugins(const GraphDescription& description, BlockCatalogue& catalogue,
                               Complaints& complaints);

} // namespace Quillmere::Host
