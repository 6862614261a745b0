// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// The reading of one graph file, format 1, into a `GraphDescription`. `docs/graphs.md` is the format for people.
class GraphReader {
public:
    GraphReader(std::string path, Complaints& complaints);

    GraphDescription read(const GraphChanges& changes);

private:
    using Block = GraphDescription::Block;
    using Connection = GraphDescription::Connection;
    using Endpoint = GraphDescription::Endpoint;
    using Setting = GraphDescription::Setting;

    void readFormat(const Value& top);
    void readClock(const Value& top);
    void readParameters(const Value& top, const GraphChanges& changes);
    void readPlugins(const Value& top);
    void readLayouts(const Value& top);
    void readBlocks(const Value& top);
    void readBlock(const Value& value);
    std::string readId(const Value& value, const std::string& what, Place& where);
    void readBlockId(const Value& value, Block& block);
    void readLayoutOf(const Value& value, Block& block);
    void readSettings(const Value& value, Block& block);
    void readConnections(const Value& top);
    void readTimeline(const Value& top);
    void readConnection(const Value& value);
    Endpoint readEndpoint(const Value& connection, std::string_view key);
    void readBuffer(const Value& value, Connection& connection);
    void readOrder(const Value& value, Connection& connection);
    void readOverflow(const Value& value, Connection& connection);

    void applySettings(const GraphChanges& changes);
    void applyFiles(const std::vector<GraphChanges::File>& files, Setting::Origin origin);
    Block* requireBlock(const std::string& id, const std::string& option);
    static void putSetting(Block& block, Setting setting);
    void takeOut(Block& block, const GraphChanges::Setting& change);

    bool requireKind(const Value& value, Value::Kind kind, const std::string& expected);
    void requireKnownKeys(const Value& map, const std::vector<std::string>& known);
    void refuseBlock(const Place& where, const std::string& id);
    void refuseParameter(const Place& where, const std::string& wanted);
    Value withParameters(const Value& value);
    void fillIn(Value& value);
    Value parameterFor(const Value& value);
    std::string readText(const Value& value, const std::string& expected);

    Complaints& complaints;
    GraphDescription graph;
    std::map<std::string, Value> parameters;
    std::size_t filledIn = 0;  ///< Values that parameters have brought.
    bool holdsTooMuch = false; ///< They were more than may be, which is a complaint already.
};

} // namespace Quillmere::Host
