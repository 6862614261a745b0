// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

namespace Quillmere::Host {

/// A count and what is counted, for messages: `1 row`, `3 rows`. `several` is for nouns whose plural isn't
/// made with an s, and for what stands behind the noun.
inline std::string counted(std::uint64_t count, const std::string& one, const std::string& several = {}) {
    return std::to_string(count) + " " + (count == 1 ? one : several.empty() ? one + "s" : several);
}

} // namespace Quillmere::Host
