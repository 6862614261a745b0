// SPDX-License-Identifier: MIT
#include "host/text/Json.h"

#include "host/text/Printable.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Quillmere::Host::Json {

namespace {
void appendIndented(Text& to, const Text& value) {
    for (const char letter : value) {
        to += letter;
        if (letter == '\n') to += "  "; // between values only: inside a text it is written as \n
    }
}

Text bracketed(const std::vector<Text>& values, char open, char close) {
    if (values.empty()) return {open, close};
    Text whole(1, open);
    for (const Text& value : values) {
        whole += whole.size() == 1 ? "\n  " : ",\n  ";
        appendIndented(whole, value);
    }
    return whole + '\n' + close;
}
} // namespace

Text text(std::string_view value) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    Text quoted = "\"";
    while (!value.empty()) {
        const std::size_t length = lengthOfCharacter(value);
        const auto code = static_cast<unsigned char>(value.front());
        if (length == 0) // of no character in UTF-8, which JSON is
            quoted += "\\ufffd";
        else if (code == '"' || code == '\\')
            quoted += {'\\', value.front()};
        else if (code < 0x20)
            quoted += {'\\', 'u', '0', '0', kDigits[code / 16], kDigits[code % 16]};
        else
            quoted += value.substr(0, length);
        value.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return quoted + '"';
}

Text number(double value) {
    if (!std::isfinite(value)) return null();
    const Text digits = shortestText(value);
    return digits.find_first_of(".e") == Text::npos ? digits + ".0" : digits;
}

Text flag(bool value) {
    return value ? "true" : "false";
}

Text list(const std::vector<Text>& values) {
    return bracketed(values, '[', ']');
}

Text object(const Members& members) {
    std::vector<Text> lines;
    for (const auto& [name, value] : members)
        lines.push_back(text(name) + ": " + value);
    return bracketed(lines, '{', '}');
}

Text listOfTexts(const std::vector<std::string>& values) {
    std::vector<Text> texts;
    for (const std::string& value : values)
        texts.push_back(text(value));
    return list(texts);
}

} // namespace Quillmere::Host::Json
