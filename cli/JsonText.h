// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// JSON as text, put together from the inside out: each value is its own text. A tree of values would need memory when it ends,
/// too, which is where there must be no failure.
namespace Cli::Json {

using Text = std::string;
using Members = std::vector<std::pair<std::string, Text>>;

Text text(std::string_view value);
/// Reads back to the same bits; what isn't finite is null, since JSON has no word for it.
Text number(double value);
Text flag(bool value);
inline Text null() {
    return "null";
}

/// One value or member to a line, indented by two.
Text list(const std::vector<Text>& values);
Text object(const Members& members);

/// A text for each.
Text listOfTexts(const std::vector<std::string>& values);

} // namespace Cli::Json
