// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// How a line of a table is cut into cells.
namespace Quillmere::Host {

/// A tab is a blank unless it separates cells.
inline bool isBlank(char c, char separator) {
    return c == ' ' || (c == '\t' && separator != '\t');
}

/// The end of the cell that begins at `begin`: the separator behind it, or the end of the line. Separators
/// in quotes are text. [any]
inline const char* endOfCell(const char* begin, const char* lineEnd, char separator) {
    const char* first = begin;
    while (first != lineEnd && isBlank(*first, separator))
        ++first;
    if (first == lineEnd || *first != '"') return std::find(begin, lineEnd, separator);
    bool quoted = false;
    for (; first != lineEnd && (quoted || *first != separator); ++first)
        quoted = quoted != (*first == '"');
    return first;
}

/// Without blanks and tabs around. [any]
QUILLMERE_API std::string_view trimmed(std::string_view text);

/// What is in the quotes of a cell, as it stands there; without quotes the cell. Blanks around don't count.
/// [any]
QUILLMERE_API std::string_view unquoted(std::string_view cell);

/// A cell's text without blanks and quotes; a doubled quote inside quotes is one. A number or a text for
/// missing values has none, so only names and messages need this. [any]
QUILLMERE_API std::string plainText(std::string_view cell);

/// The cells of a line as they stand there, at most `most` of them. [any]
QUILLMERE_API std::vector<std::string_view> cellsOf(std::string_view line, char separator,
                                                    std::size_t most = std::string_view::npos);

enum class NumberFault { None, NoNumber, TooLarge };
/// The number that a cell's text is, without blanks around: what `std::from_chars` takes, with a comma in
/// place of the point where that is the decimal sign, and a leading `+`. [any]
QUILLMERE_API NumberFault cellToNumber(std::string_view text, char decimal, double& value);

/// Whether a text is surely a number with signs between its thousands, the comma where `decimal` is a point
/// and the other way round: `1.234,5` and `1.234.567`, but not `1.234`. [any]
QUILLMERE_API bool getHasThousands(std::string_view text, char decimal);

} // namespace Quillmere::Host
