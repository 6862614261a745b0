// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>

namespace Quillmere::Host {

/// How much a message repeats of what a plug-in wrote.
inline constexpr std::size_t kLongestReason = 2000;

/// The words of what a `catch` has caught, printable: plug-ins raise exceptions of their own types, some without a text, and
/// some things that are none. A failed allocation isn't the plug-in's word, and is raised again.
/// Requires: called inside a `catch`. [any]
QUILLMERE_API std::string caughtText();

} // namespace Quillmere::Host
