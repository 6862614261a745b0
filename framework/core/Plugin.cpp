// SPDX-License-Identifier: MIT
#include "framework/core/Plugin.h"

#include "framework/core/FlowManager.h"

namespace Quillmere::Core {

Plugin::~Plugin() = default;

DefaultPlugin::DefaultPlugin(const std::string& name, const std::string& versionText)
    : Plugin(name), version(versionText) {}

DefaultPlugin::~DefaultPlugin() {
    for (AbstractFilterFactory* const factory : factories)
        delete factory;
}

void DefaultPlugin::install() {
    for (AbstractFilterFactory* const factory : factories)
        FlowManager::instance().getPluginManager().addFactory(*factory);
}

void DefaultPlugin::uninstall() {
    for (AbstractFilterFactory* const factory : factories)
        FlowManager::instance().getPluginManager().removeFactory(*factory);
}

void DefaultPlugin::addFactory(std::unique_ptr<AbstractFilterFactory> factory) {
    factories.push_back(factory.get());
    static_cast<void>(factory.release());
}

} // namespace Quillmere::Core
