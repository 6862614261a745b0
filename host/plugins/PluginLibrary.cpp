// SPDX-License-Identifier: MIT
#include "host/plugins/PluginLibrary.h"

#include "framework/core/FlowManager.h"
#include "framework/core/Version.h"
#include "host/plugins/PluginPlaces.h"
#include "host/text/CaughtText.h"
#include "host/text/Complaint.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string_view>
#include <utility>

namespace Quillmere::Host {

namespace {

/// The plug-ins that are open, by path. A plug-in has one start and one stop, however many ask for it.
std::map<std::string, std::weak_ptr<PluginLibrary>>& openLibraries() {
    static std::map<std::string, std::weak_ptr<PluginLibrary>> libraries;
    return libraries;
}

/// Plug-ins are opened and stopped in one thread; a block's file is asked for in any.
std::mutex& libraryMutex() {
    static std::mutex mutex;
    return mutex;
}

std::vector<std::string>& stopFailures() {
    static std::vector<std::string> failures;
    return failures;
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
    if (error) throw PluginException({{path}, "no such file", "a plug-in (" + error.message() + ")"});
    {
        const std::lock_guard lock(libraryMutex());
        if (std::shared_ptr<PluginLibrary> library = openLibraries()[resolved.string()].lock())
            return library;
    }
    std::shared_ptr<PluginLibrary> library(new PluginLibrary(resolved.string()));
    library->start();
    const std::lock_guard lock(libraryMutex());
    openLibraries()[resolved.string()] = library;
    return library;
}

PluginLibrary::PluginLibrary(const std::string& filePath)
    : path(filePath), handle(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
    if (handle == nullptr)
        throw PluginException(
            {{path}, "no shared object that can be opened (" + linkerMessage(path) + ")", "a plug-in"});
}

PluginLibrary::~PluginLibrary() {
    try {
        if (stop != nullptr) stop();
    } catch (...) {
        try {
            stopFailures().push_back(path +
                                     ": warning: the plug-in raised when it was stopped: " + caughtText());
        } catch (...) {
            // No memory for a warning, and nobody here to be told of that.
        }
    }
    ::dlclose(handle);
}

std::vector<std::string> PluginLibrary::takeStopFailures() {
    return std::exchange(stopFailures(), {});
}

void PluginLibrary::start() {
    const auto version = reinterpret_cast<VersionPoint>(requireSymbol("dllGetQuillmereVersion"));
    const auto begin = reinterpret_cast<EntryPoint>(requireSymbol("dllStartPlugin"));
    const auto end = reinterpret_cast<EntryPoint>(requireSymbol("dllStopPlugin"));
    const char* const found = version();
    if (found == nullptr || std::string_view(found) != Core::kFrameworkVersion)
        throw PluginException(
            {{path},
             std::string("a plug-in for framework version ") + (found == nullptr ? "none" : found),
             std::string(Core::kFrameworkVersion)});
    const std::size_t before = installedFactories().size();
    stop = end; // also after a start that fails midway: the plug-in has its own record of how far it came
    try {
        begin();
    } catch (...) {
        throw PluginException(
            {{path}, "a plug-in that raised when it was started (" + caughtText() + ")", "one that starts"});
    }
    factories.assign(installedFactories().begin() + static_cast<std::ptrdiff_t>(before),
                     installedFactories().end());
    checkTypes();
}

void PluginLibrary::checkTypes() const {
    std::set<std::string> names;
    for (std::size_t i = 0; i < factories.size(); ++i) {
        const char* const name = factories[i]->getTypeName();
        if (name == nullptr || *name == '\0')
            throw PluginException({{path},
                                   "a block type without a name (factory " + std::to_string(i + 1) + " of " +
                                       std::to_string(factories.size()) + ")",
                                   "a name for each"});
        if (!names.insert(name).second)
            throw PluginException(
                {{path}, std::string("two block types '") + name + "'", "a name of its own for each"});
    }
}

void* PluginLibrary::requireSymbol(const char* name) const {
    void* const symbol = ::dlsym(handle, name);
    if (symbol == nullptr)
        throw PluginException({{path}, std::string("a shared object without '") + name + "'", "a plug-in"});
    return symbol;
}

std::string pluginFileOf(const Core::Filter& block) {
    // A block's first word is the address of its class's table of virtual functions, which lies in the file.
    const void* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(&block), sizeof table);
    Dl_info info;
    if (::dladdr(table, &info) == 0 || info.dli_fname == nullptr) return {};
    const std::filesystem::path name = std::filesystem::path(info.dli_fname).filename();
    if (std::find(kOwnPluginFiles.begin(), kOwnPluginFiles.end(), name) != kOwnPluginFiles.end()) return {};
    const std::lock_guard lock(libraryMutex());
    return openLibraries().contains(info.dli_fname) ? info.dli_fname : "";
}

std::string blockText(const Core::Filter& block) {
    const std::string file = pluginFileOf(block);
    return "'" + block.getName() + "' (" + block.getTypeName() + (file.empty() ? "" : " of " + file) + ")";
}

void BlockDeleter::operator()(Core::Filter* block) const {
    if (factory != nullptr)
        factory->destroy(block);
    else
        delete block;
}

} // namespace Quillmere::Host
