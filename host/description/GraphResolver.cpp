// SPDX-License-Identifier: MIT
#include "host/description/GraphResolver.h"

#include "host/text/ShortestText.h"
#include "host/description/GivenValues.h"
#include "host/description/TimelineReader.h"

#include <algorithm>

namespace Quillmere::Host {

GraphResolver::GraphResolver(const GraphDescription& description, Complaints& list)
    : written(description), complaints(list), check(list), parameters(description.parameters, list) {}

GraphDescription GraphResolver::resolve() {
    graph.path = written.path;
    graph.where = written.where;
    graph.name = written.name;
    graph.clock = written.clock;
    graph.clockPlace = written.clockPlace;
    graph.plugins = written.plugins;
    graph.parameters = written.parameters;
    graph.view = written.view;
    graph.isUsable = written.isUsable;
    if (!graph.isUsable) return std::move(graph);
    for (GraphDescription::Parameter& parameter : graph.parameters)
        if (!parameter.isRefused) parameter.isRefused = !check.checkParameter(parameter);
    takeLayouts();
    takeBlocks();
    takeConnections();
    takeTimeline();
    return std::move(graph);
}

void GraphResolver::takeLayouts() {
    for (const GraphDescription::Layout& layout : written.layouts)
        if (check.checkLayout(layout)) graph.layouts.push_back(layout);
    if (graph.layouts.empty()) graph.layouts.push_back({check.getFirstLayout(), written.where, {}});
}

void GraphResolver::takeBlocks() {
    graph.blocks.reserve(written.blocks.size());
    for (const GraphDescription::Block& block : written.blocks)
        takeBlock(block);
}

void GraphResolver::takeBlock(GraphDescription::Block block) {
    const bool isRefused = block.isRefused;
    const bool isKept = isRefused ? check.addBlock(block) : check.checkBlockId(block);
    if (!isRefused) {
        const bool isTypeGood = check.checkType(block);
        const bool isLayoutGood = check.checkLayoutOf(block);
        block.isRefused = !isTypeGood || !isLayoutGood;
    }
    if (block.layout.empty()) block.layout = check.getFirstLayout();
    for (GraphDescription::Setting& setting : block.settings) {
        // A caller's values are no places for parameters.
        if (setting.origin == GraphDescription::Setting::Origin::File) parameters.fillIn(setting.value);
    }
    for (Value& value : block.replaced)
        parameters.fillIn(value);
    if (isKept) graph.blocks.push_back(std::move(block));
}

void GraphResolver::takeConnections() {
    graph.connections = written.connections;
    for (GraphDescription::Connection& connection : graph.connections) {
        for (GraphDescription::Endpoint* const end : {&connection.from, &connection.to})
            if (!end->isRefused) end->isRefused = !check.checkEnd(*end);
        fillIn(connection.buffer, &toBuffer);
        fillIn(connection.isNewestFirst, &toIsNewestFirst);
        fillIn(connection.overflow, &toOverflow);
        if (connection.buffer.value && !checkBuffer(*connection.buffer.value, connection.where, complaints))
            connection.buffer.value.reset();
    }
}

void GraphResolver::takeTimeline() {
    if (written.writtenTimeline.kind != Value::Kind::Null) {
        Value list = written.writtenTimeline;
        parameters.fillIn(list);
        graph.timeline = TimelineReader(check, complaints).read(list, true);
        std::erase_if(graph.timeline, [](const auto& entry) { return entry.isRefused; });
        for (GraphDescription::TimelineEntry& entry : graph.timeline)
            std::erase_if(entry.changes, [](const auto& change) { return change.isRefused; });
    } else {
        for (const GraphDescription::TimelineEntry& entry : written.timeline)
            takeEntry(entry);
    }
    std::stable_sort(graph.timeline.begin(), graph.timeline.end(),
                     [](const auto& a, const auto& b) { return *a.at.value < *b.at.value; });
}

void GraphResolver::takeEntry(GraphDescription::TimelineEntry entry) {
    fillIn(entry.at, &toStreamTime);
    if (!entry.isRefused && entry.at.value)
        entry.isRefused = !checkStreamTime(*entry.at.value, entry.where,
                                           "the time " + shortestText(*entry.at.value), complaints);
    for (GraphDescription::TimelineChange& change : entry.changes) {
        parameters.fillIn(change.value);
        if (!change.isRefused) change.isRefused = !check.checkTarget(change);
    }
    std::erase_if(entry.changes, [](const auto& change) { return change.isRefused; });
    if (!entry.isRefused && entry.at.value) graph.timeline.push_back(std::move(entry));
}

template <class T>
void GraphResolver::fillIn(Given<T>& given, std::optional<T> (*convert)(const Value&, Complaints&)) {
    if (given.written.kind == Value::Kind::Null) return;
    parameters.fillIn(given.written);
    given.value = convert(given.written, complaints);
    given.written = {};
}

} // namespace Quillmere::Host
