// SPDX-License-Identifier: MIT
#include "cli/GraphArguments.h"

#include "cli/UsageError.h"
#include "host/plugins/PluginPlaces.h"
#include "host/text/Address.h"
#include "host/text/Printable.h"
#include "host/recording/HostCatalogue.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

namespace Cli {

namespace {
using Quillmere::Host::Address;
using Quillmere::Host::BlockCatalogue;
using Quillmere::Host::BlockPtr;
using Quillmere::Host::Complaint;
using Quillmere::Host::Complaints;
using Quillmere::Host::GraphChanges;
using Quillmere::Host::HostCatalogue;
using Quillmere::Host::kLongestName;
using Quillmere::Host::kOwnPluginFiles;
using Quillmere::Host::printable;
using Quillmere::Host::Warning;

void enterList(CLI::App& command, const std::string& name, std::vector<std::string>& values,
               const std::string& form, const std::string& meaning) {
    // One value each time the option stands there: what follows may be the graph.
    command.add_option(name, values, meaning)->type_name(form)->allow_extra_args(false);
}

std::vector<GraphChanges::File> filesOf(const std::vector<std::string>& texts, const std::string& option) {
    std::vector<GraphChanges::File> files;
    for (const std::string& text : texts) {
        const auto [block, path] = splitSetting(text, option, "block=FILE");
        files.push_back({block, path, option + " " + printable(text, kLongestName)});
    }
    return files;
}

/// Loads a plug-in of this project's from beside this program, unless the user has named it.
void loadOwn(const std::string& file, const PluginArguments& arguments, BlockCatalogue& catalogue) {
    const auto isIt = [&](const std::string& path) { return std::filesystem::path(path).filename() == file; };
    if (std::any_of(arguments.plugins.begin(), arguments.plugins.end(), isIt)) return;
    const std::string beside = Quillmere::Host::findPluginBeside(ownPath(), file);
    if (!beside.empty())
        catalogue.load(beside);
    else if (arguments.plugins.empty())
        throw UsageError({{}, "no " + file + " beside this program", "--plugin FILE"});
}

} // namespace

std::string ownPath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::pair<std::string, std::string> splitSetting(const std::string& text, const std::string& option,
                                                 const std::string& form) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0)
        throw UsageError({{option}, "'" + printable(text, kLongestName) + "'", form});
    return {text.substr(0, sign), text.substr(sign + 1)};
}

void PluginArguments::enter(CLI::App& command) {
    enterList(command, "--plugin", plugins, "FILE",
              "Load a plug-in, before those that lie beside this program. Again for another.");
}

void GraphArguments::enter(CLI::App& command) {
    command.add_option("GRAPH", graph, "The graph file, YAML or JSON.")->required()->type_name("FILE");
    enterChanges(command);
    enterList(command, "--output", outputs, "BLOCK=FILE", "Let a sink write another file.");
    enterRules(command);
}

void GraphArguments::enterChanges(CLI::App& command) {
    enterList(command, "--set", settings, "BLOCK.PROPERTY=VALUE",
              "Give a block's property another value for this call.");
    enterList(command, "--param", parameters, "NAME=VALUE",
              "Give a parameter of the graph another value for this call.");
    enterList(command, "--input", inputs, "BLOCK=FILE", "Let a source read another recording.");
}

void GraphArguments::enterRules(CLI::App& command) {
    command.add_flag("--strict", isStrict, "Take warnings for errors.");
    command.add_flag("--overwrite", overwrites, "Let results replace files that no run has written.");
    plugins.enter(command);
}

void printDoubts(const Complaints& complaints) {
    for (const Warning& warning : complaints.getSortedWarnings())
        std::cerr << warning.getText() << "\n";
    if (complaints.getMoreWarnings() > 0) std::cerr << "and " << complaints.getMoreWarnings() << " more\n";
}

void enterWatched(CLI::App& command, const char* name, std::vector<std::string>& outputs, CLI::Option* page) {
    command.add_option(name, outputs, "Show in the report what this output sends, too.")
        ->type_name("BLOCK.PIN")
        ->allow_extra_args(false)
        ->needs(page);
}

GraphChanges changesOf(const GraphArguments& arguments) {
    GraphChanges changes;
    for (const std::string& text : arguments.parameters) {
        const auto [name, value] = splitSetting(text, "--param", "NAME=VALUE");
        changes.parameters.push_back({name, value, "--param " + printable(text, kLongestName)});
    }
    for (const std::string& text : arguments.settings) {
        const auto [target, value] = splitSetting(text, "--set", "BLOCK.PROPERTY=VALUE");
        const Address address(target);
        if (!address.hasMember)
            throw UsageError({{"--set"}, "'" + printable(text, kLongestName) + "'", "BLOCK.PROPERTY=VALUE"});
        changes.settings.push_back(
            {address.block, address.member, value, "--set " + printable(text, kLongestName)});
    }
    changes.inputs = filesOf(arguments.inputs, "--input");
    changes.outputs = filesOf(arguments.outputs, "--output");
    return changes;
}

std::vector<std::string> wordsOf(const GraphArguments& arguments) {
    std::vector<std::string> words;
    const auto add = [&](const char* option, const std::vector<std::string>& values) {
        for (const std::string& value : values)
            words.insert(words.end(), {option, value});
    };
    add("--input", arguments.inputs);
    add("--output", arguments.outputs);
    add("--param", arguments.parameters);
    add("--set", arguments.settings);
    add("--plugin", arguments.plugins.plugins);
    if (arguments.isStrict) words.emplace_back("--strict");
    return words;
}

BlockCatalogue loadCatalogue(const PluginArguments& arguments) {
    HostCatalogue catalogue;
    for (const std::string& path : arguments.plugins)
        catalogue.load(path);
    for (const char* const own : kOwnPluginFiles)
        loadOwn(own, arguments, catalogue);
    return catalogue;
}

BlockPtr createBlock(const BlockCatalogue& catalogue, const std::string& type) {
    BlockPtr block = catalogue.create(type, type);
    if (block != nullptr) return block;
    std::vector<std::string> known = catalogue.getTypeNames();
    for (std::string& name : catalogue.getHostTypeNames())
        known.push_back(std::move(name));
    throw UsageError(Complaint::unknown({}, "the block type '" + type + "'", type, known));
}

} // namespace Cli
