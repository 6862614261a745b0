// SPDX-License-Identifier: MIT
#include "cli/BlockText.h"

#include "cli/TextLines.h"
#include "host/text/ShortestText.h"
#include "host/text/Table.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Cli {

using namespace Quillmere::Host;

namespace {
using Kind = PropertyDescription::Kind;
using RelativeTo = BlockManual::RelativeTo;

constexpr std::size_t kIndent = TextLines::kIndent;
constexpr std::size_t kTextIndent = 3 * kIndent; // of what is told of a pin or a setting

const char* blockingText(bool isBlocking) {
    return isBlocking ? "blocking" : "not blocking";
}

std::string stepText(const PropertyDescription& property) {
    return property.hasLimits && property.step != 0.0 ? ", step " + shortestText(property.step) : "";
}

/// `unit` is what the page says, if it says any.
void addUnit(TextLines& lines, const std::string& unit, const std::map<std::string, RelativeTo>& relations,
             const std::string& name) {
    const auto relation = relations.find(name);
    const bool isRelative = relation != relations.end();
    if (!unit.empty() || isRelative)
        lines.addText(kTextIndent, "Unit: " + (unit.empty() ? meaningOf(relation->second) : unit) + ".");
    if (isRelative)
        lines.addText(kTextIndent, std::string("Relative to the rate of samples: a graph may give it ") +
                                       (relation->second == RelativeTo::Samples ? "as a time, as in 200 ms."
                                                                                : "in hertz, as in 5 Hz."));
}

/// Of a setting whose unit is one of time or frequency, or of one by the choice of another setting.
void addTimeUnit(TextLines& lines, const BlockManual& relations, const std::string& name) {
    const auto told = relations.settingUnits.find(name);
    if (told == relations.settingUnits.end()) return;
    const std::string chooser = told->second.setting;
    const bool isTime = told->second.unit == BlockManual::TimeUnit::Seconds;
    std::string text = "A graph may give it with a unit, as in ";
    text += !chooser.empty() ? "200 ms or 5 Hz, by " + chooser + "." : isTime ? "200 ms." : "5 Hz.";
    lines.addText(kTextIndent, text);
}

std::string rateText(const BlockManual::OutputRate& rate) {
    switch (rate.kind) {
    case BlockManual::OutputRate::Kind::Same:
        return "Sends as often as samples come.";
    case BlockManual::OutputRate::Kind::Step:
        return "Sends by itself; '" + rate.setting + "' is the time from one sample to the next.";
    case BlockManual::OutputRate::Kind::Rate:
        return "Sends by times of its own; '" + rate.setting + "' is how many samples a second.";
    case BlockManual::OutputRate::Kind::None:
        break;
    }
    return "Sends at no even rate.";
}

void addPin(TextLines& lines, const BlockPage::Pin* told) {
    if (told == nullptr) return;
    lines.addText(kTextIndent, told->meaning);
    if (!told->shape.empty()) lines.addText(kTextIndent, "Shape: " + told->shape + ".");
}

void addPins(TextLines& lines, const BlockDescription& block, const BlockPage& page) {
    if (!block.inputs.empty()) lines.addHeading("inputs");
    for (const BlockDescription::Pin& pin : block.inputs) {
        lines.addLine(kIndent, pin.name + "  " + blockingText(pin.isBlocking));
        const BlockPage::Pin* const told = page.findInput(pin.name);
        addPin(lines, told);
        addUnit(lines, told == nullptr ? "" : told->unit, page.relations.inputs, pin.name);
    }
    if (!block.outputs.empty()) lines.addHeading("outputs");
    for (const BlockDescription::Pin& pin : block.outputs) {
        lines.addLine(kIndent, pin.name);
        const BlockPage::Pin* const told = page.findOutput(pin.name);
        addPin(lines, told);
        addUnit(lines, told == nullptr ? "" : told->unit, {}, pin.name);
        const auto rate = page.relations.outputs.find(pin.name);
        if (rate != page.relations.outputs.end()) lines.addText(kTextIndent, rateText(rate->second));
    }
}

std::string kindText(const PropertyDescription& property) {
    if (property.kind == Kind::Command) return "command";
    return expectedText(property) + stepText(property) + "; default: " + valueText(property) +
           (property.isWritable ? "" : ", read-only");
}

void addSettings(TextLines& lines, const BlockDescription& block, const BlockPage& page) {
    if (!block.properties.empty()) lines.addHeading("properties");
    for (const PropertyDescription& property : block.properties) {
        lines.addText(kIndent, property.name, kIndent + property.name.size() + 2, kindText(property));
        const BlockPage::Setting* const told = page.findSetting(property.name);
        if (told != nullptr) lines.addText(kTextIndent, told->meaning);
        addUnit(lines, told == nullptr ? "" : told->unit, page.relations.settings, property.name);
        addTimeUnit(lines, page.relations, property.name);
        if (told != nullptr && !told->why.empty()) lines.addText(kTextIndent, "On the default: " + told->why);
    }
}

void addSettings(TextLines& lines, const std::vector<HostBlock::SettingDescription>& settings) {
    if (!settings.empty()) lines.addHeading("properties");
    for (const HostBlock::SettingDescription& setting : settings) {
        const std::string otherwise =
            setting.defaultText.empty() ? ", required" : "; default: " + setting.defaultText;
        lines.addLine(kIndent, setting.name + "  " + setting.kind + otherwise);
        lines.addText(kTextIndent, setting.meaning);
    }
}

void addBegin(TextLines& lines, const std::string& type, const std::string& origin, const BlockPage& page) {
    lines.addLine(0, type + " (" + origin + (page.category.empty() ? "" : ", " + page.category) + ")");
    for (const std::string& part : {page.purpose, page.text}) {
        if (part.empty()) continue;
        lines.addEmptyLine();
        lines.addText(0, part);
    }
    if (page.formula.empty()) return;
    lines.addHeading("formula");
    lines.addPassage(kIndent, page.formula);
}

void addList(TextLines& lines, const std::string& heading, const std::vector<std::string>& items) {
    if (!items.empty()) lines.addHeading(heading);
    for (const std::string& item : items)
        lines.addText(kIndent, "-", 2 * kIndent, item);
}

void addFile(TextLines& lines, const std::string& name, const std::string& text) {
    lines.addEmptyLine();
    lines.addLine(kIndent, name);
    lines.addPassage(2 * kIndent, text);
}

void addExample(TextLines& lines, const BlockPage::Example& example) {
    if (example.graph.empty()) return;
    lines.addHeading("example");
    lines.addText(kIndent, example.text);
    for (const BlockPage::File& file : example.files)
        addFile(lines, file.name, file.text);
    addFile(lines, "graph.yaml", example.graph);
    std::string call = "quillmere run graph.yaml";
    for (const std::string& argument : example.arguments)
        call += " " + argument;
    lines.addEmptyLine();
    lines.addLine(kIndent, call);
    for (const BlockPage::File& file : example.results)
        addFile(lines, file.name + ", which it writes", file.text);
}

/// Below each other, each with what it is for.
void addTypes(TextLines& lines, const std::vector<std::string>& types, const BlockPages& pages) {
    constexpr std::size_t kWidestName = 26; // longer ones have a line of their own
    std::size_t width = 0;
    for (const std::string& type : types)
        if (type.size() <= kWidestName) width = std::max(width, type.size());
    for (const std::string& type : types) {
        const auto page = pages.find(type);
        lines.addText(kIndent, type, kIndent + width + 2,
                      page == pages.end() ? std::string() : page->second.purpose);
    }
}

void addEnd(TextLines& lines, const BlockPage& page, const BlockPages& pages) {
    addList(lines, "odd, and so on purpose", page.odd);
    addList(lines, "mistakes", page.mistakes);
    addExample(lines, page.example);
    if (page.related.empty()) return;
    lines.addHeading("related");
    addTypes(lines, page.related, pages);
}
} // namespace

std::string listText(const BlockCatalogue& catalogue, const BlockPages& pages) {
    std::map<std::string, std::vector<std::string>> categories;
    std::vector<std::pair<std::string, std::vector<std::string>>> others;
    for (const std::string& type : catalogue.getTypeNames()) {
        const auto page = pages.find(type);
        if (page != pages.end() && !page->second.category.empty()) {
            categories[page->second.category].push_back(type);
            continue;
        }
        const std::string origin = catalogue.getPluginName(type) + " " + catalogue.getPluginVersion(type);
        if (others.empty() || others.back().first != origin) others.push_back({origin, {}});
        others.back().second.push_back(type);
    }
    TextLines lines;
    for (const auto& [category, types] : categories) {
        lines.addHeading(category);
        addTypes(lines, types, pages);
    }
    for (const auto& [origin, types] : others) {
        lines.addHeading("blocks of " + origin);
        addTypes(lines, types, pages);
    }
    lines.addHeading("blocks of the host");
    addTypes(lines, catalogue.getHostTypeNames(), pages);
    return lines.getText();
}

std::string plainText(const BlockDescription& block, const std::string& origin) {
    Table inputs(kIndent);
    for (const BlockDescription::Pin& pin : block.inputs)
        inputs.add({pin.name, blockingText(pin.isBlocking)});
    Table outputs(kIndent);
    for (const BlockDescription::Pin& pin : block.outputs)
        outputs.add({pin.name});
    Table properties(kIndent);
    for (const PropertyDescription& property : block.properties) {
        const bool isCommand = property.kind == Kind::Command;
        properties.add({property.name, nameOf(property.kind), isCommand ? "" : valueText(property),
                        isCommand ? "" : expectedText(property) + stepText(property),
                        isCommand || property.isWritable ? "" : "read-only"});
    }
    return block.type + " (" + origin + ")\n\ninputs\n" + inputs.getText() + "\noutputs\n" +
           outputs.getText() + "\nproperties\n" + properties.getText();
}

std::string pageText(const BlockDescription& block, const std::string& origin, const BlockPage& page,
                     const BlockPages& pages) {
    TextLines lines;
    addBegin(lines, block.type, origin, page);
    addPins(lines, block, page);
    addSettings(lines, block, page);
    addEnd(lines, page, pages);
    return lines.getText();
}

std::string endText(const HostBlock& block, const std::string& origin, const BlockPage& page,
                    const BlockPages& pages) {
    const BlockDescription description = describe(block);
    TextLines lines;
    BlockPage told = page;
    if (told.purpose.empty()) told.purpose = block.getPurpose();
    addBegin(lines, description.type, origin, told);
    addPins(lines, description, page);
    if (description.inputs.empty() && description.outputs.empty()) {
        lines.addEmptyLine();
        lines.addLine(0, "Its pins are those that the graph gives it.");
    }
    addSettings(lines, block.getSettingDescriptions());
    addEnd(lines, page, pages);
    return lines.getText();
}

} // namespace Cli
