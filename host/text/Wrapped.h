// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// How wide what people read in a terminal may be.
inline constexpr std::size_t kTextColumns = 100;

/// `text` in lines of at most `width` letters, broken at blanks; a longer word has a line of its own. The
/// text's line breaks count as blanks, but an empty line parts paragraphs, and a line that begins with a
/// blank, as one of a table does, stays as it is. Nothing for an empty text. Requires: `width` above 0.
QUILLMERE_API std::vector<std::string> wrapped(std::string_view text, std::size_t width);

/// How many letters a text in UTF-8 has.
QUILLMERE_API std::size_t lettersOf(std::string_view text);

} // namespace Quillmere::Host
