// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/text/Table.h"
#include "host/text/ShortestText.h"
#include "host/ends/HostBlock.h"
#include "host/graph/BlockJson.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

using Kind = PropertyDescription::Kind;
constexpr std::size_t kIndent = 2;

void printBlock(const BlockDescription& block, const std::string& origin) {
    std::cout << block.type << " (" << origin << ")\n\ninputs\n";
    Table inputs(kIndent);
    for (const BlockDescription::Pin& pin : block.inputs)
        inputs.add({pin.name, pin.isBlocking ? "blocking" : "not blocking"});
    std::cout << inputs.getText();
    std::cout << "\noutputs\n";
    Table outputs(kIndent);
    for (const BlockDescription::Pin& pin : block.outputs)
        outputs.add({pin.name});
    std::cout << outputs.getText();
    std::cout << "\nproperties\n";
    Table properties(kIndent);
    for (const PropertyDescription& property : block.properties) {
        const bool isCommand = property.kind == Kind::Command;
        const std::string step =
            property.hasLimits && property.step != 0.0 ? ", step " + shortestText(property.step) : "";
        properties.add({property.name, nameOf(property.kind), isCommand ? "" : valueText(property),
                        isCommand ? "" : expectedText(property) + step,
                        isCommand || property.isWritable ? "" : "read-only"});
    }
    std::cout << properties.getText();
}

/// A source or a sink, of the host or of a plug-in.
void printHostBlock(const HostBlock& block, const std::string& origin) {
    const BlockDescription description = describe(block);
    std::cout << description.type << " (" << origin << ")\n\n";
    if (description.inputs.empty() && description.outputs.empty())
        std::cout << "its pins are those that the graph gives it\n";
    for (const BlockDescription::Pin& pin : description.inputs)
        std::cout << "input " << pin.name << "\n";
    for (const BlockDescription::Pin& pin : description.outputs)
        std::cout << "output " << pin.name << "\n";
    std::cout << "\nproperties\n";
    Table settings(kIndent);
    for (const HostBlock::SettingDescription& setting : block.getSettingDescriptions())
        settings.add({setting.name, setting.kind,
                      setting.defaultText.empty() ? "required" : setting.defaultText, setting.meaning});
    std::cout << settings.getText();
}

void printNames(const BlockCatalogue& catalogue) {
    std::string plugin;
    for (const std::string& name : catalogue.getTypeNames()) {
        const std::string origin = catalogue.getPluginName(name) + " " + catalogue.getPluginVersion(name);
        if (origin != plugin) std::cout << (plugin.empty() ? "" : "\n") << "blocks of " << origin << "\n";
        plugin = origin;
        std::cout << "  " << name << "\n";
    }
    std::cout << "\nblocks of the host\n";
    for (const std::string& name : catalogue.getHostTypeNames())
        std::cout << "  " << name << "\n";
}

} // namespace

BlocksCommand::BlocksCommand(CLI::App& command) {
    command.add_option("TYPE", type, "Show this block: pins, properties, defaults, limits.")
        ->type_name("NAME");
    command.add_flag("--json", asJson, "Print JSON.");
    plugins.enter(command);
}

ExitCode BlocksCommand::run() {
    const BlockCatalogue catalogue = loadCatalogue(plugins);
    if (type.empty()) {
        if (asJson)
            std::cout << Json::blockTypes(catalogue) << "\n";
        else
            printNames(catalogue);
        return kDone;
    }
    const BlockPtr block = createBlock(catalogue, type);
    const auto* const hostBlock = dynamic_cast<const HostBlock*>(block.get());
    const std::string origin = catalogue.getPluginName(type) + " " + catalogue.getPluginVersion(type);
    if (asJson) {
        const std::string plugin = catalogue.getPluginName(type);
        std::cout << (hostBlock != nullptr ? Json::hostBlock(*hostBlock, plugin)
                                           : Json::block(describe(*block), plugin))
                  << "\n";
    } else if (hostBlock != nullptr) {
        printHostBlock(*hostBlock, catalogue.getIsHostType(type) ? "host" : origin);
    } else {
        printBlock(describe(*block), origin);
    }
    return kDone;
}

} // namespace Cli
