// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/description/DescriptionCheck.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// The reading of one graph, format 1, into a `GraphDescription`. `docs/graphs.md` is the format for people.
class QUILLMERE_API GraphReader {
public:
    GraphReader(std::string path, Complaints& complaints);

    GraphDescription readFile();
    GraphDescription readText(const std::string& text);

private:
    using Block = GraphDescription::Block;
    using Connection = GraphDescription::Connection;
    using Endpoint = GraphDescription::Endpoint;

    GraphDescription read(const std::optional<Value>& top);
    void readFormat(const Value& top);
    void readClock(const Value& top);
    void readParameters(const Value& top);
    void readPlugins(const Value& top);
    void readLayouts(const Value& top);
    void readBlocks(const Value& top);
    void readBlock(const Value& value);
    bool readId(const Value& value, std::string& id, Place& where);
    bool readType(const Value& value, Block& block);
    bool readLayoutOf(const Value& value, Block& block);
    void readSettings(const Value& value, Block& block);
    void readConnections(const Value& top);
    void readConnection(const Value& value);
    Endpoint readEndpoint(const Value& connection, std::string_view key);
    template <class T>
    void readGiven(const Value& connection, std::string_view key, Given<T>& given,
                   std::optional<T> (*convert)(const Value&, Complaints&));
    void readTimeline(const Value& top);

    bool requireKind(const Value& value, Value::Kind kind, const std::string& expected);
    void requireKnownKeys(const Value& map, const std::vector<std::string>& known);
    std::string textOf(const Value& value, const std::string& expected);

    Complaints& complaints;
    DescriptionCheck check;
    GraphDescription graph;
};

} // namespace Quillmere::Host
