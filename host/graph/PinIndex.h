// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/PinManager.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// Finds pins of blocks by name while a graph is linked: a recording may have a hundred thousand columns,
/// each a pin with a connection of its own. Requires: the blocks that have been asked for get no more such
/// pins.
template <class SomePin>
class PinIndex {
public:
    /// The first of that name among `pins`, which are those of `block`; null for none.
    SomePin* find(const Core::PinManager& block, const std::vector<SomePin*>& pins, const std::string& name) {
        const auto [names, isNew] = blocks.try_emplace(&block);
        if (isNew)
            for (SomePin* const pin : pins)
                names->second.try_emplace(pin->getName(), pin);
        const auto found = names->second.find(name);
        return found == names->second.end() ? nullptr : found->second;
    }

private:
    std::unordered_map<const Core::PinManager*, std::unordered_map<std::string_view, SomePin*>> blocks;
};

} // namespace Quillmere::Host
