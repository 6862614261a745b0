// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <stdexcept>

namespace Quillmere::Host {

/// A recording that cannot be read or a result that cannot be written. The text is for the user: which file, where in
/// it, what was found and what was expected.
class QUILLMERE_API RecordingException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Quillmere::Host
