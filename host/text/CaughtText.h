// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <exception>
#include <string>

namespace Poco {
class Exception;
}

namespace Quillmere::Host {

/// How much a message repeats of what a plug-in wrote.
inline constexpr std::size_t kLongestReason = 2000;

/// The words of what a `catch` has caught, printable: plug-ins raise exceptions of their own types, some
/// without a text, and some things that are none. A failed allocation isn't the plug-in's word, and is raised
/// again. Requires: called inside a `catch`. [any]
QUILLMERE_API std::string caughtText();

/// The same of an exception that is at hand; a failed allocation is `out of memory`. [any]
QUILLMERE_API std::string wordsOf(const std::exception& exception);

/// What a setting says that refuses a value: the message alone, or the exception's name where there is none,
/// as they are. [any]
QUILLMERE_API std::string messageOf(const Poco::Exception& exception);

} // namespace Quillmere::Host
