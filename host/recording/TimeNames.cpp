// SPDX-License-Identifier: MIT
#include "host/recording/TimeNames.h"

#include "host/recording/UnitText.h"

#include <algorithm>
#include <array>
#include <vector>

namespace Quillmere::Host {

namespace {

constexpr std::array kNames{
    TimeName{"time", true},   TimeName{"timestamp", true},   TimeName{"t"}, // a clock only as it stands
    TimeName{"datetime"},     TimeName{"seconds", true},     TimeName{"elapsed"},
    TimeName{"timeelapsed"},  TimeName{"elapsedtime"},       TimeName{"milliseconds", true},
    TimeName{"ms", true},     TimeName{"epoch", true},       TimeName{"sampletime"},
    TimeName{"zeit", true},   TimeName{"zeitstempel"},       TimeName{"temps", true, true},
    TimeName{"tiempo", true}, TimeName{"tempo", true, true}, TimeName{"tijd", true}};

} // namespace

std::span<const TimeName> timeNames() {
    return kNames;
}

std::string plainTimeName(const std::string& column) {
    const std::string name = nameWithoutUnit(column);
    if (name == "T") return {};
    std::vector<std::string> words = wordsOfName(name);
    if (words.size() > 1 && unitsPerSecond(words.back())) words.pop_back();
    std::string text;
    for (const std::string& word : words)
        text += word;
    return text;
}

bool getIsTimeName(const std::string& column) {
    const std::string plain = plainTimeName(column);
    const auto found =
        std::find_if(kNames.begin(), kNames.end(), [&](const TimeName& name) { return name.word == plain; });
    return found != kNames.end() && (!found->isUnclear || getNamesUnitOfTime(column));
}

bool getNamesUnitOfTime(const std::string& column) {
    if (unitsPerSecond(unitOfName(column))) return true;
    const std::vector<std::string> words = wordsOfName(column);
    return words.size() > 1 && unitsPerSecond(words.back()).has_value();
}

} // namespace Quillmere::Host
