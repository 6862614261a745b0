// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// What a recording is that is no table in our form, so that a message can name it.
struct Dialect {
    std::string found;    ///< `a file compressed by gzip`; empty when it may be a table.
    std::string expected; ///< `the table in it, unpacked`
};

/// What the first bytes of a file say.
QUILLMERE_API Dialect dialectOf(std::string_view head);

/// What the header row says when a column isn't in it: how it would have to be separated to have it, as in
/// `';'`, or nothing. `columns` are what commas make of it.
QUILLMERE_API std::string separatorOf(const std::vector<std::string>& columns, const std::string& wanted);

} // namespace Quillmere::Host
