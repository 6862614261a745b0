// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/HostException.h"

namespace Cli {

/// What a command got wrong in its own arguments.
class UsageError final : public Quillmere::Host::HostException {
public:
    using HostException::HostException;
};

} // namespace Cli
