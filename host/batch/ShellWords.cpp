// SPDX-License-Identifier: MIT
#include "host/batch/ShellWords.h"

#include <cstddef>

namespace Quillmere::Host {

namespace {

/// Letters that no shell takes for anything else, wherever they stand in a word.
bool getIsPlain(std::string_view word) {
    constexpr std::string_view kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./,:=+@%";
    return !word.empty() && word.find_first_not_of(kPlain) == std::string_view::npos;
}

/// Takes a line apart, letter by letter.
class Splitter {
public:
    explicit Splitter(std::string_view text) : line(text) {}

    std::optional<std::vector<std::string>> split() {
        for (at = 0; at < line.size(); ++at)
            if (!take(line[at])) return std::nullopt;
        endWord();
        return std::move(words);
    }

private:
    bool take(char letter) {
        if (letter == ' ' || letter == '\t') {
            endWord();
            return true;
        }
        isWord = true;
        if (letter == '\'') return takeQuoted();
        if (letter == '"') return takeDoublyQuoted();
        if (letter != '\\')
            word += letter;
        else if (++at < line.size())
            word += line[at];
        else
            return false;
        return true;
    }

    bool takeQuoted() {
        const std::size_t end = line.find('\'', at + 1);
        if (end == std::string_view::npos) return false;
        word += line.substr(at + 1, end - at - 1);
        at = end;
        return true;
    }

    bool takeDoublyQuoted() {
        constexpr std::string_view kEscaped = "\"\\$`";
        for (++at; at < line.size() && line[at] != '"'; ++at) {
            const bool isEscaped = line[at] == '\\' && at + 1 < line.size() &&
                                   kEscaped.find(line[at + 1]) != std::string_view::npos;
            if (isEscaped) ++at;
            word += line[at];
        }
        return at < line.size();
    }

    void endWord() {
        if (isWord) words.push_back(word);
        word.clear();
        isWord = false;
    }

    std::string_view line;
    std::size_t at = 0;
    std::string word;
    bool isWord = false; ///< An empty one may stand between quotes.
    std::vector<std::string> words;
};

} // namespace

std::string shellWord(std::string_view word) {
    if (getIsPlain(word)) return std::string(word);
    std::string quoted = "'";
    for (const char letter : word)
        if (letter == '\'')
            quoted += "'\\''";
        else
            quoted += letter;
    quoted += '\'';
    return quoted;
}

std::string shellLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        (line.empty() ? line : line += ' ') += shellWord(word);
    return line;
}

std::optional<std::vector<std::string>> splitShellLine(std::string_view line) {
    return Splitter(line).split();
}

} // namespace Quillmere::Host
