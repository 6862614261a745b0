// SPDX-License-Identifier: MIT
#include "tests/manual/ShownLines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <sstream>
#include <vector>

namespace Support {

namespace {
using Lines = std::vector<std::string>;

Lines partsOf(const std::string& text, char separator) {
    Lines parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    if (!text.empty() && text.back() == separator && separator != '\n') parts.emplace_back(); // an empty cell
    return parts;
}

bool isSameNumber(const std::string& one, const std::string& other) {
    constexpr double kRelative = 1e-9; // far above the last bits of sines, far below what anybody reads
    char* oneEnd = nullptr;
    char* otherEnd = nullptr;
    const double a = std::strtod(one.c_str(), &oneEnd);
    const double b = std::strtod(other.c_str(), &otherEnd);
    const bool areNumbers = !one.empty() && !other.empty() && *oneEnd == '\0' && *otherEnd == '\0';
    return areNumbers && std::abs(a - b) <= kRelative * std::max(std::abs(a), std::abs(b));
}

bool isSameLine(const std::string& one, const std::string& other) {
    const Lines ones = partsOf(one, ',');
    const Lines others = partsOf(other, ',');
    return std::equal(
        ones.begin(), ones.end(), others.begin(), others.end(),
        [](const std::string& a, const std::string& b) { return a == b || isSameNumber(a, b); });
}

/// From these lines on.
bool isShown(const Lines& shown, std::size_t at, const Lines& lines, std::size_t line) {
    if (at == shown.size()) return line == lines.size();
    if (shown[at] == "...") {
        for (std::size_t next = line; next <= lines.size(); ++next)
            if (isShown(shown, at + 1, lines, next)) return true;
        return false;
    }
    return line < lines.size() && isSameLine(shown[at], lines[line]) &&
           isShown(shown, at + 1, lines, line + 1);
}
} // namespace

bool isShown(const std::string& shown, const std::string& text) {
    return isShown(partsOf(shown, '\n'), 0, partsOf(text, '\n'), 0);
}

} // namespace Support
