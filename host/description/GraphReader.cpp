// SPDX-License-Identifier: MIT
#include "host/description/GraphReader.h"

#include "host/description/LayoutLinks.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/description/TimelineReader.h"
#include "host/description/ValueReader.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace Quillmere::Host {

namespace {

constexpr std::int64_t kFormat = 1;

constexpr const char* kOnlyLayout = "main"; ///< Where a graph names none.

const std::vector<std::string> kGraphKeys{"format",  "name",   "clock",       "plugins",  "parameters",
                                          "layouts", "blocks", "connections", "timeline", "view"};
const std::vector<std::string> kLayoutKeys{"id", "view"};
const std::vector<std::string> kBlockKeys{"id", "type", "properties", "layout", "view"};
const std::vector<std::string> kConnectionKeys{"from", "to", "buffer", "order", "overflow", "view"};
const std::vector<std::string> kOrders{"newest", "oldest"};
const std::vector<std::string> kOverflows{"drop", "wait"};
const std::vector<std::string> kClocks{"wall", "stream"};

/// Words that some YAML readers take for a yes, a no or a nothing.
bool isYamlWord(std::string_view text) {
    std::string word;
    for (const char c : text)
        word += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    static const std::vector<std::string> kWords{"on", "off", "yes", "no", "true", "false", "null"};
    return std::find(kWords.begin(), kWords.end(), word) != kWords.end();
}

/// A text with every letter that an id can't have made one that it can.
std::string asId(std::string text) {
    for (char& c : text)
        if (!GraphDescription::getIsId({&c, 1})) c = '_';
    return text;
}

std::string inQuotes(const std::string& name) {
    return std::string("'").append(printable(name, kLongestName)) + "'";
}

template <class Things>
std::vector<std::string> idsOf(const Things& things) {
    std::vector<std::string> ids;
    for (const auto& thing : things)
        ids.push_back(thing.id);
    return ids;
}

std::vector<std::string> keysOf(const std::map<std::string, Value>& map) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : map)
        keys.push_back(key);
    return keys;
}

/// The parameter's name in a `${name}`, or an empty text.
std::string parameterName(const std::string& text) {
    if (text.size() < 4 || !text.starts_with("${") || text.find('}') != text.size() - 1) return {};
    return text.substr(2, text.size() - 3);
}

} // namespace

GraphReader::GraphReader(std::string path, Complaints& list) : complaints(list) {
    graph.path = std::move(path);
    graph.name = std::filesystem::path(graph.path).stem().string();
}

GraphDescription GraphReader::read(const GraphChanges& changes) {
    const std::optional<Value> top = readValueFile(graph.path, complaints);
    if (!top) return graph;
    if (!requireKind(*top, Value::Kind::Map, "a graph with the keys " + listOfNames(kGraphKeys)))
        return graph;
    graph.isUsable = true;
    requireKnownKeys(*top, kGraphKeys);
    readFormat(*top);
    if (const Value::Entry* name = top->find("name")) graph.name = readText(name->value, "a name");
    readClock(*top);
    readParameters(*top, changes);
    readPlugins(*top);
    readLayouts(*top);
    readBlocks(*top);
    readConnections(*top);
    checkOverflows(graph, complaints);
    readTimeline(*top);
    applySettings(changes);
    applyFiles(changes.inputs, Setting::Origin::CallersInput);
    applyFiles(changes.outputs, Setting::Origin::CallersOutput);
    return graph;
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
    const std::string text = readText(entry->value, "one of " + listOfNames(kClocks));
    if (text.empty()) return;
    graph.clockPlace = entry->value.where;
    if (text == "stream")
        graph.clock = GraphDescription::Clock::Stream;
    else if (text != "wall")
        complaints.add(entry->value.where, entry->value.describe(), "one of " + listOfNames(kClocks),
                       nearestName(text, kClocks));
}

void GraphReader::readParameters(const Value& top, const GraphChanges& changes) {
    const Value::Entry* list = top.find("parameters");
    if (list != nullptr && list->value.kind != Value::Kind::Null &&
        requireKind(list->value, Value::Kind::Map, "parameters as 'name: value'")) {
        for (const Value::Entry& entry : list->value.entries) {
            if (!GraphDescription::getIsId(entry.key))
                complaints.add(entry.where, "the parameter name " + inQuotes(entry.key),
                               GraphDescription::kIdLetters, asId(entry.key));
            if (entry.value.isScalar() && entry.value.text.find("${") != std::string::npos)
                complaints.add(entry.value.where, entry.value.describe(), "a value, not another parameter");
            parameters[entry.key] = entry.value;
        }
    }
    for (const GraphChanges::Parameter& change : changes.parameters) {
        const auto known = parameters.find(change.name);
        if (known == parameters.end()) {
            refuseParameter({change.option, 0, 0}, change.name);
            continue;
        }
        if (const auto value = readValueText(change.value, change.option, false, complaints))
            known->second = *value;
    }
}

void GraphReader::readPlugins(const Value& top) {
    const Value::Entry* list = top.find("plugins");
    constexpr const char* kExpected = "a list of plug-ins' files";
    if (list == nullptr || !requireKind(list->value, Value::Kind::List, kExpected)) return;
    for (const Value& item : list->value.items) {
        const std::string path = readText(item, "a plug-in's file");
        if (!path.empty())
            graph.plugins.push_back({(std::filesystem::path(graph.getFolder()) / path).string(), item.where});
    }
}

void GraphReader::readLayouts(const Value& top) {
    const Value::Entry* list = top.find("layouts");
    if (list != nullptr && requireKind(list->value, Value::Kind::List, "a list of layouts as {id: ...}")) {
        for (const Value& item : list->value.items) {
            if (!requireKind(item, Value::Kind::Map, "a layout as {id: ...}")) continue;
            requireKnownKeys(item, kLayoutKeys);
            GraphDescription::Layout layout{{}, item.where};
            layout.id = readId(item, "layout", layout.where);
            if (layout.id.empty()) continue;
            if (const auto* const first = graph.findLayout(layout.id))
                complaints.add(layout.where, "the layout '" + layout.id + "' a second time",
                               "an id of its own for each layout (the first is in line " +
                                   std::to_string(first->where.line) + ")");
            else
                graph.add(std::move(layout));
        }
    }
    if (graph.layouts.empty()) graph.add(GraphDescription::Layout{kOnlyLayout, top.where});
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
    block.where = block.typeWhere = value.where;
    readBlockId(value, block);
    if (const Value::Entry* type = value.find("type")) {
        block.typeWhere = type->value.where;
        block.type = readText(type->value, "the name of a block type");
    } else {
        complaints.add(value.where, "a block without a type", "'type:' and the name of a block type");
    }
    readLayoutOf(value, block);
    if (const Value::Entry* settings = value.find("properties")) readSettings(settings->value, block);
    if (!block.id.empty()) graph.add(std::move(block));
}

/// The id of a block or a layout, with its place; empty, with a complaint, when there is none that will do.
std::string GraphReader::readId(const Value& value, const std::string& what, Place& where) {
    const Value::Entry* entry = value.find("id");
    if (entry == nullptr) {
        complaints.add(value.where, "a " + what + " without an id", "'id:' and a name");
        return {};
    }
    std::string id = readText(entry->value, "an id");
    if (id.empty()) return {};
    where = entry->value.where;
    if (!GraphDescription::getIsId(id)) {
        complaints.add(where, "the id " + inQuotes(id), GraphDescription::kIdLetters, asId(id));
        return {};
    }
    if (isYamlWord(id)) {
        complaints.add(where, "the id '" + id + "'",
                       "a word that no YAML reader takes for a yes, a no or a nothing", id + "_");
        return {};
    }
    return id;
}

void GraphReader::readBlockId(const Value& value, Block& block) {
    const std::string id = readId(value, "block", block.where);
    if (const Block* first = graph.findBlock(id)) {
        complaints.add(block.where, "the id '" + id + "' a second time",
                       "an id of its own for each block (the first is in line " +
                           std::to_string(first->where.line) + ")");
        return;
    }
    block.id = id;
}

void GraphReader::readLayoutOf(const Value& value, Block& block) {
    const Value::Entry* entry = value.find("layout");
    block.layout = entry == nullptr ? graph.layouts.front().id : readText(entry->value, "the id of a layout");
    if (block.layout.empty() || graph.findLayout(block.layout) != nullptr) return;
    refuseName(complaints, entry->value.where, block.layout, "the layout " + inQuotes(block.layout),
               "one of the graph's layouts: ", [&] { return idsOf(graph.layouts); });
}

void GraphReader::readSettings(const Value& value, Block& block) {
    if (value.kind == Value::Kind::Null) return;
    if (!requireKind(value, Value::Kind::Map, "properties as 'name: value'")) return;
    for (const Value::Entry& entry : value.entries)
        block.settings.push_back(
            {entry.key, entry.where, withParameters(entry.value), Setting::Origin::File});
}

void GraphReader::readConnections(const Value& top) {
    const Value::Entry* list = top.find("connections");
    if (list == nullptr || list->value.kind == Value::Kind::Null) return;
    if (!requireKind(list->value, Value::Kind::List, "a list of connections")) return;
    for (const Value& item : list->value.items)
        if (requireKind(item, Value::Kind::Map, "a connection as {from: block.pin, to: block.pin}"))
            readConnection(item);
}

void GraphReader::readTimeline(const Value& top) {
    const Value::Entry* list = top.find("timeline");
    if (list == nullptr || list->value.kind == Value::Kind::Null) return;
    graph.timeline = TimelineReader(graph, complaints).read(withParameters(list->value));
}

void GraphReader::readConnection(const Value& value) {
    requireKnownKeys(value, kConnectionKeys);
    Connection connection;
    connection.where = value.where;
    connection.from = readEndpoint(value, "from");
    connection.to = readEndpoint(value, "to");
    if (const Value::Entry* buffer = value.find("buffer")) readBuffer(buffer->value, connection);
    if (const Value::Entry* order = value.find("order")) readOrder(order->value, connection);
    if (const Value::Entry* overflow = value.find("overflow")) readOverflow(overflow->value, connection);
    graph.connections.push_back(std::move(connection));
}

GraphDescription::Endpoint GraphReader::readEndpoint(const Value& connection, std::string_view key) {
    Endpoint end;
    end.where = connection.where;
    const Value::Entry* entry = connection.find(key);
    if (entry == nullptr) {
        complaints.add(connection.where, "a connection without '" + std::string(key) + "'",
                       "'" + std::string(key) + ": block.pin'");
        return end;
    }
    end.where = entry->value.where;
    const std::string text = readText(entry->value, "block.pin");
    // At the first dot: ids have none, literal pin names may.
    const std::size_t dot = text.find('.');
    end.block = text.substr(0, dot);
    end.hasPin = dot != std::string::npos;
    if (end.hasPin) end.pin = text.substr(dot + 1);
    if (!text.empty() && graph.findBlock(end.block) == nullptr) {
        refuseBlock(end.where, end.block);
        end.block.clear();
    }
    return end;
}

void GraphReader::readBuffer(const Value& value, Connection& connection) {
    const auto size = toWhole(withParameters(value), complaints);
    if (!size) return;
    if (*size < 1 || *size > std::numeric_limits<std::int32_t>::max())
        complaints.add(value.where, "a buffer of " + std::to_string(*size), "1 to 2147483647 samples");
    else
        connection.buffer = static_cast<std::uint32_t>(*size);
}

void GraphReader::readOrder(const Value& value, Connection& connection) {
    const Value order = withParameters(value);
    if (order.isScalar() && (order.text == "newest" || order.text == "oldest"))
        connection.isNewestFirst = order.text == "newest";
    else
        complaints.add(value.where, order.describe(), "newest or oldest", nearestName(order.text, kOrders));
}

void GraphReader::readOverflow(const Value& value, Connection& connection) {
    const Value overflow = withParameters(value);
    connection.overflowWhere = value.where;
    if (overflow.isScalar() && (overflow.text == "drop" || overflow.text == "wait"))
        connection.overflow = overflow.text == "wait" ? Overflow::Wait : Overflow::Drop;
    else
        complaints.add(value.where, overflow.describe(), "drop or wait",
                       nearestName(overflow.text, kOverflows));
}

void GraphReader::applySettings(const GraphChanges& changes) {
    for (const GraphChanges::Setting& change : changes.settings) {
        Block* block = requireBlock(change.block, change.option);
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
        putSetting(*block, std::move(setting));
    }
}

void GraphReader::applyFiles(const std::vector<GraphChanges::File>& files, Setting::Origin origin) {
    for (const GraphChanges::File& change : files) {
        Block* block = requireBlock(change.block, change.option);
        if (block == nullptr) continue;
        Value value;
        value.kind = Value::Kind::Scalar;
        value.text = change.path;
        value.isQuoted = true;
        value.where = {change.option, 0, 0};
        putSetting(*block, {"file", value.where, value, origin});
    }
}

GraphDescription::Block* GraphReader::requireBlock(const std::string& id, const std::string& option) {
    const auto found = graph.blockIndex.find(id);
    if (found != graph.blockIndex.end()) return &graph.blocks[found->second];
    refuseBlock({option, 0, 0}, id);
    return nullptr;
}

void GraphReader::refuseBlock(const Place& where, const std::string& id) {
    refuseName(complaints, where, id, "the block " + inQuotes(id),
               "the id of a block: ", [&] { return idsOf(graph.blocks); });
}

void GraphReader::refuseParameter(const Place& where, const std::string& wanted) {
    refuseName(complaints, where, wanted, "the parameter " + inQuotes(wanted),
               "one of the graph's parameters: ", [&] { return keysOf(parameters); });
}

/// Replaces a setting where it stands, so that the order of writing stays the file's, or adds it at the end.
void GraphReader::putSetting(Block& block, Setting setting) {
    const auto known = std::find_if(block.settings.begin(), block.settings.end(),
                                    [&](const Setting& other) { return other.name == setting.name; });
    if (known == block.settings.end())
        block.settings.push_back(std::move(setting));
    else
        *known = std::move(setting);
}

void GraphReader::takeOut(Block& block, const GraphChanges::Setting& change) {
    const auto isMeant = [&](const Setting& setting) { return setting.name == change.property; };
    if (std::erase_if(block.settings, isMeant) > 0) return;
    const auto names = [&] {
        std::vector<std::string> set;
        for (const Setting& setting : block.settings)
            set.push_back(setting.name);
        return set;
    };
    refuseName(complaints, {change.option, 0, 0}, change.property,
               "no value for " + inQuotes(change.property) + ", which the graph doesn't set",
               "a value, or one of those that it sets: ", names, "a value");
}

bool GraphReader::requireKind(const Value& value, Value::Kind kind, const std::string& expected) {
    if (value.kind == kind) return true;
    complaints.add(value.where, value.describe(), expected);
    return false;
}

void GraphReader::requireKnownKeys(const Value& map, const std::vector<std::string>& known) {
    for (const Value::Entry& entry : map.entries)
        if (std::find(known.begin(), known.end(), entry.key) == known.end())
            refuseName(complaints, entry.where, entry.key, "the key " + inQuotes(entry.key), "one of ",
                       [&] { return known; });
}

/// A copy with every `${name}` replaced by its parameter. The place stays where the value is used.
Value GraphReader::withParameters(const Value& value) {
    Value copy = value;
    fillIn(copy);
    return copy;
}

void GraphReader::fillIn(Value& value) {
    if (value.isScalar()) {
        if (value.text.find("${") != std::string::npos) value = parameterFor(value);
        return;
    }
    for (Value& item : value.items)
        fillIn(item);
    for (Value::Entry& entry : value.entries)
        fillIn(entry.value);
}

Value GraphReader::parameterFor(const Value& value) {
    const std::string name = parameterName(value.text);
    Value nothing;
    nothing.where = value.where;
    nothing.parameter = value.text; // so that nobody complains of it again
    if (name.empty()) {
        complaints.add(value.where, value.describe(), "'${name}' as the whole value and nothing beside it");
        return nothing;
    }
    const auto found = parameters.find(name);
    if (found == parameters.end()) {
        refuseParameter(value.where, name);
        return nothing;
    }
    // A large parameter in a thousand places would fill the memory.
    if (!holdsTooMuch) filledIn += found->second.count();
    if (!holdsTooMuch && filledIn > kMostValues) {
        holdsTooMuch = true;
        complaints.add(value.where, "parameters that unfold to more than a million values",
                       "a smaller graph");
    }
    if (holdsTooMuch) return nothing;
    Value copy = found->second;
    copy.where = value.where;
    copy.parameter = name;
    if (copy.kind == Value::Kind::Null)
        complaints.add(value.where, "the parameter " + inQuotes(name) + " without a value",
                       "one from the graph or the caller");
    return copy;
}

std::string GraphReader::readText(const Value& value, const std::string& expected) {
    if (value.isScalar() && !value.text.empty()) return value.text;
    complaints.add(value.where, value.isScalar() ? "an empty text" : value.describe(), expected);
    return {};
}

} // namespace Quillmere::Host
