// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <string_view>

namespace Quillmere::Host {

/// `block.member`: a pin, a setting or a command of a block. It is split at the first dot: ids have none, the
/// literal names of members may.
struct Address {
    /// A text without a dot is a block's id.
    explicit QUILLMERE_API Address(std::string_view text);
    QUILLMERE_API Address(std::string blockId, std::string memberName);

    std::string block;
    std::string member;     ///< Everything behind the dot.
    bool hasMember = false; ///< Whether there is a dot, be it with nothing behind it.

    /// As it was written.
    QUILLMERE_API std::string getText() const;
    bool operator==(const Address&) const = default;
};

} // namespace Quillmere::Host
