// SPDX-License-Identifier: MIT
#include "host/description/GraphChanger.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/description/ParameterValues.h"
#include "host/description/ValueReader.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
void keepReplaced(GraphDescription::Block& block, const std::string& property) {
    for (const GraphDescription::Setting& setting : block.settings)
        if (setting.name == property && setting.origin == GraphDescription::Setting::Origin::File &&
            getHoldsParameter(setting.value))
            block.replaced.push_back(setting.value);
}
} // namespace

GraphChanger::GraphChanger(GraphDescription description, Complaints& list)
    : graph(std::move(description)), complaints(list), check(list) {
    for (std::size_t i = 0; i < graph.blocks.size(); ++i)
        if (check.addBlock(graph.blocks[i])) blocks.add(graph.blocks[i].id, i);
}

GraphDescription GraphChanger::change(const GraphChanges& changes) {
    if (!graph.isUsable) return std::move(graph);
    changeParameters(changes.parameters);
    changeSettings(changes.settings);
    changeFiles(changes.inputs, Setting::Origin::CallersInput);
    changeFiles(changes.outputs, Setting::Origin::CallersOutput);
    return std::move(graph);
}

void GraphChanger::changeParameters(const std::vector<GraphChanges::Parameter>& list) {
    for (const GraphChanges::Parameter& change : list) {
        const auto known = std::find_if(graph.parameters.begin(), graph.parameters.end(),
                                        [&](const auto& parameter) { return parameter.name == change.name; });
        if (known == graph.parameters.end())
            refuseParameter({change.option, 0, 0}, change.name, graph.parameters, complaints);
        else if (const auto value = readValueText(change.value, change.option, false, complaints))
            known->value = *value;
    }
}

void GraphChanger::changeSettings(const std::vector<GraphChanges::Setting>& list) {
    for (const GraphChanges::Setting& change : list) {
        GraphDescription::Block* const block = requireBlock(change.block, change.option);
        const auto value = readValueText(change.value, change.option, false, complaints);
        if (block == nullptr || !value) continue;
        if (value->kind == Value::Kind::Null) {
            takeOut(*block, change);
            continue;
        }
        Setting setting;
        setting.name = change.property;
        setting.where.file = change.option;
        setting.value = *value;
        setting.origin = Setting::Origin::Caller;
        put(*block, std::move(setting));
    }
}

void GraphChanger::changeFiles(const std::vector<GraphChanges::File>& list, Setting::Origin origin) {
    for (const GraphChanges::File& change : list) {
        GraphDescription::Block* const block = requireBlock(change.block, change.option);
        if (block == nullptr) continue;
        Setting setting;
        setting.name = "file";
        setting.where.file = change.option;
        setting.value = valueOf(change.path);
        setting.value.where = setting.where;
        setting.origin = origin;
        put(*block, std::move(setting));
    }
}

GraphDescription::Block* GraphChanger::requireBlock(const std::string& id, const std::string& option) {
    if (const std::size_t* const place = blocks.find(id)) return &graph.blocks[*place];
    check.refuseBlock({option, 0, 0}, id);
    return nullptr;
}

void GraphChanger::put(GraphDescription::Block& block, Setting setting) {
    keepReplaced(block, setting.name);
    block.set(std::move(setting));
}

void GraphChanger::takeOut(GraphDescription::Block& block, const GraphChanges::Setting& change) {
    keepReplaced(block, change.property);
    const auto isMeant = [&](const Setting& setting) { return setting.name == change.property; };
    if (std::erase_if(block.settings, isMeant) > 0) return;
    const auto names = [&] {
        std::vector<std::string> set;
        for (const Setting& setting : block.settings)
            set.push_back(setting.name);
        return set;
    };
    refuseName(complaints, {change.option, 0, 0}, change.property,
               "no value for '" + printable(change.property, kLongestName) + "', which the graph doesn't set",
               "a value, or one of those that it sets: ", names, "a value");
}

} // namespace Quillmere::Host
