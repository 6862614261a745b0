// SPDX-License-Identifier: MIT
#include "host/graph/UnitFinder.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "host/description/Unit.h"
#include "host/ends/MainInput.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <set>

namespace Quillmere::Host {

namespace {
using Core::AbstractInputPin;
using Core::AbstractOutputPin;

/// Whether there is anything to follow, for which manuals would be read.
bool getHasUnits(const GraphParts& parts) {
    return std::any_of(parts.nodes.begin(), parts.nodes.end(), [](const GraphParts::Node& node) {
        if (node.recorded == nullptr || node.isFaulty) return false;
        const auto& outputs = node.block->getOutputPins();
        return std::any_of(outputs.begin(), outputs.end(), [&](const AbstractOutputPin* output) {
            return !node.recorded->getUnit(*output).empty();
        });
    });
}

/// A unit that a block doesn't take: it would reckon with wrong numbers.
void warnOfUnit(const GraphParts& parts, const GraphParts::Node& node, const AbstractInputPin& input,
                const std::string& unit, const std::string& wanted, Complaints& complaints) {
    const Unit* const known = findUnit(unit);
    if (known == nullptr || known == findUnit(wanted)) return;
    const auto connection = parts.connections.find(&input);
    if (connection == parts.connections.end()) return;
    const bool isConvertible = known->dimension == findUnit(wanted)->dimension;
    complaints.warn(connection->second->where,
                    "'" + input.getName() + "' of " + node.getQuoted() + " takes " + wanted + ", and gets " +
                        printable(unit, kLongestName) +
                        (isConvertible ? "; 'unit: " + wanted + "' on the source's pin converts it" : ""));
}
} // namespace

UnitFinder::UnitFinder(const std::vector<GraphParts::Node>& graphNodes, ManualShelf& manualShelf)
    : manuals(manualShelf) {
    for (const GraphParts::Node& node : graphNodes)
        if (node.block != nullptr) nodes.emplace(node.block.get(), &node);
}

std::string UnitFinder::unitAt(const AbstractInputPin& input) {
    std::set<const AbstractInputPin*> passed; // a loop has no unit of its own
    for (const AbstractInputPin* next = &input; next != nullptr && passed.insert(next).second;) {
        const AbstractOutputPin* const output = next->getConnectedOutput();
        const auto sender = output == nullptr ? nodes.end() : nodes.find(output->getManager());
        if (sender == nodes.end()) return {};
        const GraphParts::Node& node = *sender->second;
        if (node.recorded != nullptr) return node.isFaulty ? std::string() : node.recorded->getUnit(*output);
        next = inputBefore(node, *output);
    }
    return {};
}

/// The input whose unit an output keeps; null where it keeps none.
const AbstractInputPin* UnitFinder::inputBefore(const GraphParts::Node& node,
                                                const AbstractOutputPin& output) {
    const auto& units = manuals.get(node.description->type).outputUnits;
    const auto told = units.find(output.getName());
    if (told == units.end()) return nullptr;
    if (told->second.input.empty()) return mainInputOf(*node.block);
    const auto& inputs = node.block->getInputPins();
    const auto input = std::find_if(inputs.begin(), inputs.end(), [&](const AbstractInputPin* candidate) {
        return candidate->getName() == told->second.input;
    });
    return input == inputs.end() ? nullptr : *input;
}

void carryUnits(const GraphParts& parts, ManualShelf& manuals, Complaints& complaints) {
    if (!getHasUnits(parts)) return;
    UnitFinder finder(parts.nodes, manuals);
    for (const GraphParts::Node& node : parts.nodes) {
        if (node.block == nullptr || node.isFaulty) continue;
        if (node.sink != nullptr) {
            for (const AbstractInputPin* const input : node.block->getInputPins())
                node.sink->setUnit(*input, finder.unitAt(*input));
            continue;
        }
        for (const auto& [name, wanted] : manuals.get(node.description->type).inputUnits)
            for (const AbstractInputPin* const input : node.block->getInputPins())
                if (input->getName() == name)
                    warnOfUnit(parts, node, *input, finder.unitAt(*input), wanted, complaints);
    }
}

} // namespace Quillmere::Host
