// SPDX-License-Identifier: MIT
#include "host/plugins/PluginLibrary.h"

#include "framework/core/FlowManager.h"
#include "framework/core/Version.h"

#include <dlfcn.h>

#include <filesystem>
#include <map>
#include <string_view>

namespace Quillmere::Host {

namespace {

/// The plug-ins that are open, by path. A plug-in has one start and one stop, however many ask for it.
std::map<std::string, std::weak_ptr<PluginLibrary>>& openLibraries() {
    static std::map<std::string, std::weak_ptr<PluginLibrary>> libraries;
    return libraries;
}

const std::vector<Core::AbstractFilterFactory*>& installedFactories() {
    return Core::FlowManager::instance().getPluginManager().getFactories();
}

/// Why the last call of the dynamic linker failed, without the path that it repeats.
std::string linkerMessage(const std::string& path) {
    const char* message = ::dlerror();
    const std::string text = message == nullptr ? "unknown reason" : message;
    return text.starts_with(path + ": ") ? text.substr(path.size() + 2) : text;
}

} // namespace

std::shared_ptr<PluginLibrary> PluginLibrary::open(const std::string& path) {
    std::error_code error;
    const std::filesystem::path resolved = std::filesystem::canonical(path, error);
    if (error)
        throw PluginException(path + ": found no such file; expected a plug-in (" + error.message() + ")");
    std::weak_ptr<PluginLibrary>& known = openLibraries()[resolved.string()];
    if (std::shared_ptr<PluginLibrary> library = known.lock()) return library;
    std::shared_ptr<PluginLibrary> library(new PluginLibrary(resolved.string()));
    library->start();
    known = library;
    return library;
}

PluginLibrary::PluginLibrary(const std::string& filePath)
    : path(filePath), handle(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle == nullptr)
        throw PluginException(path + ": found no shared object that can be opened (" + linkerMessage(path) +
                              "); expected a plug-in");
}

PluginLibrary::~PluginLibrary() {
    if (stop != nullptr) stop();
    ::dlclose(handle);
}

void PluginLibrary::start() {
    const auto version = reinterpret_cast<VersionPoint>(requireSymbol("dllGetQuillmereVersion"));
    const auto begin = reinterpret_cast<EntryPoint>(requireSymbol("dllStartPlugin"));
    const auto end = reinterpret_cast<EntryPoint>(requireSymbol("dllStopPlugin"));
    const char* const found = version();
    if (found == nullptr || std::string_view(found) != Core::kFrameworkVersion)
        throw PluginException(path + ": found a plug-in for framework version " +
                              (found == nullptr ? "none" : found) + "; expected " +
                              std::string(Core::kFrameworkVersion));
    const std::size_t before = installedFactories().size();
    stop = end; // also after a start that fails midway: the plug-in has its own record of how far it came
    begin();
    factories.assign(installedFactories().begin() + static_cast<std::ptrdiff_t>(before),
                     installedFactories().end());
}

void* PluginLibrary::requireSymbol(const char* name) const {
    void* const symbol = ::dlsym(handle, name);
    if (symbol == nullptr)
        throw PluginException(path + ": found a shared object without '" + name + "'; expected a plug-in");
    return symbol;
}

void BlockDeleter::operator()(Core::Filter* block) const {
    if (factory != nullptr)
        factory->destroy(block);
    else
        delete block;
}

} // namespace Quillmere::Host
