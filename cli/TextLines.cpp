// SPDX-License-Identifier: MIT
#include "cli/TextLines.h"

#include "host/text/Wrapped.h"

#include <sstream>

namespace Cli {

using Quillmere::Host::kTextColumns;
using Quillmere::Host::lettersOf;
using Quillmere::Host::wrapped;

void TextLines::addHeading(const std::string& heading) {
    if (!text.empty()) addEmptyLine();
    addLine(0, heading);
}

void TextLines::addLine(std::size_t indent, const std::string& line) {
    if (!line.empty()) text.append(indent, ' ').append(line);
    text += '\n';
}

void TextLines::addText(std::size_t indent, std::string_view words) {
    for (const std::string& line : wrapped(words, kTextColumns - indent))
        addLine(indent, line);
}

void TextLines::addText(std::size_t leadIndent, const std::string& lead, std::size_t indent,
                        std::string_view words) {
    const std::size_t used = leadIndent + lettersOf(lead);
    std::vector<std::string> lines = wrapped(words, kTextColumns - indent);
    if (lines.empty() || used + 1 > indent) {
        addLine(leadIndent, lead);
    } else {
        addLine(leadIndent, lead + std::string(indent - used, ' ') + lines.front());
        lines.erase(lines.begin());
    }
    for (const std::string& line : lines)
        addLine(indent, line);
}

void TextLines::addPassage(std::size_t indent, const std::string& passage) {
    std::istringstream lines(passage);
    for (std::string line; std::getline(lines, line);)
        addLine(indent, line);
}

} // namespace Cli
