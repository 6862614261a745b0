// SPDX-License-Identifier: MIT
#include "host/graph/RateFinder.h"

#include "framework/Quillmere.h"
#include "host/ends/MainInput.h"
#include "host/graph/BlockDescription.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <variant>

namespace Quillmere::Host {

namespace {
FoundRate unknown(std::string reason) {
    FoundRate none;
    none.reason = std::move(reason);
    return none;
}

std::string percent(double part) {
    return std::to_string(std::lround(100.0 * part)) + " %";
}
} // namespace

RateFinder::RateFinder(const std::vector<GraphParts::Node>& graphNodes, const SourceRates& sourceRates,
                       const BlockCatalogue& blockCatalogue)
    : sources(sourceRates), manuals(blockCatalogue) {
    for (const GraphParts::Node& node : graphNodes)
        if (node.block != nullptr) nodes.emplace(node.block.get(), &node);
}

/// What holds at the end of the way holds for every block on it.
const FoundRate& RateFinder::rateAt(const Core::Filter& block) {
    std::vector<const Core::Filter*> way;
    FoundRate rate;
    for (const Core::Filter* next = &block; next != nullptr;) {
        if (const auto known = found.find(next); known != found.end()) {
            rate = known->second;
            break;
        }
        if (std::find(way.begin(), way.end(), next) != way.end()) {
            rate = unknown("'" + next->getName() + "' stands in a loop, which has no rate of its own");
            break;
        }
        way.push_back(next);
        Step step = stepBack(*next);
        rate = std::move(step.rate);
        next = step.before;
    }
    for (const Core::Filter* const passed : way)
        found.emplace(passed, rate);
    return found.at(&block);
}

RateFinder::Step RateFinder::stepBack(const Core::Filter& block) {
    const Core::AbstractInputPin* const input = mainInputOf(block);
    const Core::AbstractOutputPin* const sender = input == nullptr ? nullptr : input->getConnectedOutput();
    if (sender == nullptr) return {unknown("no samples come to '" + block.getName() + "'")};
    return stepInto(*sender);
}

RateFinder::Step RateFinder::stepInto(const Core::AbstractOutputPin& output) {
    const auto sender = nodes.find(output.getManager());
    if (sender == nodes.end())
        return {unknown("its samples come from no block of the graph file, but from the timeline or a block "
                        "that was added")};
    const GraphParts::Node& node = *sender->second;
    if (node.source != nullptr) return {rateOfSource(node, output)};
    const auto& outputs = getManual(node.description->type).outputs;
    const auto told = outputs.find(output.getName());
    if (told == outputs.end()) return {unknown("nothing says how often " + node.getQuoted() + " sends")};
    switch (told->second.kind) {
    case BlockManual::OutputRate::Kind::Same:
        return {{}, node.block.get()};
    case BlockManual::OutputRate::Kind::Step:
    case BlockManual::OutputRate::Kind::Rate:
        return {rateBySetting(node, told->second)};
    case BlockManual::OutputRate::Kind::None:
        break;
    }
    return {unknown("'" + output.getName() + "' of " + node.getQuoted() + " sends at no even rate")};
}

FoundRate RateFinder::rateOfSource(const GraphParts::Node& node,
                                   const Core::AbstractOutputPin& output) const {
    const auto known = sources.find(&output);
    const auto rate = known == sources.end() ? std::nullopt : known->second;
    FoundRate source;
    source.origin = &node;
    source.output = &output;
    if (const std::string setting = node.recorded == nullptr ? "" : node.recorded->getRateSetting();
        !setting.empty())
        source.remedy = "'" + setting + ":' of " + node.getQuoted() + " and rows a second would state it";
    if (!rate) {
        source.reason = "that of " + node.getEndName() + " can't be known before the run";
        const std::string hindrance = node.recorded == nullptr ? "" : node.recorded->getRateHindrance(output);
        if (!hindrance.empty()) source.reason += ", since " + hindrance;
        return source;
    }
    source.rate = rate;
    if (rate->getIsSteady()) return source;
    source.reason = unevenText(*rate, node);
    return source;
}

FoundRate RateFinder::rateBySetting(const GraphParts::Node& node, const BlockManual::OutputRate& told) const {
    const std::string& setting = told.setting;
    const Core::AbstractProperty* const property = node.block->getPropertyBag().find(setting);
    if (property == nullptr) return unknown(node.getQuoted() + " has no setting '" + setting + "'");
    const PropertyDescription described = describe(*property);
    double held = 0.0;
    if (const auto* const number = std::get_if<double>(&described.value)) held = *number;
    if (const auto* const whole = std::get_if<std::int64_t>(&described.value))
        held = static_cast<double>(*whole);
    const bool isRate = told.kind == BlockManual::OutputRate::Kind::Rate;
    if (!(held > 0.0) || !std::isnormal(1.0 / held))
        return unknown((isRate ? "the rate '" : "the step '") + setting + "' of " + node.getQuoted() +
                       (isRate ? " is none" : " is no time"));
    FoundRate rate;
    rate.rate = SampleRate{.perSecond = isRate ? held : 1.0 / held};
    rate.origin = &node;
    return rate;
}

std::string unevenText(const SampleRate& rate, const GraphParts::Node& source) {
    return percent(rate.unsteadyPart) + " of the steps in " + source.getEndName() +
           " differ from their mean by more than half of it, which is no even rate";
}

std::string nameOf(const Core::AbstractOutputPin& output) {
    return output.getManager()->getName() + "." + output.getName();
}

std::string textOf(const FoundRate& found) {
    return shortestText(found.rate->perSecond) + " samples/s, as " +
           (found.rate->isMeasured ? "measured in " : "stated for ") + found.origin->getEndName();
}

} // namespace Quillmere::Host
