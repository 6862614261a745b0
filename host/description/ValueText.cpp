// SPDX-License-Identifier: MIT
#include "host/description/ValueText.h"

#include "host/description/ValueEvents.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

// Written by hand and not by yaml-cpp's emitter: that decides itself what gets quotes, which tell a text from
// a number here, and it replaces bytes that are no UTF-8, which its reader lets pass.

namespace Quillmere::Host {

namespace {
constexpr std::size_t kLongestLine = 110;
constexpr std::size_t kLeastRoom = 40;
/// Readers look that far for the colon behind a key, in characters; longer keys need a mark in front.
constexpr std::size_t kLongestKey = 1000;

/// What makes an unquoted scalar of any text: a tag that means nothing. Only tags of a file's own bring such
/// a text here.
constexpr const char* kUnquoted = "!plain ";

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Made of letters that mean nothing to YAML, and blanks between them.
bool isHarmless(std::string_view text) {
    static constexpr std::string_view kOthers = " _.+/()^=;<-";
    return !text.empty() && text.front() != ' ' && text.back() != ' ' &&
           std::all_of(text.begin(), text.end(), [](char c) {
               return isLetter(c) || isDigit(c) || kOthers.find(c) != std::string_view::npos;
           });
}

/// Words that YAML readers take for something else than a text.
bool isWord(std::string_view text) {
    static constexpr std::array<std::string_view, 9> kWords{"null", "true", "false", "yes", "no",
                                                            "on",   "off",  "nan",   "inf"};
    std::string word(text);
    for (char& c : word)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return std::find(kWords.begin(), kWords.end(), word) != kWords.end();
}

/// Whether a text may stand without quotes where it is a text in any case.
bool isName(std::string_view text) {
    return isHarmless(text) && isLetter(text.front()) && !isWord(text);
}

/// Made of what decimal numbers are made of, with a digit at least.
bool isNumeric(std::string_view text) {
    return text.find_first_not_of("0123456789+-.eE") == std::string_view::npos &&
           std::any_of(text.begin(), text.end(), isDigit);
}

/// Whether the scalar at `place` of a YAML text is one without quotes, and is `text`.
bool getIsPlainIn(const std::string& yaml, std::size_t place, const std::string& text) {
    try {
        const std::vector<ValueEvent> events = valueEvents(yaml, {}, {});
        return events.size() == place + 2 && events[place].kind == ValueEvent::Kind::Scalar &&
               !events[place].isQuoted && events[place].text == text;
    } catch (const ValueRefusal&) {
        return false;
    }
}

/// Whether a text without quotes reads back as it is, in brackets and behind a key.
bool isPlain(const std::string& text) {
    if (isName(text) || isNumeric(text) || (isHarmless(text) && isDigit(text.front()))) return true;
    return getIsPlainIn("[" + text + "]", 1, text) && getIsPlainIn("a: " + text + "\n", 2, text);
}

/// How many bytes from `at` are better not seen, and how they are written: controls beyond ASCII, the line
/// ends of Unicode, and the mark of byte orders.
std::pair<std::size_t, std::string> unseen(std::string_view text, std::size_t at) {
    static constexpr const char* kHex = "0123456789abcdef";
    const auto byte = [&](std::size_t i) {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0u;
    };
    if (byte(0) < 0x20 || byte(0) == 0x7f)
        return {1, std::string("\\x") + kHex[byte(0) / 16] + kHex[byte(0) % 16]};
    if (byte(0) == 0xc2 && byte(1) >= 0x80 && byte(1) < 0xa0)
        return {2, std::string("\\x") + kHex[byte(1) / 16] + kHex[byte(1) % 16]};
    const bool isLineEnd = byte(0) == 0xe2 && byte(1) == 0x80;
    if (isLineEnd && byte(2) == 0xa8) return {3, "\\L"};
    if (isLineEnd && byte(2) == 0xa9) return {3, "\\P"};
    if (byte(0) == 0xef && byte(1) == 0xbb && byte(2) == 0xbf) return {3, "\\uFEFF"};
    return {0, {}};
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (std::size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (c == '"' || c == '\\') {
            result.append("\\").append(1, c);
        } else if (c == '\n' || c == '\t' || c == '\r') {
            result += c == '\n' ? "\\n" : c == '\t' ? "\\t" : "\\r";
        } else if (const auto [bytes, escape] = unseen(text, at); bytes > 0) {
            result += escape;
            at += bytes;
            continue;
        } else {
            result += c;
        }
        ++at;
    }
    return result + "\"";
}

std::string scalarText(const Value& value) {
    if (value.kind == Value::Kind::Null) return "null";
    if (value.isQuoted) return quoted(value.text);
    return isPlain(value.text) ? value.text : kUnquoted + quoted(value.text);
}

bool isLongKey(const std::string& key) {
    return key.size() > kLongestKey / 4; // of which an escape makes four
}

std::string keyText(const std::string& key) {
    return isName(key) ? key : quoted(key);
}

bool isCollection(const Value& value) {
    return value.kind == Value::Kind::List || value.kind == Value::Kind::Map;
}

bool getHoldsCollections(const Value& value) {
    return std::any_of(value.items.begin(), value.items.end(), isCollection) ||
           std::any_of(value.entries.begin(), value.entries.end(),
                       [](const Value::Entry& entry) { return isCollection(entry.value); });
}

/// Writes a value in one line; gives up, with false, when the text gets longer than `longest`.
bool writeLine(const Value& value, std::size_t longest, std::string& text) {
    if (!isCollection(value)) {
        text += scalarText(value);
        return text.size() <= longest;
    }
    const bool isList = value.kind == Value::Kind::List;
    text += isList ? '[' : '{';
    const char* separator = "";
    for (const Value& item : value.items) {
        text += std::exchange(separator, ", ");
        if (!writeLine(item, longest, text)) return false;
    }
    for (const Value::Entry& entry : value.entries) {
        text += std::exchange(separator, ", ");
        text += isLongKey(entry.key) ? "? " + quoted(entry.key) + " : " : keyText(entry.key) + ": ";
        if (!writeLine(entry.value, longest, text)) return false;
    }
    text += isList ? ']' : '}';
    return text.size() <= longest;
}

/// Lines, each with its indent.
class LineWriter {
public:
    /// The entries of a map that stands at `indent`; what is before the first is in `text` already.
    void writeEntries(const Value& map, std::size_t indent, bool isTop) {
        bool isFirst = true;
        for (const Value::Entry& entry : map.entries) {
            if (!std::exchange(isFirst, false)) text.append(indent, ' ');
            text += keyText(entry.key) + ":";
            writeBehind(entry.value, indent, isTop);
        }
    }

    std::string text;

private:
    /// A value behind a key or a dash in the line. With `isSpread` each item of a list has a line, however
    /// short.
    void writeBehind(const Value& value, std::size_t indent, bool isSpread) {
        const bool mustSpread = isSpread && value.kind == Value::Kind::List && getHoldsCollections(value);
        std::string line;
        const std::size_t room = std::max(kLeastRoom, kLongestLine - std::min(indent, kLongestLine));
        if (!mustSpread && writeLine(value, room, line)) {
            text += " " + line + "\n";
        } else if (!getIsSpreadable(value)) {
            line.clear();
            writeLine(value, std::string::npos, line);
            text += " " + line + "\n";
        } else {
            writeBlock(value, indent + 2);
        }
    }

    /// Whether a value may have several lines: scalars and what holds nothing else stand in one.
    static bool getIsSpreadable(const Value& value) {
        return getHoldsCollections(value) &&
               std::none_of(value.entries.begin(), value.entries.end(),
                            [](const Value::Entry& entry) { return isLongKey(entry.key); });
    }

    void writeBlock(const Value& value, std::size_t indent) {
        text += "\n";
        if (value.kind == Value::Kind::Map) {
            text.append(indent, ' ');
            writeEntries(value, indent, false);
            return;
        }
        for (const Value& item : value.items)
            writeItem(item, indent);
    }

    void writeItem(const Value& item, std::size_t indent) {
        text.append(indent, ' ').append("-");
        std::string line;
        const std::size_t room = std::max(kLeastRoom, kLongestLine - std::min(indent, kLongestLine));
        if (item.kind != Value::Kind::Map || !getIsSpreadable(item) || writeLine(item, room, line)) {
            writeBehind(item, indent, false);
            return;
        }
        text += " ";
        writeEntries(item, indent + 2, false);
    }
};
} // namespace

std::string yamlText(const Value& map) {
    LineWriter writer;
    writer.writeEntries(map, 0, true);
    return std::move(writer.text);
}

Value nameValue(const std::string& text) {
    Value value = valueOf(text);
    value.isQuoted = !isName(text);
    return value;
}

std::string lineText(const Value& value) {
    std::string line;
    const auto add = [&](const std::string& part) { line += (line.empty() ? "" : ", ") + part; };
    switch (value.kind) {
    case Value::Kind::Null:
        return "null";
    case Value::Kind::Scalar:
        return value.madeOf.empty() ? value.text : value.text + " (" + value.madeOf + ")";
    case Value::Kind::List:
        for (const Value& item : value.items)
            add(lineText(item));
        return "[" + line + "]";
    case Value::Kind::Map:
        for (const Value::Entry& entry : value.entries)
            add(entry.key + ": " + lineText(entry.value));
        return "{" + line + "}";
    }
    return line;
}

} // namespace Quillmere::Host
