// SPDX-License-Identifier: MIT
#include "host/ends/ColumnName.h"

#include <algorithm>

namespace Quillmere::Host {

bool getIsColumnName(std::string_view name) {
    const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
    return !name.empty() && std::none_of(name.begin(), name.end(), isControl);
}

} // namespace Quillmere::Host
