// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string_view>

namespace Quillmere::Host {

/// Whether a name can stand in a table's header, which is one line.
QUILLMERE_API bool getIsColumnName(std::string_view name);

} // namespace Quillmere::Host
