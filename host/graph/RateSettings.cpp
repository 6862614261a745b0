// SPDX-License-Identifier: MIT
#include "host/graph/RateSettings.h"

#include "framework/Quillmere.h"
#include "host/description/Quantity.h"
#include "host/graph/BlockDescription.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

namespace {
bool getIsNumeric(const Core::AbstractProperty& property) {
    using Kind = PropertyDescription::Kind;
    const Kind kind = kindOf(property);
    return kind == Kind::Number || kind == Kind::Whole || kind == Kind::Count;
}

} // namespace

bool getAwaitsRate(const PropertyWrite& write) {
    return toQuantity(*write.value) && getIsNumeric(*write.property);
}

void RateSettings::measureSources() {
    const bool isOfUse =
        std::any_of(parts.nodes.begin(), parts.nodes.end(), [&](const GraphParts::Node& node) {
            if (node.block == nullptr || node.hostBlock != nullptr) return false;
            const BlockManual& manual = values.getFinder().getManual(node.description->type);
            const auto getIsSpectrum = [](const auto& rows) {
                return rows.second == BlockManual::OutputRows::Frequencies;
            };
            return !manual.settings.empty() || !manual.inputs.empty() ||
                   std::any_of(manual.outputRows.begin(), manual.outputRows.end(), getIsSpectrum);
        });
    if (!isOfUse) return;
    for (const GraphParts::Node& node : parts.nodes) {
        if (node.recorded == nullptr || node.isFaulty) continue;
        for (const Core::AbstractOutputPin* const output : node.block->getOutputPins())
            if (!output->getInputs().empty())
                parts.sourceRates.emplace(output, node.recorded->getSampleRate(*output));
    }
}

void RateSettings::write() {
    for (GraphParts::Node& node : parts.nodes)
        if (node.block != nullptr && node.hostBlock == nullptr && !node.isFaulty) writeSettings(node);
    writeTimeline();
    parts.awaitsRates = false;
}

bool RateSettings::convert(const RateValues::Target& target, Value& value, Complaints& own,
                           std::optional<double> at) {
    auto conversion = values.convert(target, value, own);
    if (!conversion) return false;
    conversion->at = at;
    value = conversion->getValue(value);
    parts.conversions.push_back(std::move(*conversion));
    return true;
}

/// Nothing has been written to a block of which one setting has to wait.
void RateSettings::writeSettings(GraphParts::Node& node) {
    GraphDescription::Block& block =
        description.blocks[static_cast<std::size_t>(node.description - description.blocks.data())];
    std::vector<PropertyWrite> writes;
    Complaints own;
    bool hasWaited = false;
    for (GraphDescription::Setting& setting : block.settings) {
        Core::AbstractProperty* const property = node.block->getPropertyBag().find(setting.name);
        if (property == nullptr || setting.value.isMissing()) continue;
        if (getAwaitsRate({property, &setting.value})) {
            hasWaited = true;
            if (!convert({.block = *node.block, .type = block.type, .name = setting.name}, setting.value,
                         own))
                continue;
        }
        writes.push_back({property, &setting.value});
    }
    if (!hasWaited) return;
    writeProperties(std::move(writes), own);
    node.isFaulty = !own.isEmpty();
    complaints.add(own);
}

void RateSettings::writeTimeline() {
    for (Timeline::Action& action : parts.timeline.getActions()) {
        const bool isSetting = action.property != nullptr && getAwaitsRate({action.property, &action.value});
        const bool isSample = action.input != nullptr && toQuantity(action.value);
        if (!isSetting && !isSample) continue;
        const GraphParts::Node& node = *parts.find(action.block->getName());
        const RateValues::Target target{.block = *action.block,
                                        .type = node.description->type,
                                        .name =
                                            isSample ? action.input->getName() : action.property->getName(),
                                        .isInput = isSample};
        if (convert(target, action.value, complaints, action.at) && isSample)
            action.sample = Core::MatrixXd::Constant(1, 1, *toNumber(action.value, complaints));
    }
}

void RateSettings::warnOfUnevenTime() {
    RateFinder& finder = values.getFinder();
    std::set<const GraphParts::Node*> told;
    for (const GraphParts::Node& node : parts.nodes) {
        if (node.block == nullptr || node.hostBlock != nullptr || node.isFaulty) continue;
        const BlockManual& manual = finder.getManual(node.description->type);
        if (manual.settings.empty() || manual.takesAnyTimes) continue;
        const FoundRate& found = finder.rateAt(*node.block);
        if (found.output != nullptr) parts.evenOutputs.emplace(found.output, node.getQuoted());
        if (!found.rate || found.rate->getIsSteady() || !told.insert(found.origin).second) continue;
        complaints.warn(found.origin->getEndPlace(),
                        found.reason + ", while " + node.getQuoted() + " takes its samples to come evenly");
    }
}

} // namespace Quillmere::Host
