// SPDX-License-Identifier: MIT
#include "host/graph/GraphPlugins.h"

#include "host/plugins/PluginPlaces.h"

#include <filesystem>

namespace Quillmere::Host {

namespace {
constexpr const char* kExpected = "a plug-in's file, its path relative to the graph's folder";

/// `VelmarindEveryday` is a name, `libOwn.so` and `./own` are paths.
bool getIsName(const std::string& plugin) {
    return plugin.find('/') == std::string::npos && !plugin.ends_with(".so");
}

void loadByName(const GraphDescription::Plugin& plugin, BlockCatalogue& catalogue, Complaints& complaints) {
    const std::string file = findPluginFile(plugin.path, catalogue);
    if (!file.empty()) return catalogue.load(file);
    complaints.add(plugin.where,
                   "no plug-in '" + plugin.path + "', since no lib" + plugin.path +
                       ".so lies beside the others",
                   std::string(kExpected) + ", or the name of one that lies there");
}
} // namespace

void loadPlugins(const GraphDescription& description, BlockCatalogue& catalogue, Complaints& complaints) {
    for (const GraphDescription::Plugin& plugin : description.plugins) {
        try {
            if (getIsName(plugin.path))
                loadByName(plugin, catalogue, complaints);
            else
                catalogue.load((std::filesystem::path(description.getFolder()) / plugin.path).string());
        } catch (const PluginException& exception) {
            complaints.add(plugin.where,
                           std::string("no plug-in that can be used (") + exception.what() + ")", kExpected);
        }
    }
}

} // namespace Quillmere::Host
