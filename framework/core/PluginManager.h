// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Plugin.h"

#include <string>
#include <vector>

namespace Quillmere::Core {

/// The registry of plug-ins and of the factories that they offer. Plug-ins are not owned.
/// Used from one thread at a time. [setup]
class QUILLMERE_API PluginManager {
public:
    /// Registers `plugin`, then calls its `install`. Raises `Poco::ExistsException` for one that is
    /// registered.
    void installPlugin(Plugin& plugin);
    /// The reverse; a plug-in that isn't registered is passed over. Afterwards the caller may delete it.
    void uninstallPlugin(Plugin& plugin);

    const std::vector<Plugin*>& getPlugins() const { return plugins; }

    /// The first installed factory of that type name; null when unknown.
    AbstractFilterFactory* findFactory(const std::string& typeName) const;
    /// In order of installation.
    const std::vector<AbstractFilterFactory*>& getFactories() const { return factories; }

    /// What a plug-in calls in its `install` and `uninstall`.
    void addFactory(AbstractFilterFactory& factory);
    void removeFactory(AbstractFilterFactory& factory);

private:
    // The flow manager's own: a plug-in installs its factories there, so another registry would stay empty.
    friend class FlowManager;
    PluginManager() = default;
    PluginManager(const PluginManager&) = delete;
    PluginManager& operator=(const PluginManager&) = delete;

    std::vector<Plugin*> plugins;
    std::vector<AbstractFilterFactory*> factories;
};

} // namespace Quillmere::Core
