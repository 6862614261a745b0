// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstdint>

namespace Quillmere::Host {

/// Lets the peak of this process's memory begin anew, where the system can do that. [any]
QUILLMERE_API void restartPeakMemory();
/// The most memory that this process has had since then, in bytes. [any]
QUILLMERE_API std::uint64_t getPeakMemory();

} // namespace Quillmere::Host
