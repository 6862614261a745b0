// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace Quillmere::Host {

/// The names of a block's pins or settings, for messages that list what there is.
template <class Members>
std::vector<std::string> namesOf(const Members& members) {
    std::vector<std::string> names;
    for (const auto* const member : members)
        names.push_back(member->getName());
    return names;
}

/// What is expected in place of a member of a block that has none of the kind.
inline constexpr const char* kOneThatHasSome = "a block that has some";

} // namespace Quillmere::Host
