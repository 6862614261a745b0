// SPDX-License-Identifier: MIT
#include "host/graph/GraphBuilder.h"

#include "framework/Quillmere.h"
#include "host/description/LayoutLinks.h"
#include "host/ends/ColumnName.h"
#include "host/ends/MainInput.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/graph/BurstRoom.h"
#include "host/graph/MemberNames.h"
#include "host/graph/PropertyWriter.h"
#include "host/graph/RateSettings.h"
#include "host/graph/RunFiles.h"
#include "host/graph/RunOrder.h"
#include "host/graph/TimelineBuilder.h"
#include "host/graph/TimelineRehearsal.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
using Core::AbstractInputPin;
using Core::AbstractOutputPin;
} // namespace

GraphBuilder::GraphBuilder(GraphParts& graphParts, GraphDescription& graphDescription,
                           const BlockCatalogue& types, Complaints& list)
    : parts(graphParts), description(graphDescription), catalogue(types), complaints(list),
      units(graphParts, graphDescription, types) {}

void GraphBuilder::build() {
    checkOverflows(description, complaints);
    createBlocks();
    for (Node& node : parts.nodes)
        if (node.block != nullptr) applySettings(node);
    for (const Connection& connection : description.connections)
        connect(connection);
    makeRoomForBursts(parts);
    TimelineBuilder timeline(parts, connected, units, complaints);
    timeline.resolve(description.timeline);
    for (const Sink* const sink : parts.sinks)
        sink->checkPins(complaints);
    checkMainInputs();
    RunFiles(description, catalogue, complaints).check(parts.nodes);
    arrange();
    timeline.link();
    if (!parts.awaitsRates) rehearseTimeline(parts, catalogue, complaints);
}

void GraphBuilder::createBlocks() {
    parts.nodes.reserve(description.blocks.size());
    for (const GraphDescription::Block& block : description.blocks) {
        BlockPtr made;
        bool isUnknown = false;
        try {
            made = catalogue.create(block.type, block.id);
            isUnknown = made == nullptr && !block.type.empty();
        } catch (const PluginException& exception) {
            complaints.add(block.typeWhere,
                           "a block that its plug-in doesn't make (" + std::string(exception.what()) + ")",
                           "one that it makes");
        }
        Node& node = parts.nodes.emplace_back(Node{&block, std::move(made)});
        findEnds(node);
        if (node.source != nullptr) parts.sources.push_back(node.source);
        if (node.sink != nullptr) parts.sinks.push_back(node.sink);
        if (isUnknown) refuseType(block);
    }
}

void GraphBuilder::refuseType(const GraphDescription::Block& block) {
    const auto known = [&] {
        std::vector<std::string> names = catalogue.getTypeNames();
        for (std::string& name : catalogue.getHostTypeNames())
            names.push_back(std::move(name));
        return names;
    };
    refuseName(complaints, block.typeWhere, block.type,
               "the block type '" + printable(block.type, kLongestName) + "'", "one of ", known);
}

void GraphBuilder::findEnds(Node& node) {
    node.hostBlock = dynamic_cast<HostBlock*>(node.block.get());
    if (node.hostBlock == nullptr) return;
    node.source = dynamic_cast<Source*>(node.hostBlock);
    node.sink = dynamic_cast<Sink*>(node.hostBlock);
    node.file = dynamic_cast<FileEnd*>(node.hostBlock);
    node.recorded = dynamic_cast<RecordedSource*>(node.source);
    node.waking = dynamic_cast<WakingSource*>(node.source);
    node.result = dynamic_cast<ResultEnd*>(node.sink);
}

void GraphBuilder::applySettings(Node& node) {
    Complaints own;
    checkOrigins(node, own);
    if (node.hostBlock == nullptr) {
        units.convert(node, own);
        setProperties(node, own);
    } else {
        node.hostBlock->configure(*node.description, description.getFolder(), own);
    }
    node.isFaulty = !own.isEmpty();
    complaints.add(own);
}

/// An input that is given for one run belongs to a source, an output to a sink: a slip would write over a
/// recording.
void GraphBuilder::checkOrigins(const Node& node, Complaints& own) {
    for (const Setting& setting : node.description->settings) {
        if (setting.origin == Setting::Origin::CallersInput && node.source == nullptr)
            own.add(setting.where, "the block " + node.getQuoted(), "a block that reads a recording");
        if (setting.origin == Setting::Origin::CallersOutput && node.sink == nullptr)
            own.add(setting.where, "the block " + node.getQuoted(), "a block that writes a result");
    }
}

/// Writes the settings in file order, as far as the block lets them. If one has to wait for the rate of its
/// samples, all do, to keep the order.
void GraphBuilder::setProperties(Node& node, Complaints& own) {
    const Core::PropertyBag& bag = node.block->getPropertyBag();
    std::vector<PropertyWrite> writes;
    for (const Setting& setting : node.description->settings) {
        if (Core::AbstractProperty* const property = bag.find(setting.name); property != nullptr) {
            if (!setting.value.isMissing()) writes.push_back({property, &setting.value});
        } else if (setting.origin != Setting::Origin::CallersInput &&
                   setting.origin != Setting::Origin::CallersOutput) {
            refuseName(own, setting.where, setting.name,
                       "the property '" + printable(setting.name, kLongestName) + "' of " + node.getQuoted(),
                       "one of ", [&] { return namesOf(bag); });
        }
    }
    if (std::any_of(writes.begin(), writes.end(), getAwaitsRate))
        parts.awaitsRates = true;
    else
        writeProperties(std::move(writes), own);
}

void GraphBuilder::connect(const Connection& connection) {
    Node* const from = parts.find(connection.from.block);
    Node* const to = parts.find(connection.to.block);
    AbstractOutputPin* const output = from == nullptr ? nullptr : findOutput(connection.from, *from);
    AbstractInputPin* const input = to == nullptr ? nullptr : findInput(connection.to, *to);
    if (output == nullptr || input == nullptr) {
        faultyReceivers.insert(connection.to.block);
        return;
    }
    const auto [known, isNew] = connected.try_emplace(input, connection.to.where);
    if (!isNew) {
        complaints.add(connection.to.where, "a second connection to '" + connection.to.getText() + "'",
                       "one for each input (the first is in line " + std::to_string(known->second.line) +
                           ")");
        return;
    }
    input->setBufferCapacity(connection.buffer.value.value_or(1));
    input->setIsLifo(connection.isNewestFirst.value.value_or(false));
    output->attach(*input, false);
    parts.connections[input] = &connection;
}

AbstractOutputPin* GraphBuilder::findOutput(const GraphDescription::Endpoint& end, const Node& node) {
    if (node.block == nullptr) return nullptr;
    const auto& pins = node.block->getOutputPins();
    if (!end.hasPin && pins.size() == 1) return pins.front();
    AbstractOutputPin* const pin = end.hasPin ? outputs.find(*node.block, pins, end.pin) : nullptr;
    if (pin != nullptr || (node.isFaulty && node.source != nullptr)) return pin;
    refusePin(end, node, "output", pins);
    return nullptr;
}

AbstractInputPin* GraphBuilder::findInput(const GraphDescription::Endpoint& end, const Node& node) {
    if (node.block == nullptr) return nullptr;
    const bool isMade = node.sink != nullptr && node.sink->getMakesPins();
    if (isMade && !end.pin.empty()) {
        if (getIsColumnName(end.pin)) return node.sink->makePin(end.pin);
        complaints.add(end.where, "the pin name '" + end.pin + "'",
                       "a name in one line, without control characters");
        return nullptr;
    }
    const auto& pins = node.block->getInputPins();
    if (!end.hasPin && pins.size() == 1 && !isMade) return pins.front();
    AbstractInputPin* const pin = end.hasPin ? inputs.find(*node.block, pins, end.pin) : nullptr;
    if (pin != nullptr) return pin;
    if (isMade)
        complaints.add(end.where, "no input of " + node.getQuoted(),
                       "'" + end.block + ".' and a name for the columns");
    else
        refusePin(end, node, "input", pins);
    return nullptr;
}

/// Of an end that names a pin that isn't there, or none although there isn't just one.
template <class Pins>
void GraphBuilder::refusePin(const GraphDescription::Endpoint& end, const Node& node, const std::string& kind,
                             const Pins& pins) {
    const auto names = [&] { return namesOf(pins); };
    if (end.hasPin)
        refuseName(complaints, end.where, end.pin,
                   "the " + kind + " '" + printable(end.pin, kLongestName) + "' of " + node.getQuoted(),
                   "one of ", names, kOneThatHasSome);
    else if (!complaints.getIsFull())
        complaints.add(end.where, "no " + kind + " of " + node.getQuoted(),
                       "'" + end.block + ".' and one of " + listOfNames(names()));
    else
        complaints.add(end.where, {}, {});
}

void GraphBuilder::checkMainInputs() {
    for (const Node& node : parts.nodes) {
        if (node.block == nullptr || faultyReceivers.contains(node.description->id)) continue;
        const AbstractInputPin* const pin = mainInputOf(*node.block);
        if (node.sink != nullptr && pin == nullptr)
            complaints.add(node.description->where, node.getQuoted() + " without a connection",
                           "one at least");
        if (pin != nullptr && !connected.contains(pin))
            complaints.add(node.description->where,
                           "the main input '" + pin->getName() + "' of " + node.getQuoted() + " open",
                           "a connection to '" + node.description->id + "." + pin->getName() + "'");
    }
}

/// Puts the blocks into the layout, in the order in which they run.
void GraphBuilder::arrange() {
    std::vector<Core::Filter*> blocks;
    std::unordered_map<const Core::Filter*, const Node*> nodes;
    for (const Node& node : parts.nodes) {
        if (node.block == nullptr) continue;
        blocks.push_back(node.block.get());
        nodes.emplace(node.block.get(), &node);
    }
    for (Core::Filter* const block : runOrder(blocks)) {
        parts.runOrder.push_back(nodes.at(block));
        parts.layout.add(*block);
    }
}

} // namespace Quillmere::Host
