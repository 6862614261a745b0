// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Quillmere::Host {

/// `text` as it may go into a message and to a terminal: one line, no characters that move the cursor, colour
/// what follows or turn the direction of writing, nothing but UTF-8, and at most `longest` bytes of it,
/// behind which `...` stands for the rest. What isn't printable is written as in a program's text: `\n`,
/// `\t`, `\r`, or `\x1b` for the byte 27; a backslash stays as it is. Requires: `longest` above 0.
QUILLMERE_API std::string printable(std::string_view text, std::size_t longest);

/// How many bytes the character at the front of `text` has; 0 when it is none in UTF-8: a byte out of place,
/// one that is cut, a longer form than needed, half of a surrogate pair or beyond the last. Requires: not
/// empty.
std::size_t lengthOfCharacter(std::string_view text);

/// How much of a name, or of a value that somebody wrote, a message repeats.
inline constexpr std::size_t kLongestName = 80;

} // namespace Quillmere::Host
