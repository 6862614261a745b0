// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Picture.h"

#include <cstddef>
#include <string>

namespace Quillmere::Host {

/// The picture as lines of text, at most so many characters wide: a strip for each curve between its smallest
/// and its largest value, in dots of braille, or in plain ASCII without `isUtf8`. Requires: a width of 40 at
/// least. [any]
QUILLMERE_API std::string pictureAsText(const Picture& picture, std::size_t width, bool isUtf8);

} // namespace Quillmere::Host
