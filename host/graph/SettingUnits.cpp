// SPDX-License-Identifier: MIT
#include "host/graph/SettingUnits.h"

#include "framework/Quillmere.h"
#include "host/description/Quantity.h"
#include "host/graph/BlockDescription.h"
#include "host/graph/RateSettings.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace Quillmere::Host {

namespace {
/// What a graph gives for a setting; null where it gives nothing.
const Value* givenValue(const GraphDescription::Block* given, const std::string& setting) {
    if (given == nullptr) return nullptr;
    const auto found =
        std::find_if(given->settings.begin(), given->settings.end(),
                     [&](const GraphDescription::Setting& candidate) { return candidate.name == setting; });
    return found == given->settings.end() || found->value.isMissing() ? nullptr : &found->value;
}

/// The label of a choice, as it will be. Graphs give the label or its index.
std::string choiceOf(const RateValues::Target& target, const std::string& setting,
                     const GraphDescription::Block* given) {
    const Core::AbstractProperty* const property = target.block.getPropertyBag().find(setting);
    if (property == nullptr) return {};
    const PropertyDescription described = describe(*property);
    const Value* const value = givenValue(given, setting);
    if (value == nullptr) return valueText(described);
    for (std::size_t i = 0; i < described.labels.size(); ++i)
        if (value->text == std::to_string(i)) return described.labels[i];
    return value->text;
}
} // namespace

std::optional<BlockManual::TimeUnit> unitOf(const BlockManual& manual, const RateValues::Target& target,
                                            const GraphDescription::Block* given) {
    const auto told = manual.settingUnits.find(target.name);
    if (told == manual.settingUnits.end()) return std::nullopt;
    const BlockManual::SettingUnit& unit = told->second;
    if (unit.setting.empty()) return unit.unit;
    const auto choice = unit.choices.find(choiceOf(target, unit.setting, given));
    return choice == unit.choices.end() ? std::nullopt : std::optional(choice->second);
}

std::optional<RateConversion> inUnit(BlockManual::TimeUnit unit, const RateValues::Target& target,
                                     const Value& value, Complaints& complaints) {
    const Quantity quantity = *toQuantity(value);
    const bool isTime = unit == BlockManual::TimeUnit::Seconds;
    if (isTime != (quantity.kind == Quantity::Kind::Time)) {
        complaints.add(value.where, target.describe(value),
                       isTime ? "a time, as 0.2 s, or a number of seconds"
                              : "a frequency, as 5 Hz, or a number without a unit");
        return std::nullopt;
    }
    RateConversion conversion;
    conversion.target = target.block.getName() + "." + target.name;
    conversion.written = printable(value.text, kLongestName);
    conversion.number = quantity.number;
    conversion.meaning = wordOf(unit);
    return conversion;
}

void SettingUnits::convert(const GraphParts::Node& node, Complaints& complaints) {
    GraphDescription::Block& block =
        description.blocks[static_cast<std::size_t>(node.description - description.blocks.data())];
    for (GraphDescription::Setting& setting : block.settings) {
        Core::AbstractProperty* const property = node.block->getPropertyBag().find(setting.name);
        if (property != nullptr) convert(node, *property, std::nullopt, setting.value, complaints);
    }
}

bool SettingUnits::convert(const GraphParts::Node& node, Core::AbstractProperty& property,
                           std::optional<double> at, Value& value, Complaints& complaints) {
    if (!getAwaitsRate({&property, &value})) return true;
    const RateValues::Target target{
        .block = *node.block, .type = node.description->type, .name = property.getName()};
    const auto unit = unitOf(manuals.get(target.type), target, node.description);
    if (!unit) return true; // has to wait for the rate
    auto conversion = inUnit(*unit, target, value, complaints);
    if (!conversion) return false;
    conversion->at = at;
    const bool isNews = !toQuantity(value)->isAsWritten;
    value = conversion->getValue(value);
    if (isNews) parts.conversions.push_back(std::move(*conversion));
    return true;
}

} // namespace Quillmere::Host
