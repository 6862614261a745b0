// SPDX-License-Identifier: MIT
#include "host/inspection/AxisGroups.h"
#include "host/inspection/UnitGuess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Kind = RecordingReader::Column::Kind;
using Strings = std::vector<std::string>;

std::vector<RecordingReader::Column> columnsOf(const Strings& names) {
    std::vector<RecordingReader::Column> columns(names.size());
    for (std::size_t i = 0; i < names.size(); ++i)
        columns[i].name = names[i];
    return columns;
}

/// Each as `name: column column column`.
Strings groupsOf(const Strings& names) {
    Strings texts;
    for (const AxisGroup& group : findAxisGroups(columnsOf(names))) {
        std::string& text = texts.emplace_back(group.name + ":");
        for (const std::size_t column : group.columns)
            text += " " + std::to_string(column);
    }
    return texts;
}

TEST(AxisGroups, AreFoundByTheLetterInWhichNamesDiffer) {
    struct Case {
        std::string name;
        Strings columns;
        Strings groups;
    };
    const Case cases[] = {
        {"in one order", {"t", "acc_x", "acc_y", "acc_z"}, {"acc: 1 2 3"}},
        {"in another order", {"z", "y", "x"}, {": 2 1 0"}},
        {"with units",
         {"Accelerometer X (g)", "Accelerometer Y (g)", "Accelerometer Z (g)"},
         {"Accelerometer: 0 1 2"}},
        {"a unit behind", {"a_x_m/s^2", "a_y_m/s^2", "a_z_m/s^2"}, {"a: 0 1 2"}},
        {"other letters like axes", {"max_x", "max_y", "max_z", "yaw"}, {"max: 0 1 2"}},
        {"groups in turn", {"l.ax", "r.ax", "l.ay", "r.ay", "l.az", "r.az"}, {"l.a: 0 2 4", "r.a: 1 3 5"}},
        {"a quaternion", {"q_w", "q_x", "q_y", "q_z"}, {"q: 0 1 2 3"}},
        {"an axis missing", {"acc_x", "acc_y", "gyr_z"}, {}},
        {"an axis twice", {"acc_x", "acc_X", "acc_y", "acc_z"}, {}},
        {"digits are no axes", {"emg1", "emg2", "emg3"}, {}},
    };
    for (const Case& one : cases)
        EXPECT_EQ(groupsOf(one.columns), one.groups) << one.name;
}

TEST(AxisGroups, HaveNumbersAlone) {
    std::vector<RecordingReader::Column> columns = columnsOf({"x", "y", "z"});
    columns[1].kind = Kind::Other;
    EXPECT_TRUE(findAxisGroups(columns).empty());
}

TEST(AxisGroups, TakeNoTimeForWideTables) {
    Strings names;
    for (int i = 0; i < 20000; ++i)
        names.push_back(std::string(150, 'x') + std::to_string(i));
    names.push_back(std::string(1U << 20U, 'x'));
    EXPECT_TRUE(findAxisGroups(columnsOf(names)).empty());
}

TEST(UnitGuess, IsByGravityAndTheFieldOfTheEarth) {
    EXPECT_EQ(guessUnit("acc", 9.81), "m/s^2");
    EXPECT_EQ(guessUnit("left.Acc", 1.01), "g");
    EXPECT_EQ(guessUnit("acc", 998.0), "mg");
    EXPECT_EQ(guessUnit("mag", 48.0), "uT");
    EXPECT_EQ(guessUnit("Magnetometer", 0.48), "gauss");
    EXPECT_EQ(guessUnit("acc", 48.0), "");
    EXPECT_EQ(guessUnit("gyr", 9.81), "") << "a turn rate is no gravity";
    EXPECT_EQ(guessUnit("m", 1.0), "") << "what is called so is a field, too";
    EXPECT_EQ(guessUnit("mag", 1.0), "") << "it may be normalized";
}

} // namespace
