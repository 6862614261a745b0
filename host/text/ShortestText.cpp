// SPDX-License-Identifier: MIT
#include "host/text/ShortestText.h"

#include <charconv>

namespace Quillmere::Host {

std::string shortestText(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

} // namespace Quillmere::Host
