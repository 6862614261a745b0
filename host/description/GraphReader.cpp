// SPDX-License-Identifier: MIT
#include "host/description/GraphReader.h"

#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/description/GivenValues.h"
#include "host/description/ParameterValues.h"
#include "host/description/TimelineReader.h"
#include "host/description/ValueReader.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {

constexpr std::int64_t kFormat = 1;

const std::vector<std::string> kGraphKeys{"format",  "name",   "clock",       "plugins",  "parameters",
                                          "layouts", "blocks", "connections", "timeline", "view"};
const std::vector<std::string> kLayoutKeys{"id", "view"};
const std::vector<std::string> kBlockKeys{"id", "type", "properties", "layout", "view"};
const std::vector<std::string> kConnectionKeys{"from", "to", "buffer", "order", "overflow", "view"};
const std::vector<std::string> kClocks{"wall", "stream"};

Value viewOf(const Value& map) {
    const Value::Entry* const entry = map.find("view");
    return entry == nullptr ? Value() : entry->value;
}

} // namespace

GraphReader::GraphReader(std::string path, Complaints& list) : complaints(list), check(list) {
    graph.path = std::move(path);
}

GraphDescription GraphReader::readFile() {
    return read(readValueFile(graph.path, complaints));
}

GraphDescription GraphReader::readText(const std::string& text) {
    return read(readValueText(text, graph.path, true, complaints));
}

GraphDescription GraphReader::read(const std::optional<Value>& top) {
    graph.isUsable =
        top && requireKind(*top, Value::Kind::Map, "a graph with the keys " + listOfNames(kGraphKeys));
    if (!graph.isUsable) return std::move(graph);
    graph.where = top->where;
    requireKnownKeys(*top, kGraphKeys);
    readFormat(*top);
    if (const Value::Entry* name = top->find("name")) graph.name = textOf(name->value, "a name");
    readClock(*top);
    readParameters(*top);
    readPlugins(*top);
    readLayouts(*top);
    readBlocks(*top);
    readConnections(*top);
    readTimeline(*top);
    graph.view = viewOf(*top);
    return std::move(graph);
}

void GraphReader::readFormat(const Value& top) {
    const Value::Entry* format = top.find("format");
    if (format == nullptr) {
        complaints.add(top.where, "a graph without a format", "'format: 1'");
        return;
    }
    const auto number = toWhole(format->value, complaints);
    if (number && *number != kFormat)
        complaints.add(format->value.where, "format " + format->value.text, "format 1");
}

void GraphReader::readClock(const Value& top) {
    const Value::Entry* entry = top.find("clock");
    if (entry == nullptr) return;
    const std::string text = textOf(entry->value, "one of " + listOfNames(kClocks));
    if (text.empty()) return;
    graph.clockPlace = entry->value.where;
    if (text == "stream")
        graph.clock = GraphDescription::Clock::Stream;
    else if (text != "wall")
        complaints.add(entry->value.where, entry->value.describe(), "one of " + listOfNames(kClocks),
                       nearestName(text, kClocks));
}

void GraphReader::readParameters(const Value& top) {
    const Value::Entry* list = top.find("parameters");
    if (list == nullptr || list->value.kind == Value::Kind::Null) return;
    if (!requireKind(list->value, Value::Kind::Map, "parameters as 'name: value'")) return;
    for (const Value::Entry& entry : list->value.entries) {
        GraphDescription::Parameter parameter{entry.key, entry.where, entry.value};
        parameter.isRefused = !check.checkParameter(parameter);
        graph.parameters.push_back(std::move(parameter));
    }
}

void GraphReader::readPlugins(const Value& top) {
    const Value::Entry* list = top.find("plugins");
    constexpr const char* kExpected = "a list of plug-ins' files";
    if (list == nullptr || !requireKind(list->value, Value::Kind::List, kExpected)) return;
    for (const Value& item : list->value.items) {
        const std::string path = textOf(item, "a plug-in's file");
        if (!path.empty()) graph.plugins.push_back({path, item.where});
    }
}

void GraphReader::readLayouts(const Value& top) {
    const Value::Entry* list = top.find("layouts");
    if (list == nullptr || !requireKind(list->value, Value::Kind::List, "a list of layouts as {id: ...}"))
        return;
    for (const Value& item : list->value.items) {
        if (!requireKind(item, Value::Kind::Map, "a layout as {id: ...}")) continue;
        requireKnownKeys(item, kLayoutKeys);
        GraphDescription::Layout layout{{}, item.where, viewOf(item)};
        if (readId(item, layout.id, layout.where) && check.checkLayout(layout))
            graph.layouts.push_back(std::move(layout));
    }
}

void GraphReader::readBlocks(const Value& top) {
    const Value::Entry* list = top.find("blocks");
    if (list == nullptr) {
        complaints.add(top.where, "a graph without blocks", "a list 'blocks:'");
        return;
    }
    if (!requireKind(list->value, Value::Kind::List, "a list of blocks")) return;
    if (list->value.items.empty())
        complaints.add(list->value.where, "an empty list of blocks", "one block at least");
    for (const Value& item : list->value.items)
        if (requireKind(item, Value::Kind::Map, "a block as {id: ..., type: ...}")) readBlock(item);
}

void GraphReader::readBlock(const Value& value) {
    requireKnownKeys(value, kBlockKeys);
    Block block;
    block.where = block.typeWhere = block.layoutWhere = value.where;
    block.view = viewOf(value);
    const bool isIdGood = readId(value, block.id, block.where) && check.checkBlockId(block);
    const bool isTypeGood = readType(value, block) && check.checkType(block);
    const bool isLayoutGood = readLayoutOf(value, block) && check.checkLayoutOf(block);
    block.isRefused = !isIdGood || !isTypeGood || !isLayoutGood;
    if (const Value::Entry* settings = value.find("properties")) readSettings(settings->value, block);
    graph.blocks.push_back(std::move(block));
}

/// The id of a block or a layout, with its place; empty when there is none. False, with a complaint, when it
/// is no text.
bool GraphReader::readId(const Value& value, std::string& id, Place& where) {
    const Value::Entry* const entry = value.find("id");
    if (entry == nullptr) return true;
    id = textOf(entry->value, "an id");
    if (!id.empty()) where = entry->value.where;
    return !id.empty();
}

bool GraphReader::readType(const Value& value, Block& block) {
    const Value::Entry* const entry = value.find("type");
    if (entry == nullptr) return true;
    block.typeWhere = entry->value.where;
    block.type = textOf(entry->value, "the name of a block type");
    return !block.type.empty();
}

bool GraphReader::readLayoutOf(const Value& value, Block& block) {
    const Value::Entry* const entry = value.find("layout");
    if (entry == nullptr) return true;
    block.layoutWhere = entry->value.where;
    block.layout = textOf(entry->value, "the id of a layout");
    return !block.layout.empty();
}

void GraphReader::readSettings(const Value& value, Block& block) {
    if (value.kind == Value::Kind::Null) return;
    if (!requireKind(value, Value::Kind::Map, "properties as 'name: value'")) return;
    for (const Value::Entry& entry : value.entries) {
        GraphDescription::Setting& setting = block.settings.emplace_back();
        setting.name = entry.key;
        setting.where = entry.where;
        setting.value = entry.value;
    }
}

void GraphReader::readConnections(const Value& top) {
    const Value::Entry* list = top.find("connections");
    if (list == nullptr || list->value.kind == Value::Kind::Null) return;
    if (!requireKind(list->value, Value::Kind::List, "a list of connections")) return;
    for (const Value& item : list->value.items)
        if (requireKind(item, Value::Kind::Map, "a connection as {from: block.pin, to: block.pin}"))
            readConnection(item);
}

void GraphReader::readConnection(const Value& value) {
    requireKnownKeys(value, kConnectionKeys);
    Connection connection;
    connection.where = value.where;
    connection.view = viewOf(value);
    connection.from = readEndpoint(value, "from");
    connection.to = readEndpoint(value, "to");
    readGiven(value, "buffer", connection.buffer, &toBuffer);
    readGiven(value, "order", connection.isNewestFirst, &toIsNewestFirst);
    readGiven(value, "overflow", connection.overflow, &toOverflow);
    graph.connections.push_back(std::move(connection));
}

GraphDescription::Endpoint GraphReader::readEndpoint(const Value& connection, std::string_view key) {
    Endpoint end;
    end.where = connection.where;
    end.isRefused = true;
    const Value::Entry* entry = connection.find(key);
    if (entry == nullptr) {
        complaints.add(connection.where, "a connection without '" + std::string(key) + "'",
                       "'" + std::string(key) + ": block.pin'");
        return end;
    }
    end.where = entry->value.where;
    const std::string text = textOf(entry->value, "block.pin");
    if (text.empty()) return end;
    end = Endpoint::of(text);
    end.where = entry->value.where;
    end.isRefused = !check.checkEnd(end);
    return end;
}

template <class T>
void GraphReader::readGiven(const Value& connection, std::string_view key, Given<T>& given,
                            std::optional<T> (*convert)(const Value&, Complaints&)) {
    const Value::Entry* const entry = connection.find(key);
    if (entry == nullptr) return;
    given.where = entry->value.where;
    if (getHoldsParameter(entry->value))
        given.written = entry->value;
    else
        given.value = convert(entry->value, complaints);
}

void GraphReader::readTimeline(const Value& top) {
    const Value::Entry* list = top.find("timeline");
    if (list == nullptr || list->value.kind == Value::Kind::Null) return;
    if (TimelineReader::getIsReadable(list->value))
        graph.timeline = TimelineReader(check, complaints).read(list->value, false);
    else
        graph.writtenTimeline = list->value;
}

bool GraphReader::requireKind(const Value& value, Value::Kind kind, const std::string& expected) {
    if (value.kind == kind) return true;
    complaints.add(value.where, value.describe(), expected);
    return false;
}

void GraphReader::requireKnownKeys(const Value& map, const std::vector<std::string>& known) {
    for (const Value::Entry& entry : map.entries)
        if (std::find(known.begin(), known.end(), entry.key) == known.end())
            refuseName(complaints, entry.where, entry.key,
                       "the key '" + printable(entry.key, kLongestName) + "'", "one of ",
                       [&] { return known; });
}

std::string GraphReader::textOf(const Value& value, const std::string& expected) {
    if (value.isScalar() && !value.text.empty()) return value.text;
    complaints.add(value.where, value.isScalar() ? "an empty text" : value.describe(), expected);
    return {};
}

} // namespace Quillmere::Host
