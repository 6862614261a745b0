// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Lines that a shell, and whoever starts commands from a file, reads as we do.
namespace Quillmere::Host {

/// A word as it may stand in a command: as it is, or between single quotes. [any]
QUILLMERE_API std::string shellWord(std::string_view word);
/// Words with a blank between them. [any]
QUILLMERE_API std::string shellLine(const std::vector<std::string>& words);

/// The words of a line: blanks part them, quotes of both kinds and backslashes keep what is special.
/// Nothing is expanded. Nothing for a quote that isn't closed. [any]
QUILLMERE_API std::optional<std::vector<std::string>> splitShellLine(std::string_view line);

} // namespace Quillmere::Host
