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

bool GraphDescription::getIsId(std::string_view text) {
    const auto isIdLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-';
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), isIdLetter);
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
