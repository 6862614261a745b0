// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Cli {

/// Lines for a terminal, of at most 100 letters where that is possible.
class TextLines {
public:
    static constexpr std::size_t kIndent = 2;

    /// What begins a part: an empty line stands in front of it, unless it is the first.
    void addHeading(const std::string& heading);
    void addLine(std::size_t indent, const std::string& line);
    /// Words that are wrapped. Nothing for an empty text.
    void addText(std::size_t indent, std::string_view text);
    /// The same, the first line behind `lead`, which stands `leadIndent` in.
    void addText(std::size_t leadIndent, const std::string& lead, std::size_t indent, std::string_view text);
    /// Lines that stay as they are.
    void addPassage(std::size_t indent, const std::string& passage);
    void addEmptyLine() { text += '\n'; }

    const std::string& getText() const { return text; }

private:
    std::string text;
};

} // namespace Cli
