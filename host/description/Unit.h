// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// A unit that the host can convert. So many of its dimension's first unit are one of it:
/// `numerator / denominator`, both exact, and that divided by pi where `isPerPi`.
struct Unit {
    enum class Dimension {
        Angle,
        TurnRate,
        Acceleration,
        MagneticField,
        Time,
        Frequency,
        Length,
        Speed,
        Voltage,
        Current,
        Resistance,
        Pressure,
        Force,
        Torque,
        Temperature,
        Illuminance,
        Part,
        Pulse
    };

    Dimension dimension;
    std::int64_t numerator;
    std::int64_t denominator;
    bool isPerPi;
    /// With `u` for a micro sign, `deg` for a degree sign and `^2` for a raised 2; the first is what messages
    /// call it. Case counts: `mg` is no `mG`.
    std::array<std::string_view, 8> symbols;
    /// Whole words, in small letters; case doesn't count.
    std::array<std::string_view, 5> words;

    std::string getName() const { return std::string(symbols.front()); }
};

/// The unit that a text names: `m/s^2`, `m/s²`, `°/s`, `dps`, `uT`, `seconds`. Case counts in symbols of one
/// or two letters, and an `M` in front is no `m`. Null for what isn't one. [any]
QUILLMERE_API const Unit* findUnit(std::string_view text);
/// The unit of time of that name, in whatever letters; null for none. [any]
QUILLMERE_API const Unit* findUnitOfTime(std::string_view text);
/// Whether a text in small letters and without signs is a unit's symbol. [any]
QUILLMERE_API bool getIsSymbol(std::string_view small);

/// With `u` for a micro sign, of which there are two, `deg` for a degree sign, and `^2` for a raised 2,
/// whether they stand there in UTF-8 or in one byte each. [any]
QUILLMERE_API std::string withoutSigns(std::string_view text);

/// The spelling of a unit that somebody who wrote `text` may have meant, or an empty text. [any]
QUILLMERE_API std::string nearestUnit(const std::string& text);
/// For messages that refuse a unit.
inline constexpr const char* kSomeUnits = "a unit such as g, m/s^2, deg/s, rad/s, deg, uT, mV or ms";

/// The names of all units, and of those that one can be converted to or from, itself among them. [any]
QUILLMERE_API std::vector<std::string> namesOfUnits();
QUILLMERE_API std::vector<std::string> namesOfUnits(Unit::Dimension dimension);
/// What a dimension is called in messages: `acceleration`. [any]
QUILLMERE_API const char* nameOf(Unit::Dimension dimension);

/// How numbers of one unit become those of another: by one multiplication or one division, whichever has the
/// number that people know (9.80665, 1000, 3.6), or not at all.
struct UnitConversion {
    enum class Kind { None, Multiply, Divide };

    Kind kind = Kind::None;
    double number = 1.0;

    double applyTo(double value) const {
        return kind == Kind::Multiply ? value * number : kind == Kind::Divide ? value / number : value;
    }
};

/// Nothing where they are of two dimensions. [any]
QUILLMERE_API std::optional<UnitConversion> conversionBetween(const Unit& from, const Unit& to);

} // namespace Quillmere::Host
