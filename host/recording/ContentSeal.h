// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace Quillmere::Host {

/// Tells in a file whether it is as it was written: `quillmere-seal:` and sixteen digits, which are a hash of
/// everything from four bytes behind them on. So a picture that somebody has worked on isn't taken for one of
/// ours, although it begins like one; it needs no attribute of a file system, and copies have it, too. The
/// four bytes may be what closes a comment, ` -->`, or the checksum of a chunk.
///
/// It keeps nobody from making one: it is no signature.
namespace ContentSeal {

/// Of a file that isn't whole yet.
QUILLMERE_API std::string getBlank();

/// Fills the first blank seal in. Nothing happens without one.
QUILLMERE_API void close(std::string& content);

/// Whether the first seal in a file is that of another content; false of a file without one. `read` gives
/// what is there from a place on, at most so many bytes, and nothing at the end.
QUILLMERE_API bool getIsBroken(const std::function<std::string(std::size_t place, std::size_t count)>& read);

} // namespace ContentSeal

} // namespace Quillmere::Host
