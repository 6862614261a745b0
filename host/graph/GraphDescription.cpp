// SPDX-License-Identifier: MIT
#include "host/graph/GraphDescription.h"

#include "host/graph/GraphReader.h"

#include <algorithm>
#include <filesystem>

namespace Quillmere::Host {

GraphDescription GraphDescription::read(const std::string& path, const GraphChanges& changes,
                                        Complaints& complaints) {
    return GraphReader(path, complaints).read(changes);
}

std::string GraphDescription::getFolder() const {
    return std::filesystem::path(path).parent_path().string();
}

const GraphDescription::Block* GraphDescription::findBlock(const std::string& id) const {
    const auto found =
        std::find_if(blocks.begin(), blocks.end(), [&](const Block& block) { return block.id == id; });
    return found == blocks.end() ? nullptr : &*found;
}

const GraphDescription::Layout* GraphDescription::findLayout(const std::string& id) const {
    const auto found =
        std::find_if(layouts.begin(), layouts.end(), [&](const Layout& layout) { return layout.id == id; });
    return found == layouts.end() ? nullptr : &*found;
}

} // namespace Quillmere::Host
