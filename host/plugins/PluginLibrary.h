// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Factory.h"
#include "host/text/HostException.h"

#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The file name of this project's own plug-in.
inline constexpr const char* kOwnPluginFile = "libVelmarind.so";

/// A plug-in, or a block of one, that can't be used: no shared object, no plug-in, one for another framework,
/// one that raises where it shouldn't. The text begins with the plug-in's file.
class QUILLMERE_API PluginException : public HostException {
public:
    using HostException::HostException;
};

/// A plug-in in memory: its shared object is open and started. It is stopped with the last reference, and
/// every block keeps one. Its code stays in memory, since an exception that the plug-in raised may still be
/// on its way. Used from one thread at a time. [setup]
class QUILLMERE_API PluginLibrary {
public:
    /// Opens and starts the plug-in in the file at `path`; one that is open already is shared, not started
    /// again. Raises `PluginException`, which says what is wrong with the file: what the plug-in's start
    /// raises is in its text, and types without a name or with one and the same are refused.
    static std::shared_ptr<PluginLibrary> open(const std::string& path);

    ~PluginLibrary();
    PluginLibrary(const PluginLibrary&) = delete;
    PluginLibrary& operator=(const PluginLibrary&) = delete;

    const std::string& getPath() const { return path; }
    /// The factories that the plug-in brought, in its own order.
    const std::vector<Core::AbstractFilterFactory*>& getFactories() const { return factories; }

    /// Warnings of plug-ins that raised when they were stopped, which happens where nobody can be told; each
    /// is given once.
    static std::vector<std::string> takeStopFailures();

private:
    explicit PluginLibrary(const std::string& filePath);

    using EntryPoint = void (*)();
    using VersionPoint = const char* (*)();
    void* requireSymbol(const char* name) const;
    void start();
    void checkTypes() const;

    std::string path;
    void* handle = nullptr;
    EntryPoint stop = nullptr; ///< Null until the plug-in is started.
    std::vector<Core::AbstractFilterFactory*> factories;
};

/// The file of the open plug-in whose code a block runs; empty for blocks of this project's own and of the
/// host. [any]
QUILLMERE_API std::string pluginFileOf(const Core::Filter& block);

/// `'smooth' (OwnFilter of /where/libOwn.so)`: a block in a message, with what `pluginFileOf` gives. [any]
QUILLMERE_API std::string blockText(const Core::Filter& block);

/// Gives a block back to where it came from and lets go of its plug-in afterwards.
struct QUILLMERE_API BlockDeleter {
    std::shared_ptr<PluginLibrary> library;         ///< Null for a block of the host.
    Core::AbstractFilterFactory* factory = nullptr; ///< Null for a block of the host.
    void operator()(Core::Filter* block) const;
};
using BlockPtr = std::unique_ptr<Core::Filter, BlockDeleter>;

} // namespace Quillmere::Host
