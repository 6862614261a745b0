// SPDX-License-Identifier: MIT
#include "host/description/GraphDescription.h"

#include "host/description/GraphChanger.h"
#include "host/description/GraphReader.h"
#include "host/description/GraphResolver.h"
#include "host/description/GraphWriter.h"
#include "host/description/ValueText.h"
#include "host/text/Address.h"

#include <algorithm>
#include <filesystem>
#include <tuple>

namespace Quillmere::Host {

namespace {
template <class Things>
const typename Things::value_type* findById(const Things& things, std::string_view id) {
    const auto found =
        std::find_if(things.begin(), things.end(), [&](const auto& thing) { return thing.id == id; });
    return found == things.end() ? nullptr : &*found;
}

/// What happens when, whatever entries it is dealt out to.
auto happenings(const std::vector<GraphDescription::TimelineEntry>& timeline) {
    std::vector<std::pair<Given<double>, GraphDescription::TimelineChange>> list;
    for (const GraphDescription::TimelineEntry& entry : timeline)
        for (const GraphDescription::TimelineChange& change : entry.changes)
            list.emplace_back(entry.at, change);
    return list;
}
} // namespace

GraphDescription GraphDescription::fromFile(const std::string& path, Complaints& complaints) {
    return GraphReader(path, complaints).readFile();
}

GraphDescription GraphDescription::fromText(const std::string& text, const std::string& path,
                                            Complaints& complaints) {
    return GraphReader(path, complaints).readText(text);
}

GraphDescription::Block& GraphDescription::addBlock(std::string id, std::string type) {
    Block& block = blocks.emplace_back();
    block.id = std::move(id);
    block.type = std::move(type);
    return block;
}

GraphDescription::Connection& GraphDescription::connect(std::string_view from, std::string_view to) {
    Connection& connection = connections.emplace_back();
    connection.from = Endpoint::of(from);
    connection.to = Endpoint::of(to);
    return connection;
}

GraphDescription GraphDescription::with(const GraphChanges& changes, Complaints& complaints) const {
    return GraphChanger(*this, complaints).change(changes);
}

GraphDescription GraphDescription::resolved(Complaints& complaints) const {
    return GraphResolver(*this, complaints).resolve();
}

std::string GraphDescription::toText() const {
    return yamlText(mapOf(*this));
}

std::string GraphDescription::getName() const {
    return name.empty() ? std::filesystem::path(path).stem().string() : name;
}

std::string GraphDescription::getFolder() const {
    return std::filesystem::path(path).parent_path().string();
}

bool GraphDescription::getIsId(std::string_view text) {
    const auto isIdLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-';
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), isIdLetter);
}

const GraphDescription::Block* GraphDescription::findBlock(std::string_view id) const {
    return findById(blocks, id);
}

const GraphDescription::Layout* GraphDescription::findLayout(std::string_view id) const {
    return findById(layouts, id);
}

bool GraphDescription::operator==(const GraphDescription& other) const {
    const auto parts = [](const GraphDescription& graph) {
        return std::tie(graph.name, graph.clock, graph.plugins, graph.parameters, graph.layouts, graph.blocks,
                        graph.connections, graph.writtenTimeline, graph.view, graph.isUsable);
    };
    return parts(*this) == parts(other) && happenings(timeline) == happenings(other.timeline);
}

GraphDescription::Block& GraphDescription::Block::set(Setting setting) {
    const auto known = std::find_if(settings.begin(), settings.end(),
                                    [&](const Setting& other) { return other.name == setting.name; });
    if (known == settings.end())
        settings.push_back(std::move(setting));
    else
        *known = std::move(setting);
    return *this;
}

GraphDescription::Block& GraphDescription::Block::set(const std::string& property, Value value) {
    Setting setting;
    setting.name = property;
    setting.where = value.where;
    setting.value = std::move(value);
    return set(std::move(setting));
}

bool GraphDescription::Block::operator==(const Block& other) const {
    const auto parts = [](const Block& block) {
        return std::tie(block.id, block.type, block.settings, block.layout, block.view);
    };
    return parts(*this) == parts(other);
}

GraphDescription::Endpoint GraphDescription::Endpoint::of(std::string_view text) {
    Address address(text);
    Endpoint end;
    end.block = std::move(address.block);
    end.pin = std::move(address.member);
    end.hasPin = address.hasMember;
    return end;
}

bool GraphDescription::Connection::operator==(const Connection& other) const {
    const auto parts = [](const Connection& connection) {
        return std::tie(connection.from, connection.to, connection.buffer, connection.isNewestFirst,
                        connection.overflow, connection.view);
    };
    return parts(*this) == parts(other);
}

bool GraphDescription::TimelineChange::operator==(const TimelineChange& other) const {
    const auto parts = [](const TimelineChange& change) {
        return std::tie(change.kind, change.block, change.name, change.value);
    };
    return parts(*this) == parts(other);
}

} // namespace Quillmere::Host
