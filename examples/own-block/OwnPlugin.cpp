// SPDX-License-Identifier: MIT
#include "FilterAbsolute.h"

#include "framework/core/Version.h"
#include "plugin/EntryPoints.h"
#include "plugin/FilterFactory.h"

namespace {
using namespace Quillmere::Core;

class OwnPlugin final : public DefaultPlugin {
public:
    OwnPlugin() : DefaultPlugin("OwnBlock", "1.0.0") {
        metaData.pluginName = getName();
        metaData.pluginVersion = getVersion();
        metaData.hostVersion = dllGetQuillmereVersion();
        addFactory(
            std::make_unique<FilterFactory<FilterAbsolute>>(getName(), ComponentVersion(getVersion())));
    }
};

std::unique_ptr<OwnPlugin> plugin;
} // namespace

void dllStartPlugin() {
    if (plugin != nullptr) return;
    plugin = std::make_unique<OwnPlugin>();
    FlowManager::instance().getPluginManager().installPlugin(*plugin);
}

void dllStopPlugin() {
    if (plugin == nullptr) return;
    FlowManager::instance().getPluginManager().uninstallPlugin(*plugin);
    plugin = nullptr;
}

const char* dllGetQuillmereVersion() {
    return kFrameworkVersion;
}
