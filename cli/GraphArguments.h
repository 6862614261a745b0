// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"

#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace Cli {

/// The plug-ins to load: those that the user named, and ours beside the program.
struct PluginArguments {
    std::vector<std::string> plugins;
    void enter(CLI::App& command);
};

/// The graph of a command and what is changed in it for this call.
struct GraphArguments {
    std::string graph;
    std::vector<std::string> settings;
    std::vector<std::string> parameters;
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
    PluginArguments plugins;
    bool isStrict = false;
    bool overwrites = false;
    void enter(CLI::App& command);
    /// All but the graph and what results are called.
    void enterChanges(CLI::App& command);
    void enterRules(CLI::App& command);
};

/// An option for outputs that the page of a report shows besides; `page` is the option for that.
void enterWatched(CLI::App& command, const char* name, std::vector<std::string>& outputs, CLI::Option* page);

/// The options as changes to a graph. Raises `UsageError` for one that isn't `name=value`.
Quillmere::Host::GraphChanges changesOf(const GraphArguments& arguments);

/// What of the options changes the results, as words of a command that gives them again.
std::vector<std::string> wordsOf(const GraphArguments& arguments);

/// The file of this program; empty where the system doesn't tell.
std::string ownPath();

/// Prints what is doubtful about a graph.
void printDoubts(const Quillmere::Host::Complaints& complaints);

/// The block types of the plug-ins. Raises `PluginException`, and `UsageError` when there is no plug-in at
/// all.
Quillmere::Host::BlockCatalogue loadCatalogue(const PluginArguments& arguments);

/// A block of that type, named after it. Raises `UsageError`, which names what there is.
Quillmere::Host::BlockPtr createBlock(const Quillmere::Host::BlockCatalogue& catalogue,
                                      const std::string& type);

/// The two sides of the first `=`. Raises `UsageError`, which names the option and its form.
std::pair<std::string, std::string> splitSetting(const std::string& text, const std::string& option,
                                                 const std::string& form);

} // namespace Cli
