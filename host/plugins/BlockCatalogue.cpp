// SPDX-License-Identifier: MIT
#include "host/plugins/BlockCatalogue.h"

#include "host/text/CaughtText.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

void BlockCatalogue::add(const std::string& type, Maker maker) {
    if (getIsHostType(type) || find(type) != nullptr)
        throw PluginException(
            {{}, "the block type '" + type + "' a second time", "another name for a type of the host"});
    hostEntries.push_back({type, std::move(maker)});
}

void BlockCatalogue::load(const std::string& path) {
    const std::shared_ptr<PluginLibrary> library = PluginLibrary::open(path);
    const auto isOfIt = [&](const Entry& entry) { return entry.library == library; };
    if (std::any_of(entries.begin(), entries.end(), isOfIt)) return;
    std::vector<Entry> all = entries;
    for (Core::AbstractFilterFactory* const factory : library->getFactories()) {
        const std::string type = factory->getTypeName();
        if (getIsHostType(type))
            throw PluginException({{library->getPath()},
                                   "the block type '" + type + "', which is the host's own",
                                   "another name"});
        if (const Entry* const known = find(type))
            throw PluginException({{},
                                   "the block type '" + type + "' twice, in " + known->library->getPath() +
                                       " and in " + library->getPath(),
                                   "each type in one plug-in"});
        all.push_back({library, factory});
    }
    entries = std::move(all);
}

std::vector<std::string> BlockCatalogue::getTypeNames() const {
    std::vector<std::string> names;
    for (const Entry& entry : entries)
        names.emplace_back(entry.factory->getTypeName());
    return names;
}

std::vector<std::string> BlockCatalogue::getHostTypeNames() const {
    std::vector<std::string> names;
    for (const HostEntry& entry : hostEntries)
        names.push_back(entry.type);
    return names;
}

bool BlockCatalogue::getIsHostType(const std::string& type) const {
    return findHostEntry(type) != nullptr;
}

std::string BlockCatalogue::getPluginName(const std::string& type) const {
    const Entry* const entry = find(type);
    return entry == nullptr ? "" : entry->factory->getPluginName();
}

std::string BlockCatalogue::getPluginVersion(const std::string& type) const {
    const Entry* const entry = find(type);
    return entry == nullptr ? "" : entry->factory->getVersion().toString();
}

std::string BlockCatalogue::getPluginPath(const std::string& type) const {
    const Entry* const entry = find(type);
    return entry == nullptr ? "" : entry->library->getPath();
}

std::vector<std::string> BlockCatalogue::getPluginPaths() const {
    std::vector<std::string> paths;
    for (const Entry& entry : entries)
        if (std::find(paths.begin(), paths.end(), entry.library->getPath()) == paths.end())
            paths.push_back(entry.library->getPath());
    return paths;
}

BlockPtr BlockCatalogue::create(const std::string& type, const std::string& name) const {
    if (const HostEntry* const own = findHostEntry(type)) return BlockPtr(own->maker(name));
    const Entry* const entry = find(type);
    if (entry == nullptr) return {};
    const std::string file = entry->library->getPath();
    Core::Filter* block = nullptr;
    try {
        block = entry->factory->create(name);
    } catch (...) {
        throw PluginException(
            {{file},
             "a block '" + name + "' (" + type + ") that raised when it was made (" + caughtText() + ")",
             "one that can be"});
    }
    if (block == nullptr)
        throw PluginException({{file},
                               "no block where '" + name + "' (" + type + ") was to be made",
                               "one, or an exception that says why not"});
    return BlockPtr(block, BlockDeleter{entry->library, entry->factory});
}

const BlockCatalogue::Entry* BlockCatalogue::find(const std::string& type) const {
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const Entry& entry) { return type == entry.factory->getTypeName(); });
    return found == entries.end() ? nullptr : &*found;
}

const BlockCatalogue::HostEntry* BlockCatalogue::findHostEntry(const std::string& type) const {
    const auto found = std::find_if(hostEntries.begin(), hostEntries.end(),
                                    [&](const HostEntry& entry) { return type == entry.type; });
    return found == hostEntries.end() ? nullptr : &*found;
}

} // namespace Quillmere::Host
