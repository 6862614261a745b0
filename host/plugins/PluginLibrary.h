// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Factory.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A plug-in that can't be used: no shared object, no plug-in, or one for another framework.
class QUILLMERE_API PluginException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A plug-in in memory: its shared object is open and started. It is stopped and closed with the last reference, and
/// every block keeps one, so no block outlives the code that it runs.
/// Used from one thread at a time. [setup]
class QUILLMERE_API PluginLibrary {
public:
    /// Opens and starts the plug-in in the file at `path`; one that is open already is shared, not started again.
    /// Raises `PluginException`, which says what is wrong with the file, and what the plug-in's start raises.
    static std::shared_ptr<PluginLibrary> open(const std::string& path);

    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    const std::string& getPath() const { return path; }
    /// The factories that the plug-in brought, in its own order.
    const std::vector<Core::AbstractFilterFactory*>& getFactories() const { return factories; }

private:
    explicit PluginLibrary(const std::string& filePath);

    using EntryPoint = void (*)();
    using VersionPoint = const char* (*)();
    void* requireSymbol(const char* name) const;
    void start();

    std::string path;
    void* handle = nullptr;
    EntryPoint stop = nullptr; ///< Null until the plug-in is started.
    std::vector<Core::AbstractFilterFactory*> factories;
};

/// Gives a block back to where it came from and lets go of its plug-in afterwards.
struct QUILLMERE_API BlockDeleter {
    std::shared_ptr<PluginLibrary> library;         ///< Null for a block of the host.
    Core::AbstractFilterFactory* factory = nullptr; ///< Null for a block of the host.
    void operator()(Core::Filter* block) const;
};
using BlockPtr = std::unique_ptr<Core::Filter, BlockDeleter>;

} // namespace Quillmere::Host
