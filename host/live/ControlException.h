// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/HostException.h"

namespace Quillmere::Host {

/// What a live run refuses to do, or a setting to take. The text says what was found and what was expected,
/// or is the setting's own. Nothing has changed, unless the block's handler raised it, which runs behind the
/// change.
class QUILLMERE_API ControlException : public HostException {
public:
    using HostException::HostException;
};

} // namespace Quillmere::Host
