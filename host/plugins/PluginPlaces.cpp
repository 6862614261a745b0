// SPDX-License-Identifier: MIT
#include "host/plugins/PluginPlaces.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace Quillmere::Host {

namespace {
namespace fs = std::filesystem;

fs::path folderOfThisLibrary() {
    Dl_info info;
    if (::dladdr(reinterpret_cast<const void*>(&findPluginFile), &info) == 0) return {};
    std::error_code error;
    return fs::canonical(info.dli_fname, error).parent_path();
}

/// The file in the first of the folders that has it; empty when none has.
std::string findIn(const std::vector<fs::path>& folders, const std::string& file) {
    for (const fs::path& folder : folders) {
        std::error_code error;
        const fs::path candidate = fs::canonical(folder / file, error);
        if (!error) return candidate.string();
    }
    return {};
}
} // namespace

std::string findPluginBeside(const std::string& program) {
    return findPluginBeside(program, kOwnPluginFile);
}

std::string findPluginBeside(const std::string& program, const std::string& file) {
    const fs::path folder = fs::path(program).parent_path();
    // Beside the program; where a build puts it; where an installation puts it.
    return findIn({folder, folder / "../lib", folder / "../lib/velmarind", folder / QUILLMERE_LIBRARY_FOLDER},
                  file);
}

std::string findPluginFile(const std::string& name, const BlockCatalogue& catalogue) {
    const std::string file = "lib" + name + ".so";
    std::vector<fs::path> folders;
    for (const std::string& loaded : catalogue.getPluginPaths()) {
        if (fs::path(loaded).filename() == file) return loaded;
        folders.push_back(fs::path(loaded).parent_path());
    }
    folders.push_back(folderOfThisLibrary());
    return findIn(folders, file);
}

} // namespace Quillmere::Host
