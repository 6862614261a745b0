// SPDX-License-Identifier: MIT
#include "host/graph/TimelineBuilder.h"

#include "host/graph/NearestName.h"
#include "host/graph/PropertyWriter.h"
#include "host/graph/TimelineSender.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
template <class Things>
std::vector<std::string> namesOf(const Things& things) {
    std::vector<std::string> names;
    for (const auto* const thing : things)
        names.push_back(thing->getName());
    return names;
}

std::string quoted(const Graph::Node& node) {
    return "'" + node.description->id + "' (" + node.description->type + ")";
}

std::string oneOf(const std::vector<std::string>& names) {
    return names.empty() ? "a block that has some" : "one of " + listOfNames(names);
}

std::vector<std::string> commandsOf(const Core::Filter& block) {
    std::vector<std::string> names;
    for (const Core::AbstractProperty* const property : block.getPropertyBag())
        if (dynamic_cast<const Core::CommandProperty*>(property) != nullptr)
            names.push_back(property->getName());
    return names;
}
} // namespace

TimelineBuilder::TimelineBuilder(Graph& target, const GraphDescription& graphDescription, Complaints& list)
    : graph(target), description(graphDescription), complaints(list) {}

void TimelineBuilder::resolve(const BlockCatalogue& types, Connected& inputs) {
    catalogue = &types;
    connected = &inputs;
    for (const GraphDescription::TimelineEntry& entry : description.getTimeline()) {
        for (const Change& change : entry.changes) {
            const auto node =
                std::find_if(graph.nodes.begin(), graph.nodes.end(),
                             [&](const Graph::Node& other) { return other.description->id == change.block; });
            // An unknown type or a setting that is refused is a complaint already.
            if (node == graph.nodes.end() || node->block == nullptr || node->isFaulty) continue;
            if (change.value.isMissing()) continue;
            resolve(entry.at, change, *node);
        }
    }
}

void TimelineBuilder::resolve(double at, const Change& change, const Graph::Node& node) {
    if (node.source != nullptr || node.sink != nullptr) {
        complaints.add(change.where, "the block " + quoted(node),
                       "a block that can be changed while it runs");
        return;
    }
    Timeline::Action action;
    action.at = at;
    action.where = change.where;
    action.value = change.value;
    if (change.kind == Change::Kind::Set) resolveSetting(change, node, action);
    if (change.kind == Change::Kind::Fire) resolveCommand(change, node, action);
    if (change.kind == Change::Kind::Send) resolveInput(change, node, action);
    graph.timeline.actions.push_back(std::move(action));
}

void TimelineBuilder::resolveSetting(const Change& change, const Graph::Node& node,
                                     Timeline::Action& action) {
    const Core::PropertyBag& bag = node.block->getPropertyBag();
    action.property = bag.find(change.name);
    if (action.property == nullptr) {
        const std::vector<std::string> names = namesOf(bag);
        complaints.add(change.where, "the property '" + change.name + "' of " + quoted(node), oneOf(names),
                       nearestName(change.name, names));
        return;
    }
    writeProperty(rehearsalOf(node)->getProperty(change.name), change.value, complaints);
}

void TimelineBuilder::resolveCommand(const Change& change, const Graph::Node& node,
                                     Timeline::Action& action) {
    action.command = dynamic_cast<Core::CommandProperty*>(node.block->getPropertyBag().find(change.name));
    if (action.command == nullptr) {
        const std::vector<std::string> names = commandsOf(*node.block);
        complaints.add(change.where, "the command '" + change.name + "' of " + quoted(node), oneOf(names),
                       nearestName(change.name, names));
        return;
    }
    Core::AbstractProperty& command = rehearsalOf(node)->getProperty(change.name);
    Timeline::fire(dynamic_cast<Core::CommandProperty&>(command), change.where, complaints);
}

void TimelineBuilder::resolveInput(const Change& change, const Graph::Node& node, Timeline::Action& action) {
    const auto& pins = node.block->getInputPins();
    const auto pin = std::find_if(pins.begin(), pins.end(),
                                  [&](const auto* candidate) { return candidate->getName() == change.name; });
    if (pin == pins.end()) {
        const std::vector<std::string> names = namesOf(pins);
        complaints.add(change.where, "the input '" + change.name + "' of " + quoted(node), oneOf(names),
                       nearestName(change.name, names));
        return;
    }
    const auto [known, isNew] = connected->try_emplace(*pin, change.where);
    if (!isNew && !links.contains(*pin)) {
        complaints.add(
            change.where, "a value for '" + change.block + "." + change.name + "', which is connected",
            "an input without a connection (line " + std::to_string(known->second.line) + " has one)");
        return;
    }
    if (change.value.isScalar()) {
        if (const auto number = toNumber(change.value, complaints))
            action.sample = Core::MatrixXd::Constant(1, 1, *number);
    } else if (const auto matrix = toMatrix(change.value, complaints)) {
        action.sample = *matrix;
    }
    action.output = &outputFor(**pin);
}

/// The block on which changes of a graph's block are tried: of the same type, with the same settings.
Core::Filter* TimelineBuilder::rehearsalOf(const Graph::Node& node) {
    BlockPtr& block = rehearsals[node.block.get()];
    if (block != nullptr) return block.get();
    block = catalogue->create(node.description->type, node.description->id);
    std::vector<PropertyWrite> writes;
    for (const GraphDescription::Setting& setting : node.description->settings)
        if (Core::AbstractProperty* const property = block->getPropertyBag().find(setting.name))
            if (!setting.value.isMissing()) writes.push_back({property, &setting.value});
    Complaints heardAlready;
    writeProperties(std::move(writes), heardAlready);
    return block.get();
}

Core::OutputPin<Core::MatrixXd>& TimelineBuilder::outputFor(Core::AbstractInputPin& input) {
    if (graph.timeline.sender == nullptr) graph.timeline.sender = std::make_unique<Timeline::Sender>();
    Core::OutputPin<Core::MatrixXd>*& output = links[&input];
    if (output == nullptr) output = &graph.timeline.sender->addOutput(input.getName());
    return *output;
}

void TimelineBuilder::link() {
    if (graph.timeline.sender == nullptr) return;
    graph.layout.add(*graph.timeline.sender);
    for (const auto& [input, output] : links)
        output->attach(*input, false);
}

} // namespace Quillmere::Host
