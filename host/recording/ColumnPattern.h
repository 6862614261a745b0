// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Whether a name fits a pattern, in which `*` stands for anything: `acc*`. Case doesn't count. [any]
QUILLMERE_API bool getFitsPattern(std::string_view name, std::string_view pattern);

/// The columns that fit a pattern, by their axes: x, y, z, or w, x, y, z for a quaternion. The axis is the
/// one letter in which their names differ, wherever the columns stand. A single one needs none. Empty where
/// none fits, and where several do whose names don't differ so. [any]
QUILLMERE_API std::vector<std::size_t> findByPattern(const std::vector<std::string>& names,
                                                     std::string_view pattern);

/// Those that fit, as they stand. [any]
QUILLMERE_API std::vector<std::string> namesThatFit(const std::vector<std::string>& names,
                                                    std::string_view pattern);

} // namespace Quillmere::Host
