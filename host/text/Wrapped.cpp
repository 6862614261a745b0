// SPDX-License-Identifier: MIT
#include "host/text/Wrapped.h"

#include <algorithm>
#include <sstream>

namespace Quillmere::Host {

namespace {
/// Puts words below each other.
class Wrapper {
public:
    explicit Wrapper(std::size_t lineWidth) : width(lineWidth) {}

    void addWords(const std::string& line) {
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            if (!current.empty() && lettersOf(current) + 1 + lettersOf(word) > width) endLine();
            current += (current.empty() ? "" : " ") + word;
        }
    }

    void addAsItIs(const std::string& line) {
        endLine();
        lines.push_back(line);
    }

    std::vector<std::string> takeLines() {
        endLine();
        while (!lines.empty() && lines.back().empty())
            lines.pop_back();
        return std::move(lines);
    }

private:
    void endLine() {
        if (!current.empty()) lines.push_back(std::move(current));
        current.clear();
    }

    std::size_t width;
    std::string current;
    std::vector<std::string> lines;
};
} // namespace

std::size_t lettersOf(std::string_view text) {
    const auto isFirstByte = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isFirstByte));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
    Wrapper wrapper(width);
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        const bool stays = line.empty() || line.front() == ' ' || line.front() == '\t';
        if (stays)
            wrapper.addAsItIs(line);
        else
            wrapper.addWords(line);
    }
    return wrapper.takeLines();
}

} // namespace Quillmere::Host
