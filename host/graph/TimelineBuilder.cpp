// SPDX-License-Identifier: MIT
#include "host/graph/TimelineBuilder.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/graph/MemberNames.h"
#include "host/description/Quantity.h"
#include "host/graph/RateSettings.h"

namespace Quillmere::Host {

namespace {
std::vector<std::string> commandsOf(const Core::Filter& block) {
    std::vector<std::string> names;
    for (const Core::AbstractProperty* const property : block.getPropertyBag())
        if (dynamic_cast<const Core::CommandProperty*>(property) != nullptr)
            names.push_back(property->getName());
    return names;
}
} // namespace

TimelineBuilder::TimelineBuilder(GraphParts& graphParts, Connected& linked, SettingUnits& settingUnits,
                                 Complaints& list)
    : parts(graphParts), connected(linked), units(settingUnits), complaints(list) {}

void TimelineBuilder::resolve(const std::vector<GraphDescription::TimelineEntry>& entries) {
    for (const GraphDescription::TimelineEntry& entry : entries) {
        for (const Change& change : entry.changes) {
            const Node* const node = parts.find(change.block);
            // An unknown type or a setting that is refused is a complaint already.
            if (node == nullptr || node->block == nullptr || node->isFaulty) continue;
            if (change.value.isMissing()) continue;
            resolve(*entry.at.value, change, *node);
        }
    }
}

void TimelineBuilder::resolve(double at, const Change& change, const Node& node) {
    if (node.source != nullptr || node.sink != nullptr) {
        complaints.add(change.where, "the block " + node.getQuoted(),
                       "a block that can be changed while it runs");
        return;
    }
    Timeline::Action action;
    action.at = at;
    action.where = change.where;
    action.value = change.value;
    action.block = node.block.get();
    if (change.kind == Change::Kind::Set) resolveSetting(change, node, action);
    if (change.kind == Change::Kind::Fire) resolveCommand(change, node, action);
    if (change.kind == Change::Kind::Send) resolveInput(change, node, action);
    parts.timeline.add(std::move(action));
}

void TimelineBuilder::resolveSetting(const Change& change, const Node& node, Timeline::Action& action) {
    const Core::PropertyBag& bag = node.block->getPropertyBag();
    action.property = bag.find(change.name);
    if (action.property == nullptr) {
        refuse("property", change, node, [&] { return namesOf(bag); });
    } else if (!units.convert(node, *action.property, action.at, action.value, complaints)) {
        action.property = nullptr; // would be refused again
    } else if (getAwaitsRate({action.property, &action.value})) {
        parts.awaitsRates = true;
    }
}

void TimelineBuilder::resolveCommand(const Change& change, const Node& node, Timeline::Action& action) {
    action.command = dynamic_cast<Core::CommandProperty*>(node.block->getPropertyBag().find(change.name));
    if (action.command == nullptr) refuse("command", change, node, [&] { return commandsOf(*node.block); });
}

void TimelineBuilder::resolveInput(const Change& change, const Node& node, Timeline::Action& action) {
    const auto& pins = node.block->getInputPins();
    Core::AbstractInputPin* const pin = inputs.find(*node.block, pins, change.name);
    if (pin == nullptr) {
        refuse("input", change, node, [&] { return namesOf(pins); });
        return;
    }
    const auto [known, isNew] = connected.try_emplace(pin, change.where);
    if (!isNew && !links.contains(pin)) {
        complaints.add(
            change.where, "a value for '" + change.block + "." + change.name + "', which is connected",
            "an input without a connection (line " + std::to_string(known->second.line) + " has one)");
        return;
    }
    action.input = pin;
    if (toQuantity(change.value)) {
        parts.awaitsRates = true;
    } else if (change.value.isScalar()) {
        if (const auto number = toNumber(change.value, complaints))
            action.sample = Core::MatrixXd::Constant(1, 1, *number);
    } else if (const auto matrix = toMatrix(change.value, complaints)) {
        action.sample = *matrix;
    }
    action.output = &outputFor(*pin);
}

template <class Names>
void TimelineBuilder::refuse(const std::string& kind, const Change& change, const Node& node,
                             const Names& known) {
    refuseName(complaints, change.where, change.name,
               "the " + kind + " '" + printable(change.name, kLongestName) + "' of " + node.getQuoted(),
               "one of ", known, kOneThatHasSome);
}

Core::OutputPin<Core::MatrixXd>& TimelineBuilder::outputFor(Core::AbstractInputPin& input) {
    Core::OutputPin<Core::MatrixXd>*& output = links[&input];
    if (output == nullptr) output = &parts.timeline.addOutput(input.getName());
    return *output;
}

void TimelineBuilder::link() {
    if (parts.timeline.getSender() == nullptr) return;
    parts.layout.add(*parts.timeline.getSender());
    for (const auto& [input, output] : links)
        output->attach(*input, false);
}

} // namespace Quillmere::Host
