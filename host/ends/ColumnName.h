// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace Quillmere::Host {

/// Whether a name can stand in a table's header, which is one line.
QUILLMERE_API bool getIsColumnName(std::string_view name);

/// A column of a pin whose columns nobody named: `accel[0]` and so on.
struct CountedName {
    std::string_view pin;
    std::size_t count = 0;
};

/// What a name counts; nothing when it doesn't. A unit doesn't belong to it.
QUILLMERE_API std::optional<CountedName> countedNameOf(std::string_view name);

} // namespace Quillmere::Host
