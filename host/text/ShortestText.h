// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>

namespace Quillmere::Host {

/// A number in the shortest text that reads back to the same bits.
QUILLMERE_API std::string shortestText(double number);

} // namespace Quillmere::Host
