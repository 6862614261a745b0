// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/text/Json.h"
#include "host/text/ShortestText.h"
#include "host/ends/HostBlock.h"
#include "host/graph/BlockDescription.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

using Kind = PropertyDescription::Kind;
using Table = std::vector<std::vector<std::string>>;

/// Columns as wide as their widest cell, indented by two.
void printTable(const Table& table) {
    std::vector<std::size_t> widths;
    for (const auto& row : table)
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths.resize(std::max(widths.size(), i + 1));
            widths[i] = std::max(widths[i], row[i].size());
        }
    for (const auto& row : table) {
        std::string line = " ";
        for (std::size_t i = 0; i < row.size(); ++i)
            line += " " + row[i] + std::string(widths[i] - row[i].size() + 1, ' ');
        std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
    }
}

Json::Text jsonOf(const PropertyDescription::Held& held) {
    if (const bool* const flag = std::get_if<bool>(&held)) return Json::flag(*flag);
    if (const auto* const whole = std::get_if<std::int64_t>(&held)) return std::to_string(*whole);
    if (const double* const number = std::get_if<double>(&held)) return Json::number(*number);
    const auto* const matrix = std::get_if<Quillmere::Core::MatrixXd>(&held);
    if (matrix == nullptr) return Json::null();
    std::vector<Json::Text> rows;
    for (Eigen::Index row = 0; row < matrix->rows(); ++row) {
        std::vector<Json::Text> cells;
        for (Eigen::Index column = 0; column < matrix->cols(); ++column)
            cells.push_back(Json::number((*matrix)(row, column)));
        rows.push_back(Json::list(cells));
    }
    return Json::list(rows);
}

Json::Text jsonOf(const PropertyDescription& property) {
    Json::Members members{{"name", Json::text(property.name)}, {"kind", Json::text(nameOf(property.kind))}};
    if (property.kind != Kind::Command) {
        members.emplace_back("default", jsonOf(property.value));
        if (property.kind == Kind::Choice)
            members.emplace_back("defaultLabel", Json::text(valueText(property)));
    }
    if (property.hasLimits) {
        members.emplace_back("minimum", Json::number(property.minimum));
        members.emplace_back("maximum", Json::number(property.maximum));
        members.emplace_back("step", Json::number(property.step));
    }
    if (property.kind == Kind::Choice) members.emplace_back("labels", Json::listOfTexts(property.labels));
    members.emplace_back("writable", Json::flag(property.isWritable));
    members.emplace_back("readable", Json::flag(property.isReadable));
    return Json::object(members);
}

Json::Text jsonOf(const std::vector<HostBlock::SettingDescription>& settings) {
    std::vector<Json::Text> values;
    for (const HostBlock::SettingDescription& setting : settings)
        values.push_back(
            Json::object({{"name", Json::text(setting.name)},
                          {"kind", Json::text(setting.kind)},
                          {"default", setting.standard.empty() ? Json::null() : Json::text(setting.standard)},
                          {"meaning", Json::text(setting.meaning)}}));
    return Json::list(values);
}

/// `plugin` is empty for a block of the host, whose settings aren't properties.
Json::Text jsonOf(const BlockDescription& block, const std::string& plugin, const HostBlock* hostBlock) {
    std::vector<Json::Text> inputs;
    for (const BlockDescription::Pin& pin : block.inputs)
        inputs.push_back(
            Json::object({{"name", Json::text(pin.name)}, {"blocking", Json::flag(pin.isBlocking)}}));
    std::vector<Json::Text> outputs;
    for (const BlockDescription::Pin& pin : block.outputs)
        outputs.push_back(Json::object({{"name", Json::text(pin.name)}}));
    std::vector<Json::Text> properties;
    for (const PropertyDescription& property : block.properties)
        properties.push_back(jsonOf(property));
    return Json::object({{"type", Json::text(block.type)},
                         {"inputs", Json::list(inputs)},
                         {"outputs", Json::list(outputs)},
                         {"properties", hostBlock != nullptr ? jsonOf(hostBlock->getSettingDescriptions())
                                                             : Json::list(properties)},
                         {"plugin", hostBlock != nullptr ? Json::null() : Json::text(plugin)}});
}

void printBlock(const BlockDescription& block, const std::string& origin) {
    std::cout << block.type << " (" << origin << ")\n\ninputs\n";
    Table inputs;
    for (const BlockDescription::Pin& pin : block.inputs)
        inputs.push_back({pin.name, pin.isBlocking ? "blocking" : "not blocking"});
    printTable(inputs);
    std::cout << "\noutputs\n";
    Table outputs;
    for (const BlockDescription::Pin& pin : block.outputs)
        outputs.push_back({pin.name});
    printTable(outputs);
    std::cout << "\nproperties\n";
    Table properties;
    for (const PropertyDescription& property : block.properties) {
        const bool isCommand = property.kind == Kind::Command;
        const std::string step =
            property.hasLimits && property.step != 0.0 ? ", step " + shortestText(property.step) : "";
        properties.push_back({property.name, nameOf(property.kind), isCommand ? "" : valueText(property),
                              isCommand ? "" : expectedText(property) + step,
                              isCommand || property.isWritable ? "" : "read-only"});
    }
    printTable(properties);
}

void printHostBlock(const HostBlock& block) {
    std::cout << block.getTypeName()
              << " (host)\n\nits pins are those that the graph gives it\n\nproperties\n";
    Table settings;
    for (const HostBlock::SettingDescription& setting : block.getSettingDescriptions())
        settings.push_back({setting.name, setting.kind,
                            setting.standard.empty() ? "required" : setting.standard, setting.meaning});
    printTable(settings);
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

Json::Text namesAsJson(const BlockCatalogue& catalogue) {
    std::vector<Json::Text> blocks;
    for (const std::string& name : catalogue.getTypeNames())
        blocks.push_back(Json::object({{"type", Json::text(name)},
                                       {"plugin", Json::text(catalogue.getPluginName(name))},
                                       {"version", Json::text(catalogue.getPluginVersion(name))}}));
    return Json::object(
        {{"blocks", Json::list(blocks)}, {"hostBlocks", Json::listOfTexts(catalogue.getHostTypeNames())}});
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
            std::cout << namesAsJson(catalogue) << "\n";
        else
            printNames(catalogue);
        return kDone;
    }
    const BlockPtr block = createBlock(catalogue, type);
    const auto* const hostBlock = dynamic_cast<const HostBlock*>(block.get());
    if (asJson) {
        std::cout << jsonOf(describe(*block), catalogue.getPluginName(type), hostBlock) << "\n";
    } else if (hostBlock != nullptr) {
        printHostBlock(*hostBlock);
    } else {
        printBlock(describe(*block), catalogue.getPluginName(type) + " " + catalogue.getPluginVersion(type));
    }
    return kDone;
}

} // namespace Cli
