// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Quillmere::Host {

/// The path by which graphs and options name standard input, for a source, and standard output, for a sink.
inline constexpr const char* kStandardStream = "-";

inline bool getIsStandardStream(const std::string& path) {
    return path == kStandardStream;
}

} // namespace Quillmere::Host
