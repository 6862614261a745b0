// SPDX-License-Identifier: MIT
#include "host/graph/GraphPlugins.h"

#include <filesystem>

namespace Quillmere::Host {

void loadPlugins(const GraphDescription& description, BlockCatalogue& catalogue, Complaints& complaints) {
    for (const GraphDescription::Plugin& plugin : description.plugins) {
        try {
            catalogue.load((std::filesystem::path(description.getFolder()) / plugin.path).string());
        } catch (const PluginException& exception) {
            complaints.add(plugin.where,
                           std::string("no plug-in that can be used (") + exception.what() + ")",
                           "a plug-in's file, its path relative to the graph's folder");
        }
    }
}

} // namespace Quillmere::Host
