// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/Value.h"

#include <string>

namespace Quillmere::Host {

/// The YAML of a map, which reads back equal: a line for each key, and for each item of a list of lists or
/// maps; what is short stands in brackets and braces. Ends with a line end.
QUILLMERE_API std::string yamlText(const Value& map);

/// A value in one line, for people: what a number was made of stands behind it, `0.1 (5 Hz)`.
QUILLMERE_API std::string lineText(const Value& value);

/// A text as a name stands in a file: without quotes where no YAML reader takes it for anything else.
QUILLMERE_API Value nameValue(const std::string& text);

} // namespace Quillmere::Host
