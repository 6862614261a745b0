// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <charconv>
#include <cstddef>

/// Numbers to text and back as `std::to_chars` and `std::from_chars` do it, in a fraction of their time:
/// recordings are nothing but numbers.
namespace Quillmere::Host {

/// Bytes that `numberToText` may touch from `to` on; the text itself takes 24 at most.
inline constexpr std::size_t kNumberRoom = 40;

/// Writes what `std::to_chars(to, ..., value)` writes, to the byte, and returns the end: the shortest text
/// that reads back to the same bits, in plain notation unless the other is shorter. Requires: room for
/// `kNumberRoom` bytes, what follows the text in them is lost. [any]
QUILLMERE_API char* numberToText(char* to, double value);

/// Reads what `std::from_chars(begin, end, value)` reads, with the same bits, end and error. [any]
QUILLMERE_API std::from_chars_result textToNumber(const char* begin, const char* end, double& value);

} // namespace Quillmere::Host
