// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace Quillmere::Host {

/// Where in a list the thing of an id is, for who asks for many.
class IdIndex {
public:
    IdIndex() = default;
    /// Of several with one id the first counts. Requires: `things` stay as they are.
    template <class Things>
    explicit IdIndex(const Things& things) {
        for (std::size_t i = 0; i < things.size(); ++i)
            places.try_emplace(things[i].id, i);
    }

    /// Whether the id is a new one.
    bool add(const std::string& id, std::size_t place) { return places.try_emplace(id, place).second; }
    /// Null for an id that there isn't.
    const std::size_t* find(const std::string& id) const {
        const auto found = places.find(id);
        return found == places.end() ? nullptr : &found->second;
    }

private:
    std::unordered_map<std::string, std::size_t> places;
};

} // namespace Quillmere::Host
