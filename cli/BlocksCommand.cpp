// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/graph/HostBlock.h"
#include "host/plugins/BlockDescription.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

using Json = nlohmann::ordered_json;
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

Json jsonOf(const PropertyDescription::Held& held) {
    if (const bool* const flag = std::get_if<bool>(&held)) return *flag;
    if (const auto* const whole = std::get_if<std::int64_t>(&held)) return *whole;
    if (const double* const number = std::get_if<double>(&held)) return *number;
    const auto* const matrix = std::get_if<Quillmere::Core::MatrixXd>(&held);
    if (matrix == nullptr) return nullptr;
    Json rows = Json::array();
    for (Eigen::Index row = 0; row < matrix->rows(); ++row) {
        Json cells = Json::array();
        for (Eigen::Index column = 0; column < matrix->cols(); ++column)
            cells.push_back((*matrix)(row, column));
        rows.push_back(std::move(cells));
    }
    return rows;
}

Json jsonOf(const PropertyDescription& property) {
    Json json{{"name", property.name}, {"kind", nameOf(property.kind)}};
    if (property.kind != Kind::Command) {
        json["default"] = jsonOf(property.value);
        if (property.kind == Kind::Choice) json["defaultLabel"] = valueText(property);
    }
    if (property.hasLimits) {
        json["minimum"] = property.minimum;
        json["maximum"] = property.maximum;
        json["step"] = property.step;
    }
    if (property.kind == Kind::Choice) json["labels"] = property.labels;
    json["writable"] = property.isWritable;
    json["readable"] = property.isReadable;
    return json;
}

Json jsonOf(const BlockDescription& block) {
    Json json{{"type", block.type},
              {"inputs", Json::array()},
              {"outputs", Json::array()},
              {"properties", Json::array()}};
    for (const BlockDescription::Pin& pin : block.inputs)
        json["inputs"].push_back({{"name", pin.name}, {"blocking", pin.isBlocking}});
    for (const BlockDescription::Pin& pin : block.outputs)
        json["outputs"].push_back({{"name", pin.name}});
    for (const PropertyDescription& property : block.properties)
        json["properties"].push_back(jsonOf(property));
    return json;
}

Json jsonOf(const std::vector<HostBlock::SettingDescription>& settings) {
    Json json = Json::array();
    for (const HostBlock::SettingDescription& setting : settings)
        json.push_back({{"name", setting.name},
                        {"kind", setting.kind},
                        {"default", setting.standard.empty() ? Json(nullptr) : Json(setting.standard)},
                        {"meaning", setting.meaning}});
    return json;
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
    for (const std::string& name : BlockCatalogue::getHostTypeNames())
        std::cout << "  " << name << "\n";
}

Json namesAsJson(const BlockCatalogue& catalogue) {
    Json json{{"blocks", Json::array()}, {"hostBlocks", BlockCatalogue::getHostTypeNames()}};
    for (const std::string& name : catalogue.getTypeNames())
        json["blocks"].push_back({{"type", name},
                                  {"plugin", catalogue.getPluginName(name)},
                                  {"version", catalogue.getPluginVersion(name)}});
    return json;
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
            std::cout << namesAsJson(catalogue).dump(2) << "\n";
        else
            printNames(catalogue);
        return kDone;
    }
    const BlockPtr block = createBlock(catalogue, type);
    const auto* const hostBlock = dynamic_cast<const HostBlock*>(block.get());
    if (asJson) {
        Json json = jsonOf(describe(*block));
        json["plugin"] = hostBlock != nullptr ? Json(nullptr) : Json(catalogue.getPluginName(type));
        if (hostBlock != nullptr) json["properties"] = jsonOf(hostBlock->getSettingDescriptions());
        std::cout << json.dump(2) << "\n";
    } else if (hostBlock != nullptr) {
        printHostBlock(*hostBlock);
    } else {
        printBlock(describe(*block), catalogue.getPluginName(type) + " " + catalogue.getPluginVersion(type));
    }
    return kDone;
}

} // namespace Cli
