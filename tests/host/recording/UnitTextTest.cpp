// SPDX-License-Identifier: MIT
#include "host/recording/UnitText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;

TEST(UnitTextTest, TellsUnitsThatStandAlone) {
    for (const char* const unit : {"s",        "sec",        "ms",
                                   "us",       "µs",         "ns",
                                   "min",      "h",          "Hz",
                                   "m/s^2",    "m/s2",       "m/s²",
                                   "m/s/s",    "m/(s^2)",    "m/(sec^2)",
                                   "m/s**2",   "ms^-2",      "g",
                                   "mg",       "gravity",    "deg/s",
                                   "°/s",      "deg/sec",    "degrees/s",
                                   "dps",      "deg",        "degrees",
                                   "rad/s",    "rad/sec",    "rad",
                                   "mdps",     "uT",         "µT",
                                   "mT",       "nT",         "T",
                                   "gauss",    "mgauss",     "Gs",
                                   "uV",       "mV",         "V",
                                   "mA",       "kOhm",       "kOhms",
                                   "uSiemens", "degC",       "°C",
                                   "C",        "celsius",    "degrees celsius",
                                   "Pa",       "hPa",        "kPa",
                                   "mbar",     "N",          "Nm",
                                   "m",        "mm",         "cm",
                                   "lux",      "%",          "local_flux",
                                   "bpm",      "[furlongs]", "(x)",
                                   "no_units", "n/a",        "counts"})
        EXPECT_TRUE(getIsUnit(unit)) << unit;
    for (const char* const name : {"", "a", "x", "time", "hours", "minutes", "millis", "acc_x", "1", "left"})
        EXPECT_FALSE(getIsUnit(name)) << name;
}

TEST(UnitTextTest, KnowsWhatSaysThatThereIsNone) {
    for (const char* const none : {"", " ", "no_units", "[No units]", "n/a", "-"})
        EXPECT_TRUE(getSaysNoUnit(none)) << none;
    for (const char* const unit : {"g", "counts", "a.u.", "furlongs"})
        EXPECT_FALSE(getSaysNoUnit(unit)) << unit;
    EXPECT_FALSE(getIsUnit("-")) << "a cell that is left out";
}

TEST(UnitTextTest, TakesUnitsFromNames) {
    struct Row {
        const char* name;
        const char* label;
        const char* unit;
    };
    constexpr Row rows[]{
        {"Time (s)", "Time", "s"},
        {"acc [m/(s^2)]", "acc", "m/(s^2)"},
        {"acc_x_m/s^2", "acc_x", "m/s^2"},
        {"gyr_x_dps", "gyr_x", "dps"},
        {"accel[0] [g]", "accel[0]", "g"},
        {"accel[0]", "accel", ""}, // a number is no unit, though brackets aren't the name's
        {"timestamp (-0400)", "timestamp", ""},
        {"UTC_Second", "UTC_Second", ""},
        {"vel_n", "vel_n", ""},
        {"acc", "acc", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(nameWithoutUnit(row.name), row.label) << row.name;
        EXPECT_EQ(unitOfName(row.name), row.unit) << row.name;
    }
}

TEST(UnitTextTest, PutsInANameWhatIsFoundThereAgain) {
    for (const char* const unit : {"g", "m/s²", "°/s", "m/(s^2)", "counts", "a.u.", "%"}) {
        EXPECT_EQ(unitForName(unit), unit);
        EXPECT_EQ(unitOfName("accel[0] [" + std::string(unit) + "]"), unit);
    }
    EXPECT_EQ(unitForName("\xB0/s"), "deg/s") << "no UTF-8, so by its name";
    for (const char* const other : {"", " g ", "a]b", "[x]", "1", "a,b", "a\"b", "a\nb", "\xFF"})
        EXPECT_EQ(unitForName(other), std::string(other) == " g " ? "g" : "") << other;
}

TEST(UnitTextTest, CountsUnitsOfTimeInWhateverLetters) {
    EXPECT_EQ(unitsPerSecond("s"), 1.0);
    EXPECT_EQ(unitsPerSecond("[MS]"), 1e3);
    EXPECT_EQ(unitsPerSecond("µs"), 1e6);
    EXPECT_EQ(unitsPerSecond("Nanoseconds"), 1e9);
    EXPECT_EQ(unitsPerSecond("mins"), 1.0 / 60.0);
    EXPECT_EQ(unitsPerSecond("hours"), 1.0 / 3600.0);
    EXPECT_EQ(unitsPerSecond("g"), std::nullopt);
    EXPECT_EQ(unitsPerSecond(""), std::nullopt);
}

TEST(UnitTextTest, SeveralOfAUnitAreNone) {
    for (const char* const name : {"Time (10ms)", "[10 ms]", "t [10ms]"}) {
        ASSERT_TRUE(multipleOfUnit(name)) << name;
        EXPECT_EQ(multipleOfUnit(name)->seconds, 0.01) << name;
    }
    EXPECT_EQ(multipleOfUnit("Time (10ms)")->text, "10ms");
    for (const char* const name :
         {"Time (ms)", "Time (1 ms)", "timestamp (-0400)", "timestamp (0400)", "acc (2g)", "10ms", "t (", ""})
        EXPECT_FALSE(multipleOfUnit(name)) << name;
}

} // namespace
