// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// JSON as text, put together from the inside out: each value is its own text. A tree of values would need
/// memory when it ends, too, which is where there must be no failure.
namespace Quillmere::Host::Json {

using Text = std::string;
using Members = std::vector<std::pair<std::string, Text>>;

/// What is no UTF-8 in it becomes U+FFFD, a byte each.
QUILLMERE_API Text text(std::string_view value);
/// Reads back to the same bits; what isn't finite is null, since JSON has no word for it.
QUILLMERE_API Text number(double value);
QUILLMERE_API Text flag(bool value);
inline Text null() {
    return "null";
}

/// One value or member to a line, indented by two.
QUILLMERE_API Text list(const std::vector<Text>& values);
QUILLMERE_API Text object(const Members& members);

/// A text for each.
QUILLMERE_API Text listOfTexts(const std::vector<std::string>& values);

} // namespace Quillmere::Host::Json
