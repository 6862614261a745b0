// SPDX-License-Identifier: MIT
#pragma once

#include "cli/Commands.h"
#include "host/graph/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"

namespace Cli {

/// The options as changes to a graph. Raises `UsageError` for one that isn't `name=value`.
Quillmere::Host::GraphChanges changesOf(const GraphArguments& arguments);

/// The block types of the plug-ins. Raises `PluginException`, and `UsageError` when there is no plug-in at all.
Quillmere::Host::BlockCatalogue loadCatalogue(const PluginArguments& arguments);

} // namespace Cli
