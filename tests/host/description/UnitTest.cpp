// SPDX-License-Identifier: MIT
#include "host/description/Unit.h"

#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace {

using namespace Quillmere::Host;
using Kind = UnitConversion::Kind;

std::string nameOfFound(const std::string& text) {
    const Unit* const unit = findUnit(text);
    return unit == nullptr ? "" : unit->getName();
}

UnitConversion conversion(const std::string& from, const std::string& to) {
    return conversionBetween(*findUnit(from), *findUnit(to)).value();
}

TEST(UnitTest, FindsUnitsByTheirSpellings) {
    struct Row {
        const char* text;
        const char* name; ///< Empty for what is no unit.
    };
    constexpr Row rows[]{
        {"deg/s", "deg/s"},
        {"°/s", "deg/s"},
        {"º/s", "deg/s"},
        {"\xB0/s", "deg/s"},
        {"dps", "deg/s"},
        {"DPS", "deg/s"},
        {"deg / s", "deg/s"},
        {"degrees/second", "deg/s"},
        {"mdps", "mdeg/s"},
        {"rad/s", "rad/s"},
        {"rad·s⁻¹", "rad/s"},
        {"Rad/s", "rad/s"},
        {"g", "g"},
        {"mg", "mg"},
        {"m/s^2", "m/s^2"},
        {"m/s²", "m/s^2"},
        {"m/s2", "m/s^2"},
        {"M/S^2", "m/s^2"},
        {"m s⁻²", "m/s^2"},
        {"ms⁻²", "m/s^2"},
        {"m/(s^2)", "m/s^2"},
        {"uT", "uT"},
        {"µT", "uT"},
        {"μT", "uT"},
        {"\xB5T", "uT"},
        {"mT", "mT"},
        {"T", "T"},
        {"nT", "nT"},
        {"G", "G"},
        {"gauss", "G"},
        {"Gauss", "G"},
        {"mG", "mG"},
        {"mGauss", "mG"},
        {"°", "deg"},
        {"degrees", "deg"},
        {"rad", "rad"},
        {"s", "s"},
        {"seconds", "s"},
        {"ms", "ms"},
        {"µs", "us"},
        {"ns", "ns"},
        {"min", "min"},
        {"km/h", "km/h"},
        {"°C", "degC"},
        {"℃", "degC"},
        {"", ""},
        {"MS", ""},
        {"S", ""},
        {"MDPS", ""},
        {"UT", ""},
        {"t", ""},
        {"degs", ""},
        {"counts", ""},
        {"meters", "m"},
        {"Minutes", "min"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(nameOfFound(row.text), row.name) << row.text;
}

TEST(UnitTest, EachNameFindsItsUnitAndIsOfOneDimension) {
    for (const std::string& name : namesOfUnits()) {
        const Unit* const unit = findUnit(name);
        ASSERT_NE(unit, nullptr) << name;
        EXPECT_EQ(unit->getName(), name);
        for (const std::string_view symbol : unit->symbols) {
            if (!symbol.empty()) {
                EXPECT_EQ(findUnit(symbol), unit) << symbol;
            }
        }
        for (const std::string_view word : unit->words) {
            if (!word.empty()) {
                EXPECT_EQ(findUnit(word), unit) << word;
            }
        }
    }
    EXPECT_EQ(namesOfUnits(Unit::Dimension::Angle), (std::vector<std::string>{"deg", "mdeg", "rad", "mrad"}));
    EXPECT_STREQ(nameOf(Unit::Dimension::Acceleration), "acceleration");
    EXPECT_STREQ(nameOf(Unit::Dimension::Pulse), "pulse");
}

TEST(UnitTest, NamesWhatMayBeMeant) {
    EXPECT_EQ(nearestUnit("degs"), "deg/s");
    EXPECT_EQ(nearestUnit("UT"), "uT");
    EXPECT_EQ(nearestUnit("m/ss"), "m/s2");
    EXPECT_EQ(nearestUnit("radian/s"), "radians/s");
    EXPECT_EQ(nearestUnit("furlongs"), "");
}

TEST(UnitTest, ConvertsByTheNumberThatPeopleKnow) {
    struct Row {
        const char* from;
        const char* to;
        Kind kind;
        double number;
    };
    const double pi = std::numbers::pi;
    const Row rows[]{
        {"g", "m/s^2", Kind::Multiply, 9.80665},
        {"m/s^2", "g", Kind::Divide, 9.80665},
        {"mg", "m/s^2", Kind::Multiply, 0.00980665},
        {"m/s^2", "mg", Kind::Divide, 0.00980665},
        {"mg", "g", Kind::Divide, 1000.0},
        {"g", "mg", Kind::Multiply, 1000.0},
        {"deg/s", "rad/s", Kind::Multiply, pi / 180.0},
        {"rad/s", "deg/s", Kind::Multiply, 180.0 / pi},
        {"deg", "rad", Kind::Multiply, pi / 180.0},
        {"mdps", "deg/s", Kind::Divide, 1000.0},
        {"mrad/s", "rad/s", Kind::Divide, 1000.0},
        {"rpm", "deg/s", Kind::Multiply, 6.0},
        {"gauss", "uT", Kind::Multiply, 100.0},
        {"uT", "G", Kind::Divide, 100.0},
        {"mT", "uT", Kind::Multiply, 1000.0},
        {"mG", "uT", Kind::Divide, 10.0},
        {"ms", "s", Kind::Divide, 1000.0},
        {"min", "s", Kind::Multiply, 60.0},
        {"h", "ns", Kind::Multiply, 3.6e12},
        {"km/h", "m/s", Kind::Divide, 3.6},
        {"m/s", "km/h", Kind::Multiply, 3.6},
        {"dps", "°/s", Kind::None, 1.0},
        {"m/s2", "m/s²", Kind::None, 1.0},
    };
    for (const Row& row : rows) {
        const UnitConversion made = conversion(row.from, row.to);
        EXPECT_EQ(made.kind, row.kind) << row.from << " to " << row.to;
        EXPECT_EQ(made.number, row.number) << row.from << " to " << row.to;
    }
}

TEST(UnitTest, ConvertsNothingIntoWhatItIsNot) {
    for (const std::string& name : namesOfUnits())
        for (const std::string& other : namesOfUnits()) {
            const bool isSame = findUnit(name)->dimension == findUnit(other)->dimension;
            EXPECT_EQ(conversionBetween(*findUnit(name), *findUnit(other)).has_value(), isSame)
                << name << " to " << other;
        }
}

/// Definitions, by hand, in the unit that is told first.
TEST(UnitTest, OneOfEachIsWhatItIsBySI) {
    EXPECT_EQ(conversion("g", "m/s^2").applyTo(1.0), 9.80665);
    EXPECT_EQ(conversion("m/s^2", "g").applyTo(9.80665), 1.0);
    EXPECT_EQ(conversion("deg", "rad").applyTo(180.0), std::numbers::pi);
    EXPECT_EQ(conversion("rad/s", "deg/s").applyTo(std::numbers::pi), 180.0);
    EXPECT_EQ(conversion("gauss", "T").applyTo(1.0), 1e-4);
    EXPECT_EQ(conversion("ns", "s").applyTo(1.0), 1e-9);
    EXPECT_EQ(conversion("km/h", "m/s").applyTo(36.0), 10.0);
    EXPECT_EQ(conversion("hPa", "kPa").applyTo(1013.0), 101.3);
}

/// There and back again is off by one rounding each way.
TEST(UnitTest, ConversionsThereAndBackCancel) {
    for (const std::string& name : namesOfUnits())
        for (const std::string& other : namesOfUnits(findUnit(name)->dimension)) {
            const double there = conversion(name, other).applyTo(0.3);
            EXPECT_DOUBLE_EQ(conversion(other, name).applyTo(there), 0.3) << name << " to " << other;
        }
}

TEST(UnitTest, NoArithmeticLeavesBitsAlone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(conversion("g", "m/s^2").applyTo(nan)));
    EXPECT_TRUE(std::signbit(conversion("g", "m/s^2").applyTo(-0.0)));
    EXPECT_EQ(conversion("g", "g").applyTo(5e-324), 5e-324);
}

TEST(UnitTest, FoldsSignsThatTextsHave) {
    EXPECT_EQ(withoutSigns("µT, °/s, m/s²"), "uT, deg/s, m/s^2");
    EXPECT_EQ(withoutSigns("m·s⁻²"), "m.s^-2");
    EXPECT_EQ(withoutSigns("\xB0/s"), "deg/s");
    EXPECT_EQ(withoutSigns("\xC3\xB0"), "\xC3\xB0") << "a letter whose second byte is the degree sign's";
}

} // namespace
