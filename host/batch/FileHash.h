// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Quillmere::Host {

/// What tells whether a file is the one that it was.
struct FileFacts {
    std::uint64_t bytes = 0;
    std::int64_t modified = 0; ///< Nanoseconds since 1970, of the last change.

    bool operator==(const FileFacts&) const = default;
};

/// Nothing for what isn't there or is no regular file. [any]
QUILLMERE_API std::optional<FileFacts> factsOf(const std::string& path);

/// The SHA-256 of a file in hexadecimal, as `sha256sum` prints it; empty for one that can't be read. [any]
QUILLMERE_API std::string hashOfFile(const std::string& path);

} // namespace Quillmere::Host
