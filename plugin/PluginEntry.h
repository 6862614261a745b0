// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/FlowManager.h"
#include "framework/core/Plugin.h"
#include "framework/core/Version.h"
#include "plugin/EntryPoints.h"
#include "plugin/FilterFactory.h"

#include <memory>
#include <string>

namespace Quillmere {

/// A plug-in that brings blocks of these classes, in this order.
template <class... Blocks>
class PluginOf : public Core::DefaultPlugin {
public:
    PluginOf(const std::string& ownName, const std::string& ownVersion) : DefaultPlugin(ownName, ownVersion) {
        metaData.pluginName = ownName;
        metaData.pluginVersion = ownVersion;
        metaData.hostVersion = Core::kFrameworkVersion;
        (addFactory(std::make_unique<FilterFactory<Blocks>>(ownName, Core::ComponentVersion(ownVersion))),
         ...);
    }
};

/// What the entry functions of a plug-in do, one object of class `PluginClass` being the plug-in.
template <class PluginClass>
class PluginEntry {
public:
    /// [setup]
    static void start() {
        if (plugin != nullptr) return;
        plugin = new PluginClass();
        Core::FlowManager::instance().getPluginManager().installPlugin(*plugin);
    }
    /// [setup]
    static void stop() {
        if (plugin == nullptr) return;
        Core::FlowManager::instance().getPluginManager().uninstallPlugin(*plugin);
        delete plugin;
        plugin = nullptr;
    }

private:
    inline static PluginClass* plugin = nullptr;
};

} // namespace Quillmere

/// Makes a shared object the plug-in of class `PluginClass`, which can be made without arguments: once, in
/// one source, outside of all namespaces.
#define QUILLMERE_PLUGIN_CLASS(PluginClass)                                                                  \
    void dllStartPlugin() {                                                                                  \
        Quillmere::PluginEntry<PluginClass>::start();                                                        \
    }                                                                                                        \
    void dllStopPlugin() {                                                                                   \
        Quillmere::PluginEntry<PluginClass>::stop();                                                         \
    }                                                                                                        \
    const char* dllGetQuillmereVersion() {                                                                   \
        return Quillmere::Core::kFrameworkVersion;                                                           \
    }

/// Makes a shared object a plug-in with a name, a version and block classes, in the order in which they are
/// listed: once, in one source, outside of all namespaces.
///
///     QUILLMERE_PLUGIN("OwnBlock", "1.0.0", FilterAbsolute, FilterRunningMean)
#define QUILLMERE_PLUGIN(name, version, ...)                                                                 \
    namespace {                                                                                              \
    struct PluginOfThisFile final : Quillmere::PluginOf<__VA_ARGS__> {                                       \
        PluginOfThisFile() : PluginOf(name, version) {}                                                      \
    };                                                                                                       \
    }                                                                                                        \
    QUILLMERE_PLUGIN_CLASS(PluginOfThisFile)
