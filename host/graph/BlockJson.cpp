// SPDX-License-Identifier: MIT
#include "host/graph/BlockJson.h"

#include "host/plugins/PluginLibrary.h"

#include <cstdint>
#include <map>
#include <string>
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

/// What a page says of a part, where it says something.
void addText(Members& members, const char* name, const std::string& told) {
    if (!told.empty()) members.emplace_back(name, text(told));
}

void addRelation(Members& members, const std::map<std::string, BlockManual::RelativeTo>& relations,
                 const std::string& name) {
    const auto relation = relations.find(name);
    if (relation != relations.end()) members.emplace_back("relativeTo", text(wordOf(relation->second)));
}

Text rate(const BlockManual::OutputRate& told) {
    switch (told.kind) {
    case BlockManual::OutputRate::Kind::Same:
        return text("same");
    case BlockManual::OutputRate::Kind::Step:
        return object({{"step", text(told.setting)}});
    case BlockManual::OutputRate::Kind::Rate:
        return object({{"rate", text(told.setting)}});
    case BlockManual::OutputRate::Kind::None:
        break;
    }
    return text("none");
}

void addPin(Members& members, const BlockPage::Pin* pin) {
    if (pin == nullptr) return;
    addText(members, "meaning", pin->meaning);
    addText(members, "shape", pin->shape);
    addText(members, "unit", pin->unit);
}

Text input(const BlockDescription::Pin& pin, const BlockPage& page) {
    Members members{{"name", text(pin.name)}, {"blocking", flag(pin.isBlocking)}};
    addPin(members, page.findInput(pin.name));
    addRelation(members, page.relations.inputs, pin.name);
    return object(members);
}

Text output(const BlockDescription::Pin& pin, const BlockPage& page) {
    Members members{{"name", text(pin.name)}};
    addPin(members, page.findOutput(pin.name));
    const auto told = page.relations.outputs.find(pin.name);
    if (told != page.relations.outputs.end()) members.emplace_back("rate", rate(told->second));
    return object(members);
}

Members membersOf(const PropertyDescription& property) {
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
    return members;
}

Text settings(const std::vector<PropertyDescription>& properties, const BlockPage& page) {
    std::vector<Text> values;
    for (const PropertyDescription& property : properties) {
        Members members = membersOf(property);
        if (const BlockPage::Setting* const told = page.findSetting(property.name)) {
            addText(members, "meaning", told->meaning);
            addText(members, "unit", told->unit);
            addText(members, "why", told->why);
        }
        addRelation(members, page.relations.settings, property.name);
        values.push_back(object(members));
    }
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

Text files(const std::vector<BlockPage::File>& named) {
    std::vector<Text> values;
    for (const BlockPage::File& file : named)
        values.push_back(object({{"name", text(file.name)}, {"text", text(file.text)}}));
    return list(values);
}

Text example(const BlockPage::Example& shown) {
    return object({{"text", text(shown.text)},
                   {"files", files(shown.files)},
                   {"graph", text(shown.graph)},
                   {"arguments", listOfTexts(shown.arguments)},
                   {"results", files(shown.results)}});
}

void addPage(Members& members, const BlockPage& page) {
    addText(members, "category", page.category);
    addText(members, "purpose", page.purpose);
    addText(members, "text", page.text);
    addText(members, "formula", page.formula);
    if (!page.odd.empty()) members.emplace_back("odd", listOfTexts(page.odd));
    if (!page.mistakes.empty()) members.emplace_back("mistakes", listOfTexts(page.mistakes));
    if (!page.example.graph.empty()) members.emplace_back("example", example(page.example));
    if (!page.related.empty()) members.emplace_back("related", listOfTexts(page.related));
}

Members whole(const BlockDescription& description, const Text& properties, const Text& plugin,
              const BlockPage& page) {
    std::vector<Text> inputs;
    for (const BlockDescription::Pin& pin : description.inputs)
        inputs.push_back(input(pin, page));
    std::vector<Text> outputs;
    for (const BlockDescription::Pin& pin : description.outputs)
        outputs.push_back(output(pin, page));
    Members members{{"type", text(description.type)},
                    {"inputs", list(inputs)},
                    {"outputs", list(outputs)},
                    {"properties", properties},
                    {"plugin", plugin}};
    addPage(members, page);
    return members;
}

BlockPage orNone(const BlockPage* page) {
    return page == nullptr ? BlockPage{} : *page;
}
Members membersOf(const BlockDescription& description, const std::string& plugin, const BlockPage& page) {
    return whole(description, settings(description.properties, page), text(plugin), page);
}

Members membersOf(const HostBlock& described, const std::string& plugin, const BlockPage& page) {
    return whole(describe(described), settings(described.getSettingDescriptions()),
                 plugin.empty() ? null() : text(plugin), page);
}

Members membersOf(const Core::Filter& living, const BlockCatalogue& catalogue, const BlockPage& page) {
    const std::string plugin = catalogue.getPluginName(living.getTypeName());
    const auto* const end = dynamic_cast<const HostBlock*>(&living);
    return end != nullptr ? membersOf(*end, plugin, page) : membersOf(describe(living), plugin, page);
}

/// Behind what is told of each block what is told of all.
Text typesOf(const std::vector<Text>& blocks, const BlockCatalogue& catalogue,
             const std::map<std::string, BlockPage>& pages, const Members& more) {
    Members purposes;
    for (const std::string& name : catalogue.getHostTypeNames())
        if (const auto page = pages.find(name); page != pages.end())
            addText(purposes, name.c_str(), page->second.purpose);
    Members members{{"blocks", list(blocks)},
                    {"hostBlocks", listOfTexts(catalogue.getHostTypeNames())},
                    {"hostPurposes", object(purposes)}};
    members.insert(members.end(), more.begin(), more.end());
    return object(members);
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
    return object(membersOf(property));
}

Text blockOf(const Core::Filter& living, const BlockCatalogue& catalogue, const BlockPage* page) {
    return object(membersOf(living, catalogue, orNone(page)));
}

Text block(const BlockDescription& description, const std::string& plugin, const BlockPage* page) {
    return object(membersOf(description, plugin, orNone(page)));
}

Text hostBlock(const HostBlock& described, const std::string& plugin, const BlockPage* page) {
    return object(membersOf(described, plugin, orNone(page)));
}

Text blockTypes(const BlockCatalogue& catalogue, const std::map<std::string, BlockPage>& pages) {
    std::vector<Text> blocks;
    for (const std::string& name : catalogue.getTypeNames()) {
        Members members{{"type", text(name)},
                        {"plugin", text(catalogue.getPluginName(name))},
                        {"version", text(catalogue.getPluginVersion(name))}};
        if (const auto page = pages.find(name); page != pages.end()) {
            addText(members, "category", page->second.category);
            addText(members, "purpose", page->second.purpose);
        }
        blocks.push_back(object(members));
    }
    return typesOf(blocks, catalogue, pages, {});
}

Text blockManuals(const BlockCatalogue& catalogue, const std::map<std::string, BlockPage>& pages) {
    const auto told = [&](const std::string& type) -> Members {
        const auto page = pages.find(type);
        try {
            return membersOf(*catalogue.create(type, type), catalogue,
                             page == pages.end() ? BlockPage{} : page->second);
        } catch (const PluginException& exception) {
            return {{"type", text(type)},
                    {"plugin", text(catalogue.getPluginName(type))},
                    {"failure", text(exception.what())}};
        }
    };
    std::vector<Text> blocks;
    for (const std::string& type : catalogue.getTypeNames()) {
        Members members = told(type);
        members.emplace_back("version", text(catalogue.getPluginVersion(type)));
        blocks.push_back(object(members));
    }
    std::vector<Text> ofHost;
    for (const std::string& type : catalogue.getHostTypeNames())
        ofHost.push_back(object(told(type)));
    return typesOf(blocks, catalogue, pages, {{"hostManuals", list(ofHost)}});
}

} // namespace Quillmere::Host::Json
