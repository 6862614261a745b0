// SPDX-License-Identifier: MIT
#include "host/description/GraphDescription.h"

#include "host/description/GraphReader.h"

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
    const auto found = blockIndex.find(id);
    return found == blockIndex.end() ? nullptr : &blocks[found->second];
}

const GraphDescription::Layout* GraphDescription::findLayout(const std::string& id) const {
    const auto found = layoutIndex.find(id);
    return found == layoutIndex.end() ? nullptr : &layouts[found->second];
}

void GraphDescription::add(Block block) {
    blockIndex.emplace(block.id, blocks.size());
    blocks.push_back(std::move(block));
}

void GraphDescription::add(Layout layout) {
    layoutIndex.emplace(layout.id, layouts.size());
    layouts.push_back(std::move(layout));
}

} // namespace Quillmere::Host
