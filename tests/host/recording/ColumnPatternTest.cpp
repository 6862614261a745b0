// SPDX-License-Identifier: MIT
#include "host/recording/ColumnPattern.h"
#include "host/recording/UnitText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Strings = std::vector<std::string>;
using Places = std::vector<std::size_t>;

TEST(ColumnPattern, AStarStandsForAnything) {
    EXPECT_TRUE(getFitsPattern("acc_x", "acc*"));
    EXPECT_TRUE(getFitsPattern("Accelerometer X (g)", "acc*"));
    EXPECT_TRUE(getFitsPattern("left.acc_x", "left*acc*"));
    EXPECT_TRUE(getFitsPattern("aab", "*ab"));
    EXPECT_TRUE(getFitsPattern("acc", "acc*"));
    EXPECT_TRUE(getFitsPattern("", "*"));
    EXPECT_FALSE(getFitsPattern("linacc", "acc*"));
    EXPECT_FALSE(getFitsPattern("acc", "acc_*"));
    EXPECT_FALSE(getFitsPattern("acc", ""));
}

TEST(ColumnPattern, AxesGoByTheirLetterAndNotByTheirPlace) {
    EXPECT_EQ(findByPattern({"t", "z", "y", "x"}, "*"), Places()) << "t is no axis";
    EXPECT_EQ(findByPattern({"t", "acc_z", "acc_y", "acc_x"}, "acc*"), (Places{3, 2, 1}));
    EXPECT_EQ(findByPattern({"Acc Z (g)", "Acc X (g)", "Acc Y (g)"}, "acc*"), (Places{1, 2, 0}));
    EXPECT_EQ(findByPattern({"qx", "qy", "qz", "qw"}, "q*"), (Places{3, 0, 1, 2}));
    EXPECT_EQ(findByPattern({"accz", "accx"}, "acc*"), (Places{1, 0}));
    EXPECT_EQ(findByPattern({"t", "emg"}, "e*"), (Places{1})) << "a single one needs no axis";
}

TEST(ColumnPattern, UnitsTellNoAxes) {
    EXPECT_EQ(findByPattern({"ay (mg)", "ax (g)", "az (g)"}, "a*"), (Places{1, 0, 2}));
    EXPECT_EQ(findByPattern({"acc[y]", "acc[x]", "acc[z]"}, "acc*"), (Places{1, 0, 2}));
    EXPECT_EQ(findByPattern({"acc_x (g)", "acc_x (mg)"}, "acc*"), Places()) << "one axis in two units";
}

TEST(ColumnPattern, ColumnsOfAResultGoByTheirCount) {
    EXPECT_EQ(findByPattern({"t", "a[1] [g]", "a[0] [g]", "a[10] [g]", "a[2] [g]"}, "a*"),
              (Places{2, 1, 4, 3}));
    EXPECT_EQ(findByPattern({"a[0]", "a[1]"}, "a*"), (Places{0, 1}));
    EXPECT_EQ(findByPattern({"a[0]", "ab[1]"}, "a*"), Places()) << "of two pins";
    EXPECT_EQ(findByPattern({"a[0]", "a[1]", "a_norm"}, "a*"), Places());
}

TEST(ColumnPattern, OthersThanAxesAreNotPutInAnyOrder) {
    EXPECT_EQ(findByPattern({"emg1", "emg2"}, "emg*"), Places());
    EXPECT_EQ(findByPattern({"LN_X", "LN_Y", "WR_X", "WR_Y"}, "*_*"), Places()) << "two accelerometers";
    EXPECT_EQ(findByPattern({"acc_x", "acc_y", "acc_norm"}, "acc*"), Places());
    EXPECT_EQ(findByPattern({"acc_x", "acc_X"}, "acc*"), Places()) << "an axis twice";
    EXPECT_EQ(namesThatFit({"emg1", "t", "emg2"}, "emg*"), (Strings{"emg1", "emg2"}));
}

TEST(UnitText, StandsInBracketsOrBehindABar) {
    EXPECT_EQ(unitOfName("Time (s)"), "s");
    EXPECT_EQ(unitOfName("acc [m/s^2]"), "m/s^2");
    EXPECT_EQ(unitOfName("a (m/(s^2))"), "m/(s^2)");
    EXPECT_EQ(unitOfName("acc_x_m/s^2"), "m/s^2");
    EXPECT_EQ(unitOfName("acc_x"), "");
    EXPECT_EQ(unitOfName("(s)"), "s");
    EXPECT_EQ(unitOfName(""), "");
    EXPECT_EQ(nameWithoutUnit("Time (s)"), "Time");
    EXPECT_EQ(nameWithoutUnit("time_us"), "time");
    EXPECT_EQ(nameWithoutUnit("acc_x"), "acc_x");
}

TEST(UnitText, OfTimeIsWhatMakesASecond) {
    EXPECT_EQ(unitsPerSecond("s"), 1.0);
    EXPECT_EQ(unitsPerSecond("[ms]"), 1e3);
    EXPECT_EQ(unitsPerSecond("\xC2\xB5s"), 1e6);
    EXPECT_EQ(unitsPerSecond("Nanoseconds"), 1e9);
    EXPECT_FALSE(unitsPerSecond("g"));
    EXPECT_FALSE(unitsPerSecond(""));
}

} // namespace
