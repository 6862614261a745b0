// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <string_view>

namespace Quillmere::Host {

/// The first line of a text that looks like a table of numbers, as recordings are: a header and a row with as
/// many cells, half of them numbers at least. Empty for every other text. Comments with `#` may stand in
/// front.
QUILLMERE_API std::string_view tableHeader(std::string_view text);

} // namespace Quillmere::Host
