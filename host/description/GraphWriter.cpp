// SPDX-License-Identifier: MIT
#include "host/description/GraphWriter.h"

#include "host/description/ValueText.h"

#include <filesystem>

namespace Quillmere::Host {

namespace {
using Change = GraphDescription::TimelineChange;

Value emptyValue(Value::Kind kind) {
    Value value;
    value.kind = kind;
    return value;
}

void append(Value& map, const std::string& key, Value value) {
    Value::Entry& entry = map.entries.emplace_back();
    entry.key = key;
    entry.value = std::move(value);
}

/// Adds what says something.
void put(Value& map, const std::string& key, Value value) {
    const bool isEmptyList = value.kind == Value::Kind::List && value.items.empty();
    const bool isEmptyName = value.isScalar() && value.text.empty();
    if (value.kind != Value::Kind::Null && !isEmptyList && !isEmptyName) append(map, key, std::move(value));
}

/// A view is somebody else's, and kept as it is.
void putView(Value& map, const Value& view) {
    if (view.kind != Value::Kind::Null) append(map, "view", view);
}

template <class Things, class Make>
Value listOf(const Things& things, const Make& make) {
    Value list = emptyValue(Value::Kind::List);
    for (const auto& thing : things)
        list.items.push_back(make(thing));
    return list;
}

template <class T, class Make>
Value givenValue(const Given<T>& given, const Make& make) {
    return given.value ? make(*given.value) : given.written;
}

/// A caller's path is relative to where the program runs, those of a graph to its folder.
Value settingValue(const GraphDescription::Setting& setting) {
    const bool isCallersFile =
        setting.origin != GraphDescription::Setting::Origin::File && setting.name == "file";
    if (!isCallersFile || !setting.value.isScalar() || setting.value.text.empty() ||
        setting.value.text == "-")
        return setting.value;
    std::error_code error; // without a folder that the program runs in, the path stays what it is
    const std::filesystem::path path = std::filesystem::absolute(setting.value.text, error);
    return error ? setting.value : valueOf(path.string());
}

Value layoutMap(const GraphDescription::Layout& layout) {
    Value map = emptyValue(Value::Kind::Map);
    put(map, "id", nameValue(layout.id));
    putView(map, layout.view);
    return map;
}

Value blockMap(const GraphDescription::Block& block) {
    Value map = emptyValue(Value::Kind::Map);
    put(map, "id", nameValue(block.id));
    put(map, "type", nameValue(block.type));
    put(map, "layout", nameValue(block.layout));
    Value properties = emptyValue(Value::Kind::Map);
    for (const GraphDescription::Setting& setting : block.settings)
        append(properties, setting.name, settingValue(setting));
    if (!properties.entries.empty()) put(map, "properties", std::move(properties));
    putView(map, block.view);
    return map;
}

Value connectionMap(const GraphDescription::Connection& connection) {
    Value map = emptyValue(Value::Kind::Map);
    put(map, "from", nameValue(connection.from.getText()));
    put(map, "to", nameValue(connection.to.getText()));
    put(map, "buffer",
        givenValue(connection.buffer, [](std::uint32_t size) { return valueOf(std::int64_t{size}); }));
    put(map, "order", givenValue(connection.isNewestFirst, [](bool isNewest) {
            return nameValue(isNewest ? "newest" : "oldest");
        }));
    put(map, "overflow", givenValue(connection.overflow, [](Overflow overflow) {
            return nameValue(overflow == Overflow::Wait ? "wait" : "drop");
        }));
    putView(map, connection.view);
    return map;
}

const char* keyOf(Change::Kind kind) {
    return kind == Change::Kind::Set ? "set" : kind == Change::Kind::Fire ? "fire" : "send";
}

/// The entries of a timeline. What a map can't say in its order, as the same setting twice, gets an entry
/// more.
class EntryWriter {
public:
    void write(const GraphDescription::TimelineEntry& entry) {
        at = givenValue(entry.at, [](double seconds) { return valueOf(seconds); });
        hasBegun = false;
        for (const Change& change : entry.changes)
            write(change);
    }

    Value list = emptyValue(Value::Kind::List);

private:
    void write(const Change& change) {
        const std::string key = keyOf(change.kind);
        const std::string target = change.block + "." + change.name;
        const bool isCommand = change.kind == Change::Kind::Fire;
        if (!hasBegun || !getFits(key, target)) begin();
        Value& map = list.items.back();
        if (map.entries.back().key != key)
            append(map, key, emptyValue(isCommand ? Value::Kind::Null : Value::Kind::Map));
        Value& part = map.entries.back().value;
        if (isCommand)
            addCommand(part, nameValue(target));
        else
            append(part, target, change.value);
    }

    /// Whether the entry's last key is this one, or hasn't come yet.
    bool getFits(const std::string& key, const std::string& target) const {
        const Value& map = list.items.back();
        if (map.entries.back().key == key) return map.entries.back().value.find(target) == nullptr;
        return map.find(key) == nullptr;
    }

    void begin() {
        list.items.push_back(emptyValue(Value::Kind::Map));
        append(list.items.back(), "at", at);
        hasBegun = true;
    }

    static void addCommand(Value& part, Value command) {
        if (part.kind == Value::Kind::Null) {
            part = std::move(command);
            return;
        }
        if (part.isScalar()) {
            Value commands = emptyValue(Value::Kind::List);
            commands.items.push_back(std::move(part));
            part = std::move(commands);
        }
        part.items.push_back(std::move(command));
    }

    Value at;
    bool hasBegun = false;
};

Value timelineOf(const GraphDescription& graph) {
    if (graph.writtenTimeline.kind != Value::Kind::Null) return graph.writtenTimeline;
    EntryWriter writer;
    for (const GraphDescription::TimelineEntry& entry : graph.timeline)
        writer.write(entry);
    return std::move(writer.list);
}
} // namespace

Value mapOf(const GraphDescription& graph) {
    Value map = emptyValue(Value::Kind::Map);
    put(map, "format", valueOf(1));
    put(map, "name", nameValue(graph.name));
    if (graph.clock == GraphDescription::Clock::Stream) put(map, "clock", nameValue("stream"));
    put(map, "plugins", listOf(graph.plugins, [](const auto& plugin) { return nameValue(plugin.path); }));
    Value parameters = emptyValue(Value::Kind::Map);
    for (const GraphDescription::Parameter& parameter : graph.parameters)
        append(parameters, parameter.name, parameter.value);
    if (!parameters.entries.empty()) put(map, "parameters", std::move(parameters));
    put(map, "layouts", listOf(graph.layouts, &layoutMap));
    append(map, "blocks", listOf(graph.blocks, &blockMap));
    put(map, "connections", listOf(graph.connections, &connectionMap));
    put(map, "timeline", timelineOf(graph));
    putView(map, graph.view);
    return map;
}

} // namespace Quillmere::Host
