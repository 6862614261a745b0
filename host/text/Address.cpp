// SPDX-License-Identifier: MIT
#include "host/text/Address.h"

#include <utility>

namespace Quillmere::Host {

Address::Address(std::string_view text) {
    const std::size_t dot = text.find('.');
    hasMember = dot != std::string_view::npos;
    block = text.substr(0, dot);
    if (hasMember) member = text.substr(dot + 1);
}

Address::Address(std::string blockId, std::string memberName)
    : block(std::move(blockId)), member(std::move(memberName)), hasMember(true) {}

std::string Address::getText() const {
    return hasMember ? block + "." + member : block;
}

} // namespace Quillmere::Host
