// SPDX-License-Identifier: MIT
#include "host/graph/BlockJson.h"

#include <cstdint>
#include <vector>

namespace Quillmere::Host::Json {

namespace {
using Kind = PropertyDescription::Kind;
using Core::MatrixXd;

Text matrix(const MatrixXd& values) {
    std::vector<Text> rows;
    for (Eigen::Index row = 0; row < values.rows(); ++row) {
        std::vector<Text> cells;
        for (Eigen::Index column = 0; column < values.cols(); ++column)
            cells.push_back(number(values(row, column)));
        rows.push_back(list(cells));
    }
    return list(rows);
}

Text settings(const std::vector<PropertyDescription>& properties) {
    std::vector<Text> values;
    for (const PropertyDescription& property : properties)
        values.push_back(setting(property));
    return list(values);
}

Text settings(const std::vector<HostBlock::SettingDescription>& descriptions) {
    std::vector<Text> values;
    for (const HostBlock::SettingDescription& description : descriptions)
        values.push_back(
            object({{"name", text(description.name)},
                    {"kind", text(description.kind)},
                    {"default", description.defaultText.empty() ? null() : text(description.defaultText)},
                    {"meaning", text(description.meaning)}}));
    return list(values);
}

Text whole(const BlockDescription& description, const Text& properties, const Text& plugin) {
    std::vector<Text> inputs;
    for (const BlockDescription::Pin& pin : description.inputs)
        inputs.push_back(object({{"name", text(pin.name)}, {"blocking", flag(pin.isBlocking)}}));
    std::vector<Text> outputs;
    for (const BlockDescription::Pin& pin : description.outputs)
        outputs.push_back(object({{"name", text(pin.name)}}));
    return object({{"type", text(description.type)},
                   {"inputs", list(inputs)},
                   {"outputs", list(outputs)},
                   {"properties", properties},
                   {"plugin", plugin}});
}
} // namespace

Text heldValue(const PropertyDescription::Held& held) {
    if (const bool* const value = std::get_if<bool>(&held)) return flag(*value);
    if (const auto* const value = std::get_if<std::int64_t>(&held)) return std::to_string(*value);
    if (const double* const value = std::get_if<double>(&held)) return number(*value);
    if (const auto* const value = std::get_if<MatrixXd>(&held)) return matrix(*value);
    return null();
}

Text setting(const PropertyDescription& property) {
    Members members{{"name", text(property.name)}, {"kind", text(nameOf(property.kind))}};
    if (property.kind != Kind::Command) members.emplace_back("default", heldValue(property.value));
    if (property.kind == Kind::Choice) members.emplace_back("defaultLabel", text(valueText(property)));
    if (property.hasLimits) {
        members.emplace_back("minimum", number(property.minimum));
        members.emplace_back("maximum", number(property.maximum));
        members.emplace_back("step", number(property.step));
    }
    if (property.kind == Kind::Choice) members.emplace_back("labels", listOfTexts(property.labels));
    members.emplace_back("writable", flag(property.isWritable));
    members.emplace_back("readable", flag(property.isReadable));
    return object(members);
}

Text block(const BlockDescription& description, const std::string& plugin) {
    return whole(description, settings(description.properties), text(plugin));
}

Text hostBlock(const HostBlock& described, const std::string& plugin) {
    return whole(describe(described), settings(described.getSettingDescriptions()),
                 plugin.empty() ? null() : text(plugin));
}

Text blockTypes(const BlockCatalogue& catalogue) {
    std::vector<Text> blocks;
    for (const std::string& name : catalogue.getTypeNames())
        blocks.push_back(object({{"type", text(name)},
                                 {"plugin", text(catalogue.getPluginName(name))},
                                 {"version", text(catalogue.getPluginVersion(name))}}));
    return object({{"blocks", list(blocks)}, {"hostBlocks", listOfTexts(catalogue.getHostTypeNames())}});
}

} // namespace Quillmere::Host::Json
