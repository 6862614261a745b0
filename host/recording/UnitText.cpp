// SPDX-License-Identifier: MIT
#include "host/recording/UnitText.h"

#include "host/description/Unit.h"
#include "host/recording/CsvCells.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <span>
#include <utility>

namespace Quillmere::Host {

namespace {

/// As programs of devices write them, in small letters, beside symbols that `Unit` knows. Not all that there
/// are: whatever stands in brackets is a unit too. Names of columns may be words (`minutes`), so few of them
/// are units where they stand alone.
constexpr std::array<std::string_view, 19> kWords{
    "sec",     "secs",    "second",    "seconds",         "msec",    "millisecond", "usec",
    "gravity", "degrees", "degrees/s", "degrees celsius", "celsius", "c",           "gauss",
    "mgauss",  "kohms",   "usiemens",  "local_flux",      "m/sec^2"};

/// A row of units has these where there is none,
constexpr std::array<std::string_view, 4> kNoUnits{"no_units", "no units", "n/a", "-"};
/// or these where it is no other's.
constexpr std::array<std::string_view, 3> kOwnUnits{"u.i.", "a.u.", "counts"};

bool getIsAmong(std::span<const std::string_view> words, std::string_view word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool isLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool isBracketed(std::string_view text) {
    return text.size() > 2 &&
           ((text.front() == '(' && text.back() == ')') || (text.front() == '[' && text.back() == ']'));
}

std::string_view withoutBrackets(std::string_view text) {
    text = trimmed(text);
    return isBracketed(text) ? trimmed(text.substr(1, text.size() - 2)) : text;
}

std::string smallUnit(std::string_view text) {
    std::string small = withoutSigns(withoutBrackets(text));
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

bool isKnownUnit(std::string_view text) {
    const std::string small = smallUnit(text);
    return getIsSymbol(small) || getIsAmong(kWords, small);
}

/// Whether a unit may stand behind a `_`: `UTC_Second` and `vel_n` have none.
bool isSuffix(std::string_view text) {
    const std::string small = smallUnit(text);
    if (small.size() == 1) return small == "s" || small == "g";
    const bool isWord = small.size() > 3 && std::all_of(small.begin(), small.end(), isLetter);
    return !isWord && isKnownUnit(text);
}

/// Where the unit in a name begins, and whether it stands in brackets; the name's length when it has none.
std::pair<std::size_t, bool> placeOfUnit(std::string_view name) {
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
    if (isBracketed(trimmed(text)) || isKnownUnit(text)) return true;
    const std::string small = smallUnit(text);
    return (small != "-" && getIsAmong(kNoUnits, small)) || getIsAmong(kOwnUnits, small);
}

bool getSaysNoUnit(std::string_view unit) {
    return trimmed(unit).empty() || getIsAmong(kNoUnits, smallUnit(unit));
}

std::string unitOfCell(std::string_view cell) {
    return std::string(withoutBrackets(cell));
}

std::string unitOfName(std::string_view name) {
    name = trimmed(name);
    const auto [begin, hasBrackets] = placeOfUnit(name);
    if (begin == name.size()) return {};
    const std::string_view unit = name.substr(begin + 1, name.size() - begin - (hasBrackets ? 2 : 1));
    // `timestamp (-0400)` has a zone there.
    const bool isNumber = !unit.empty() && (unit.front() == '+' || unit.front() == '-' ||
                                            std::isdigit(static_cast<unsigned char>(unit.front())) != 0);
    return isNumber ? std::string() : std::string(trimmed(unit));
}

std::string nameWithoutUnit(std::string_view name) {
    name = trimmed(name);
    return std::string(trimmed(name.substr(0, placeOfUnit(name).first)));
}

std::string unitForName(const std::string& unit) {
    const bool isPlain = !unit.empty() && unit.find_first_of("[],\"") == std::string::npos &&
                         printable(unit, kLongestName) == unit;
    if (isPlain && unitOfName("x [" + unit + "]") == unit) return unit;
    const Unit* const known = findUnit(unit);
    return known == nullptr ? "" : known->getName();
}

std::optional<double> unitsPerSecond(std::string_view unit) {
    const Unit* const found = findUnitOfTime(smallUnit(unit));
    if (found == nullptr) return std::nullopt;
    return static_cast<double>(found->denominator) / static_cast<double>(found->numerator);
}

std::optional<UnitMultiple> multipleOfUnit(std::string_view name) {
    const std::size_t bracket = name.find_last_of("([");
    if (bracket == std::string_view::npos) return std::nullopt;
    const std::size_t end = std::min(name.find_first_of(")]", bracket), name.size());
    const std::string_view inside = name.substr(bracket + 1, end - bracket - 1);
    double number = 0.0;
    const auto [stop, error] = std::from_chars(inside.data(), inside.data() + inside.size(), number);
    if (error != std::errc() || !(number > 0.0) || number == 1.0) return std::nullopt;
    const auto perSecond = unitsPerSecond(inside.substr(static_cast<std::size_t>(stop - inside.data())));
    if (!perSecond) return std::nullopt;
    return UnitMultiple{std::string(inside), number / *perSecond};
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
