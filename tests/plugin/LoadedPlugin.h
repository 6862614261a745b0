// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <string>

/// The built plug-in, opened as a host opens it. Closing it stops it first.
class LoadedPlugin {
public:
    LoadedPlugin();
    ~LoadedPlugin();
    LoadedPlugin(const LoadedPlugin&) = delete;
    LoadedPlugin& operator=(const LoadedPlugin&) = delete;

    void start() const { startPlugin(); }
    void stop() const { stopPlugin(); }
    std::string version() const { return getVersion(); }

private:
    void* handle;
    void (*startPlugin)();
    void (*stopPlugin)();
    const char* (*getVersion)();
};

/// The process's registry of plug-ins.
inline Quillmere::Core::PluginManager& registry() {
    return Quillmere::Core::FlowManager::instance().getPluginManager();
}
