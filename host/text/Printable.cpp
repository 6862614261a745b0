// SPDX-License-Identifier: MIT
#include "host/text/Printable.h"

#include <array>
#include <cstdint>

namespace Quillmere::Host {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// What terminals act on instead of showing it, or what can't be seen and changes how its neighbours look.
constexpr std::array kUnprintable{
    Range{0x00, 0x1F},       // control characters
    Range{0x7F, 0x9F},       // and those of the upper half
    Range{0x200B, 0x200F},   // without a width; marks of direction
    Range{0x2028, 0x202E},   // ends of lines and paragraphs; embeddings and overrides of direction
    Range{0x2060, 0x206F},   // invisible operators; isolates of direction
    Range{0xFEFF, 0xFEFF},   // byte order mark
    Range{0xFFF9, 0xFFFB},   // annotations
    Range{0xE0000, 0xE007F}, // tags
};

bool isPrintable(char32_t character) {
    for (const Range& range : kUnprintable)
        if (character >= range.first && character <= range.last) return false;
    return true;
}

/// What `lengthOfCharacter` tells, and the character.
std::size_t lengthOfCharacter(std::string_view text, char32_t& character) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    character = lead;
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    character = lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
        character = (character << 6U) | (byte(i) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < kSmallest[length] || character > 0x10FFFF || isSurrogate ? 0 : length;
}

std::string escaped(unsigned char byte) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    switch (byte) {
    case '\n':
        return "\\n";
    case '\t':
        return "\\t";
    case '\r':
        return "\\r";
    default:
        return {'\\', 'x', kDigits[byte / 16U], kDigits[byte % 16U]};
    }
}

/// The character at the front of `text`, as it is shown, and taken from it.
std::string takePiece(std::string_view& text) {
    char32_t character = 0;
    const std::size_t length = lengthOfCharacter(text, character);
    const std::string_view bytes = text.substr(0, length == 0 ? 1 : length);
    text.remove_prefix(bytes.size());
    if (length > 0 && isPrintable(character)) return std::string(bytes);
    std::string piece;
    for (const char byte : bytes)
        piece += escaped(static_cast<unsigned char>(byte));
    return piece;
}

} // namespace

std::size_t lengthOfCharacter(std::string_view text) {
    char32_t character = 0;
    return lengthOfCharacter(text, character);
}

std::string printable(std::string_view text, std::size_t longest) {
    std::string shown;
    while (!text.empty()) {
        const std::string piece = takePiece(text);
        if (shown.size() + piece.size() > longest) return shown + "...";
        shown += piece;
    }
    return shown;
}

} // namespace Quillmere::Host
