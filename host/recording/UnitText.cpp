// SPDX-License-Identifier: MIT
#include "host/recording/UnitText.h"

#include "host/recording/CsvCells.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace Quillmere::Host {

namespace {

/// As programs of devices write them, in small letters, with `u` for a micro sign and `deg` for a degree
/// sign. Not all that there are: whatever stands in brackets is a unit too.
constexpr std::array<std::string_view, 66> kUnits{"s",          "sec",   "secs",    "second",
                                                  "seconds",    "ms",    "msec",    "millisecond",
                                                  "us",         "usec",  "ns",      "min",
                                                  "h",          "hz",    "khz",     "m/s^2",
                                                  "m/s2",       "m/s/s", "m/(s^2)", "m/(sec^2)",
                                                  "m/s**2",     "ms^-2", "g",       "mg",
                                                  "gravity",    "deg/s", "deg/sec", "degrees/s",
                                                  "dps",        "deg",   "degrees", "rad/s",
                                                  "rad/sec",    "rad",   "mdps",    "ut",
                                                  "mt",         "nt",    "t",       "gauss",
                                                  "mgauss",     "gs",    "uv",      "mv",
                                                  "v",          "ma",    "kohm",    "kohms",
                                                  "usiemens",   "degc",  "c",       "degrees celsius",
                                                  "celsius",    "pa",    "hpa",     "kpa",
                                                  "mbar",       "n",     "nm",      "m",
                                                  "mm",         "cm",    "lux",     "%",
                                                  "local_flux", "bpm"};

/// A row of units has these where there is none; alone they say nothing.
constexpr std::array<std::string_view, 6> kNoUnits{"no_units", "no units", "n/a", "u.i.", "a.u.", "counts"};

struct TimeUnit {
    double perSecond;
    std::array<std::string_view, 7> words;
};

constexpr std::array kTimeUnits{
    TimeUnit{1.0, {"s", "sec", "secs", "second", "seconds", "", ""}},
    TimeUnit{1e3, {"ms", "msec", "millis", "millisecond", "milliseconds", "", ""}},
    TimeUnit{1e6, {"us", "usec", "micros", "microsecond", "microseconds", "", ""}},
    TimeUnit{1e9, {"ns", "nsec", "nanos", "nanosecond", "nanoseconds", "", ""}},
    TimeUnit{1.0 / 60.0, {"min", "mins", "minute", "minutes", "", "", ""}},
    TimeUnit{1.0 / 3600.0, {"h", "hr", "hrs", "hour", "hours", "", ""}},
};

bool isLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

/// With a `u` for a micro sign, of which there are two, `deg` for a degree sign, and `^2` for a raised 2.
std::string withoutSigns(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kSigns{
        {{"\xC2\xB5", "u"}, {"\xCE\xBC", "u"}, {"\xC2\xB0", "deg"}, {"\xC2\xB2", "^2"}}};
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto sign = std::find_if(kSigns.begin(), kSigns.end(),
                                       [&](const auto& one) { return name.substr(i, 2) == one.first; });
        if (sign == kSigns.end()) {
            text += name[i];
            continue;
        }
        text += sign->second;
        ++i;
    }
    return text;
}

std::string smallUnit(std::string_view text) {
    text = trimmed(text);
    const bool isBracketed = text.size() > 2 && ((text.front() == '(' && text.back() == ')') ||
                                                 (text.front() == '[' && text.back() == ']'));
    if (isBracketed) text = trimmed(text.substr(1, text.size() - 2));
    std::string small = withoutSigns(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

bool isKnownUnit(std::string_view text) {
    return std::find(kUnits.begin(), kUnits.end(), smallUnit(text)) != kUnits.end();
}

/// Whether a unit may stand behind a `_`: `UTC_Second` and `vel_n` have none.
bool isSuffix(std::string_view text) {
    const std::string small = smallUnit(text);
    if (small.size() == 1) return small == "s" || small == "g";
    const bool isWord = small.size() > 3 && std::all_of(small.begin(), small.end(), isLetter);
    return !isWord && isKnownUnit(text);
}

/// Where the unit in a name begins, and whether it stands in brackets; the name's length when it has none.
std::pair<std::size_t, bool> findUnit(std::string_view name) {
    if (name.size() > 2 && (name.back() == ')' || name.back() == ']')) {
        const char opening = name.back() == ')' ? '(' : '[';
        int depth = 0; // `(m/(s^2))`
        for (std::size_t i = name.size(); i-- > 0;) {
            depth += name[i] == name.back() ? 1 : name[i] == opening ? -1 : 0;
            if (depth == 0) return {i, true};
        }
    }
    const std::size_t bar = name.rfind('_');
    const bool isUnit = bar != std::string_view::npos && bar > 0 && isSuffix(name.substr(bar + 1));
    return {isUnit ? bar : name.size(), false};
}

} // namespace

bool getIsUnit(std::string_view text) {
    text = trimmed(text);
    const bool isBracketed = text.size() > 2 && ((text.front() == '(' && text.back() == ')') ||
                                                 (text.front() == '[' && text.back() == ']'));
    if (isBracketed || isKnownUnit(text)) return true;
    return std::find(kNoUnits.begin(), kNoUnits.end(), smallUnit(text)) != kNoUnits.end();
}

std::string unitOfName(std::string_view name) {
    name = trimmed(name);
    const auto [begin, isBracketed] = findUnit(name);
    if (begin == name.size()) return {};
    const std::string_view unit = name.substr(begin + 1, name.size() - begin - (isBracketed ? 2 : 1));
    // `timestamp (-0400)` has a zone there.
    const bool isNumber = !unit.empty() && (unit.front() == '+' || unit.front() == '-' ||
                                            std::isdigit(static_cast<unsigned char>(unit.front())) != 0);
    return isNumber ? std::string() : std::string(trimmed(unit));
}

std::string nameWithoutUnit(std::string_view name) {
    name = trimmed(name);
    return std::string(trimmed(name.substr(0, findUnit(name).first)));
}

std::optional<double> unitsPerSecond(std::string_view unit) {
    const std::string small = smallUnit(unit);
    if (small.empty()) return std::nullopt;
    for (const TimeUnit& one : kTimeUnits)
        if (std::find(one.words.begin(), one.words.end(), small) != one.words.end()) return one.perSecond;
    return std::nullopt;
}

std::vector<std::string> wordsOfName(const std::string& name) {
    std::vector<std::string> words;
    char before = ' ';
    for (const char c : withoutSigns(name)) {
        const bool isBegin = !isLetter(before) || (std::islower(static_cast<unsigned char>(before)) != 0 &&
                                                   std::isupper(static_cast<unsigned char>(c)) != 0);
        if (isLetter(c) && isBegin) words.emplace_back();
        if (isLetter(c)) words.back() += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        before = c;
    }
    return words;
}

} // namespace Quillmere::Host
