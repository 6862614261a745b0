// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <stdexcept>

namespace Quillmere::Host {

/// What a live run refuses to do, or a setting to take. The text says what was found and what was expected, or is the
/// setting's own. Nothing has changed, unless the block's handler raised it, which runs behind the change.
class QUILLMERE_API ControlException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace Quillmere::Host
