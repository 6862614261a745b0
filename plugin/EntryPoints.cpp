// SPDX-License-Identifier: MIT
#include "plugin/EntryPoints.h"

#include "framework/core/FlowManager.h"
#include "framework/core/Version.h"
#include "plugin/VelmarindPlugin.h"

namespace {
VelmarindPlugin* gPlugin = nullptr;
} // namespace

void dllStartPlugin() {
    if (gPlugin != nullptr) return;
    gPlugin = new VelmarindPlugin();
    Quillmere::Core::FlowManager::instance().getPluginManager().installPlugin(*gPlugin);
}

void dllStopPlugin() {
    if (gPlugin == nullptr) return;
    Quillmere::Core::FlowManager::instance().getPluginManager().uninstallPlugin(*gPlugin);
    delete gPlugin;
    gPlugin = nullptr;
}

const char* dllGetQuillmereVersion() {
    return Quillmere::Core::kFrameworkVersion;
}
