// SPDX-License-Identifier: MIT
#include "tests/plugin/LoadedPlugin.h"

#include <dlfcn.h>

#include <stdexcept>

namespace {
template <class Function>
Function find(void* handle, const char* name) {
    void* const address = ::dlsym(handle, name);
    if (address == nullptr) throw std::runtime_error(std::string("the plug-in has no ") + name);
    return reinterpret_cast<Function>(address);
}

void* open(const char* path) {
    void* const handle = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(::dlerror());
    return handle;
}
} // namespace

LoadedPlugin::LoadedPlugin()
    : handle(open(PLUGIN_FILE)), startPlugin(find<void (*)()>(handle, "dllStartPlugin")),
      stopPlugin(find<void (*)()>(handle, "dllStopPlugin")),
      getVersion(find<const char* (*)()>(handle, "dllGetQuillmereVersion")) {}

LoadedPlugin::~LoadedPlugin() {
    stopPlugin();
    ::dlclose(handle);
}
