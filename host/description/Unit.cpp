// SPDX-License-Identifier: MIT
#include "host/description/Unit.h"

#include "host/text/NearestName.h"

#include <algorithm>
#include <cctype>
#include <numbers>
#include <numeric>
#include <span>
#include <utility>

namespace Quillmere::Host {

namespace {
using Dimension = Unit::Dimension;

/// The first of each dimension is what the others are told in.
constexpr Unit kUnits[]{
    {Dimension::Angle, 1, 1, false, {"deg"}, {"degree", "degrees"}},
    {Dimension::Angle, 1, 1000, false, {"mdeg"}, {"millidegrees"}},
    {Dimension::Angle, 180, 1, true, {"rad"}, {"radian", "radians"}},
    {Dimension::Angle, 180, 1000, true, {"mrad"}, {"milliradians"}},

    {Dimension::TurnRate,
     1,
     1,
     false,
     {"deg/s", "dps", "deg/sec", "deg/(s)", "deg.s^-1", "deg*s^-1"},
     {"degrees/s", "degrees/sec", "degree/s", "degrees/second", "degreespersecond"}},
    {Dimension::TurnRate, 1, 1000, false, {"mdeg/s", "mdps"}, {}},
    {Dimension::TurnRate, 1, 3600, false, {"deg/h", "deg/hr"}, {}},
    {Dimension::TurnRate,
     180,
     1,
     true,
     {"rad/s", "rad/sec", "rad/(s)", "rad.s^-1", "rad*s^-1"},
     {"radians/s", "radians/sec", "radians/second", "radianspersecond"}},
    {Dimension::TurnRate, 180, 1000, true, {"mrad/s"}, {}},
    {Dimension::TurnRate, 6, 1, false, {"rpm", "rev/min"}, {}},

    {Dimension::Acceleration,
     1,
     1,
     false,
     {"m/s^2", "m/s2", "m/s/s", "m/(s^2)", "m/(sec^2)", "m/s**2", "ms^-2", "m.s^-2"},
     {"m/sec^2", "m*s^-2"}},
    {Dimension::Acceleration, 1, 100, false, {"cm/s^2", "cm/s2"}, {}},
    {Dimension::Acceleration, 1, 1000, false, {"mm/s^2", "mm/s2"}, {}},
    {Dimension::Acceleration, 980665, 100000, false, {"g"}, {"gravity", "gravities"}}, // standard gravity
    {Dimension::Acceleration, 980665, 100000000, false, {"mg"}, {}},

    {Dimension::MagneticField, 1, 1, false, {"T"}, {"tesla"}},
    {Dimension::MagneticField, 1, 1000, false, {"mT"}, {"millitesla"}},
    {Dimension::MagneticField, 1, 1000000, false, {"uT"}, {"microtesla"}},
    {Dimension::MagneticField, 1, 1000000000, false, {"nT"}, {"nanotesla"}},
    {Dimension::MagneticField, 1, 10000, false, {"G", "Gs"}, {"gauss"}},
    {Dimension::MagneticField, 1, 10000000, false, {"mG", "mGs"}, {"mgauss", "milligauss"}},

    {Dimension::Time, 1, 1, false, {"s"}, {"sec", "secs", "second", "seconds"}},
    {Dimension::Time, 1, 1000, false, {"ms"}, {"msec", "millis", "millisecond", "milliseconds"}},
    {Dimension::Time, 1, 1000000, false, {"us"}, {"usec", "micros", "microsecond", "microseconds"}},
    {Dimension::Time, 1, 1000000000, false, {"ns"}, {"nsec", "nanos", "nanosecond", "nanoseconds"}},
    {Dimension::Time, 60, 1, false, {"min"}, {"mins", "minute", "minutes"}},
    {Dimension::Time, 3600, 1, false, {"h"}, {"hr", "hrs", "hour", "hours"}},

    {Dimension::Frequency, 1, 1, false, {"Hz"}, {"hertz"}},
    {Dimension::Frequency, 1000, 1, false, {"kHz"}, {}},
    {Dimension::Length, 1, 1, false, {"m"}, {"meter", "meters", "metre", "metres"}},
    {Dimension::Length, 1, 100, false, {"cm"}, {}},
    {Dimension::Length, 1, 1000, false, {"mm"}, {}},
    {Dimension::Speed, 1, 1, false, {"m/s", "m/sec"}, {}},
    {Dimension::Speed, 1, 1000, false, {"mm/s"}, {}},
    {Dimension::Speed, 5, 18, false, {"km/h"}, {}},
    {Dimension::Voltage, 1, 1, false, {"V"}, {"volt", "volts"}},
    {Dimension::Voltage, 1, 1000, false, {"mV"}, {"millivolts"}},
    {Dimension::Voltage, 1, 1000000, false, {"uV"}, {"microvolts"}},
    {Dimension::Current, 1, 1, false, {"mA"}, {}},
    {Dimension::Resistance, 1, 1, false, {"ohm"}, {"ohms"}},
    {Dimension::Resistance, 1000, 1, false, {"kohm"}, {"kohms"}},
    {Dimension::Pressure, 1, 1, false, {"Pa"}, {"pascal"}},
    {Dimension::Pressure, 100, 1, false, {"hPa", "mbar"}, {}},
    {Dimension::Pressure, 1000, 1, false, {"kPa"}, {}},
    {Dimension::Force, 1, 1, false, {"N"}, {"newton", "newtons"}},
    {Dimension::Torque, 1, 1, false, {"Nm"}, {}},
    {Dimension::Temperature, 1, 1, false, {"degC"}, {"celsius", "degreescelsius"}},
    {Dimension::Illuminance, 1, 1, false, {"lux"}, {}},
    {Dimension::Part, 1, 1, false, {"%"}, {"percent"}},
    {Dimension::Pulse, 1, 1, false, {"bpm"}, {}},
};

std::string smallLetters(std::string_view text) {
    std::string small(text);
    std::transform(small.begin(), small.end(), small.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

std::string withoutBlanks(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\t'; });
    return text;
}

bool getHasWord(const Unit& unit, const std::string& small) {
    return !small.empty() && std::find(unit.words.begin(), unit.words.end(), small) != unit.words.end();
}

bool getHasSmallSymbol(const Unit& unit, std::string_view small) {
    return !small.empty() &&
           std::any_of(unit.symbols.begin(), unit.symbols.end(),
                       [&](std::string_view symbol) { return smallLetters(symbol) == small; });
}

const Unit* findBySymbol(std::string_view text) {
    if (text.empty()) return nullptr;
    const auto found = std::find_if(std::begin(kUnits), std::end(kUnits), [&](const Unit& unit) {
        return std::find(unit.symbols.begin(), unit.symbols.end(), text) != unit.symbols.end();
    });
    return found == std::end(kUnits) ? nullptr : found;
}

/// Whether it has no other prime factors than 2 and 5, so that what is divided by it is a short decimal
/// number.
bool getIsDecimal(std::int64_t number) {
    for (const std::int64_t factor : {2, 5})
        while (number % factor == 0)
            number /= factor;
    return number == 1;
}

UnitConversion conversionOf(std::int64_t up, std::int64_t down) {
    using Kind = UnitConversion::Kind;
    const auto numerator = static_cast<double>(up);
    const auto denominator = static_cast<double>(down);
    if (up == down) return {};
    if (down == 1) return {Kind::Multiply, numerator};
    if (up == 1) return {Kind::Divide, denominator};
    if (getIsDecimal(up) && !getIsDecimal(down)) return {Kind::Divide, denominator / numerator};
    return {Kind::Multiply, numerator / denominator};
}

} // namespace

const Unit* findUnit(std::string_view text) {
    const std::string name = withoutBlanks(withoutSigns(text));
    if (const Unit* const unit = findBySymbol(name)) return unit;
    const std::string small = smallLetters(name);
    const auto word = std::find_if(std::begin(kUnits), std::end(kUnits),
                                   [&](const Unit& unit) { return getHasWord(unit, small); });
    if (word != std::end(kUnits)) return word;
    // `MS` may be megasiemens, `S` and `mS` are no times; nobody writes DEG/S for anything else.
    const bool isMega =
        name.size() > 1 && name[0] == 'M' && std::isalpha(static_cast<unsigned char>(name[1]));
    if (name.size() < 3 || isMega) return nullptr;
    const auto same = [&](const Unit& unit) { return getHasSmallSymbol(unit, small); };
    const auto found = std::find_if(std::begin(kUnits), std::end(kUnits), same);
    return found == std::end(kUnits) ? nullptr : found;
}

const Unit* findUnitOfTime(std::string_view text) {
    const std::string small = smallLetters(withoutSigns(text));
    const auto found = std::find_if(std::begin(kUnits), std::end(kUnits), [&](const Unit& unit) {
        return unit.dimension == Dimension::Time &&
               (getHasWord(unit, small) || getHasSmallSymbol(unit, small));
    });
    return found == std::end(kUnits) ? nullptr : found;
}

bool getIsSymbol(std::string_view small) {
    return std::any_of(std::begin(kUnits), std::end(kUnits),
                       [&](const Unit& unit) { return getHasSmallSymbol(unit, small); });
}

std::string withoutSigns(std::string_view text) {
    struct Sign {
        std::string_view bytes;
        std::string_view plain;
    };
    constexpr Sign kSigns[]{{"\xC2\xB5", "u"},
                            {"\xCE\xBC", "u"},
                            {"\xC2\xB0", "deg"},
                            {"\xC2\xBA", "deg"}, // the ordinal that keyboards have
                            {"\xC2\xB2", "^2"},
                            {"\xE2\x81\xBB\xC2\xB2", "^-2"},
                            {"\xE2\x81\xBB\xC2\xB9", "^-1"},
                            {"\xC2\xB7", "."},
                            {"\xE2\x8B\x85", "."},
                            {"\xE2\x84\x83", "degC"}};
    // What Latin-1 has for these, where no byte in front makes UTF-8 of it.
    constexpr Sign kBytes[]{{"\xB5", "u"}, {"\xB0", "deg"}, {"\xB2", "^2"}};
    const auto signAt = [&](std::size_t i) -> const Sign* {
        const auto fits = [&](const Sign& sign) { return text.substr(i).starts_with(sign.bytes); };
        const auto sign = std::find_if(std::begin(kSigns), std::end(kSigns), fits);
        if (sign != std::end(kSigns)) return sign;
        const bool isAlone = i == 0 || static_cast<unsigned char>(text[i - 1]) < 0x80;
        const auto byte = std::find_if(std::begin(kBytes), std::end(kBytes), fits);
        return isAlone && byte != std::end(kBytes) ? byte : nullptr;
    };
    std::string plain;
    for (std::size_t i = 0; i < text.size();) {
        const Sign* const sign = signAt(i);
        if (sign == nullptr) {
            plain += text[i++];
            continue;
        }
        plain += sign->plain;
        i += sign->bytes.size();
    }
    return plain;
}

std::string nearestUnit(const std::string& text) {
    std::vector<std::string> likely;
    std::vector<std::string> others;
    for (const Unit& unit : kUnits) {
        // Of two that are equally near, what people measure most is meant: deg/s by degs.
        const bool isLikely =
            unit.dimension == Dimension::TurnRate || unit.dimension == Dimension::Acceleration;
        std::vector<std::string>& spellings = isLikely ? likely : others;
        for (const std::string_view symbol : unit.symbols)
            if (!symbol.empty()) spellings.emplace_back(symbol);
        for (const std::string_view word : unit.words)
            if (!word.empty()) spellings.emplace_back(word);
    }
    likely.insert(likely.end(), others.begin(), others.end());
    return nearestName(withoutSigns(text), likely);
}

std::vector<std::string> namesOfUnits() {
    std::vector<std::string> names;
    for (const Unit& unit : kUnits)
        names.push_back(unit.getName());
    return names;
}

std::vector<std::string> namesOfUnits(Unit::Dimension dimension) {
    std::vector<std::string> names;
    for (const Unit& unit : kUnits)
        if (unit.dimension == dimension) names.push_back(unit.getName());
    return names;
}

const char* nameOf(Unit::Dimension dimension) {
    constexpr const char* kNames[]{"angle",
                                   "turn rate",
                                   "acceleration",
                                   "magnetic field",
                                   "time",
                                   "frequency",
                                   "length",
                                   "speed",
                                   "voltage",
                                   "current",
                                   "resistance",
                                   "pressure",
                                   "force",
                                   "torque",
                                   "temperature",
                                   "illuminance",
                                   "part of a hundred",
                                   "pulse"};
    return kNames[static_cast<std::size_t>(dimension)];
}

std::optional<UnitConversion> conversionBetween(const Unit& from, const Unit& to) {
    if (from.dimension != to.dimension) return std::nullopt;
    std::int64_t up = from.numerator * to.denominator;
    std::int64_t down = from.denominator * to.numerator;
    const std::int64_t common = std::gcd(up, down);
    up /= common;
    down /= common;
    if (from.isPerPi == to.isPerPi) return conversionOf(up, down);
    const double pi = std::numbers::pi;
    const auto numerator = static_cast<double>(up);
    const auto denominator = static_cast<double>(down);
    return UnitConversion{UnitConversion::Kind::Multiply,
                          from.isPerPi ? numerator / (denominator * pi) : numerator * pi / denominator};
}

} // namespace Quillmere::Host
