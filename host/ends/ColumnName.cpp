// SPDX-License-Identifier: MIT
#include "host/ends/ColumnName.h"

#include <algorithm>
#include <charconv>

namespace Quillmere::Host {

bool getIsColumnName(std::string_view name) {
    const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; };
    return !name.empty() && std::none_of(name.begin(), name.end(), isControl);
}

std::optional<CountedName> countedNameOf(std::string_view name) {
    const std::size_t bracket = name.rfind('[');
    if (bracket == std::string_view::npos || !name.ends_with(']')) return std::nullopt;
    const std::string_view count = name.substr(bracket + 1, name.size() - bracket - 2);
    CountedName counted{name.substr(0, bracket), 0};
    const auto [end, error] = std::from_chars(count.data(), count.data() + count.size(), counted.count);
    const bool isNumber = error == std::errc() && end == count.data() + count.size();
    const bool isPlain = count == "0" || !count.starts_with('0');
    return isNumber && isPlain ? std::optional(counted) : std::nullopt;
}

} // namespace Quillmere::Host
