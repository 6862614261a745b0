// SPDX-License-Identifier: MIT
#include "framework/core/PluginManager.h"

#include <Poco/Exception.h>

#include <algorithm>

namespace Quillmere::Core {

void PluginManager::installPlugin(Plugin& plugin) {
    if (std::find(plugins.begin(), plugins.end(), &plugin) != plugins.end())
        throw Poco::ExistsException("Plug-in '" + plugin.getName() + "' is installed");
    plugins.push_back(&plugin);
    plugin.install();
}

void PluginManager::uninstallPlugin(Plugin& plugin) {
    if (std::erase(plugins, &plugin) > 0) plugin.uninstall();
}

AbstractFilterFactory* PluginManager::findFactory(const std::string& typeName) const {
    for (AbstractFilterFactory* const factory : factories)
        if (typeName == factory->getTypeName()) return factory;
    return nullptr;
}

void PluginManager::addFactory(AbstractFilterFactory& factory) {
    factories.push_back(&factory);
}

void PluginManager::removeFactory(AbstractFilterFactory& factory) {
    std::erase(factories, &factory);
}

} // namespace Quillmere::Core
