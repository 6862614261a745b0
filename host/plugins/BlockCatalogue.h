// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/plugins/PluginLibrary.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The block types that graphs may use: those of the plug-ins that were loaded, in the order of loading and
/// then in each plug-in's own, and those of the host, which are registered.
class QUILLMERE_API BlockCatalogue {
public:
    /// Makes a block of the host with that name; gives it to the caller.
    using Maker = std::function<Core::Filter*(const std::string& name)>;

    /// Registers a type of the host's own. Raises `PluginException` for one that is there already.
    void add(const std::string& type, Maker maker);

    /// Adds the types of the plug-in in the file at `path`; one that is there already adds nothing. Raises
    /// what `PluginLibrary::open` raises, and `PluginException`, with nothing added, for a type that another
    /// plug-in or the host has: nobody's block may stand in for another's unnoticed.
    void load(const std::string& path);

    /// Type names of the plug-ins' blocks, and of the host's own.
    std::vector<std::string> getTypeNames() const;
    std::vector<std::string> getHostTypeNames() const;
    bool getIsHostType(const std::string& type) const;

    /// The plug-in that a type comes from and its version, empty for a type of the host or an unknown one.
    std::string getPluginName(const std::string& type) const;
    std::string getPluginVersion(const std::string& type) const;
    std::string getPluginPath(const std::string& type) const; ///< Its file.

    /// The files of the plug-ins, each once.
    std::vector<std::string> getPluginPaths() const;

    /// A new block; null when the type is unknown. Raises `PluginException`, which names the plug-in's file
    /// and the block, when its factory raises or gives none.
    BlockPtr create(const std::string& type, const std::string& name) const;

private:
    struct Entry {
        std::shared_ptr<PluginLibrary> library;
        Core::AbstractFilterFactory* factory;
    };
    struct HostEntry {
        std::string type;
        Maker maker;
    };
    const Entry* find(const std::string& type) const;
    const HostEntry* findHostEntry(const std::string& type) const;

    std::vector<Entry> entries;
    std::vector<HostEntry> hostEntries;
};

/// Where the plug-in of this project lies when the program at `program` runs from its build tree or from an
/// installed one; empty when it isn't there.
QUILLMERE_API std::string findPluginBeside(const std::string& program);

} // namespace Quillmere::Host
