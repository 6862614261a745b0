// SPDX-License-Identifier: MIT
#pragma once

#include "cli/Commands.h"
#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"

#include <string>
#include <utility>

namespace Cli {

/// The options as changes to a graph. Raises `UsageError` for one that isn't `name=value`.
Quillmere::Host::GraphChanges changesOf(const GraphArguments& arguments);

/// Raises what is wrong with a graph, as `GraphException`, and prints what is doubtful; when strict, raises that too.
void settle(const Quillmere::Host::Complaints& complaints, bool isStrict);

/// The block types of the plug-ins. Raises `PluginException`, and `UsageError` when there is no plug-in at all.
Quillmere::Host::BlockCatalogue loadCatalogue(const PluginArguments& arguments);

/// A block of that type, named after it. Raises `UsageError`, which names what there is.
Quillmere::Host::BlockPtr createBlock(const Quillmere::Host::BlockCatalogue& catalogue,
                                      const std::string& type);

/// The two sides of the first `=`. Raises `UsageError`, which names the option and its form.
std::pair<std::string, std::string> splitSetting(const std::string& text, const std::string& option,
                                                 const std::string& form);

} // namespace Cli
