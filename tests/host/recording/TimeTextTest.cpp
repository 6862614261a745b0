// SPDX-License-Identifier: MIT
#include "host/recording/TimeText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace {

using namespace Quillmere::Host;

constexpr std::int64_t kSecond = 1'000'000'000;
/// `date -u -d '2019-08-06 10:25:50' +%s`
constexpr std::int64_t kMoment = 1565087150 * kSecond;

TEST(TimeText, ADateAndATimeAreNanosecondsSince1970) {
    const struct {
        std::string text;
        std::int64_t nanoseconds;
    } rows[] = {
        {"1970-01-01", 0},
        {"1970-01-01T00:00:00Z", 0},
        {"2019-08-06 10:25:50", kMoment},
        {"2019-08-06 10:25:50:020", kMoment + 20'000'000},
        {"2019-08-06T10:25:50.5", kMoment + kSecond / 2},
        {"2019-08-06T10:25:50,123456789", kMoment + 123'456'789},
        {"2019-08-06T10:25:50.1234567899", kMoment + 123'456'789},
        {"2019-08-06T12:25:50+02:00", kMoment},
        {"2019-08-06T06:25:50.000-0400", kMoment},
        {"2019-08-06T12:25:50 +02", kMoment},
        {"2019-08-06 10:25:50 UTC", kMoment},
        {"2019/08/06 10:25:50", kMoment},
        {"6.8.2019 10:25:50", kMoment},
        {"06/08/2019 10:25:50 AM", kMoment},
        {"06/08/2019 10:25:50 pm", kMoment + 12 * 3600 * kSecond},
        {"06/08/2019 12:25:50 AM", kMoment - 10 * 3600 * kSecond},
        {"10:25:50.25", (10 * 3600 + 25 * 60 + 50) * kSecond + kSecond / 4},
        {"2020-02-29 00:00:00", 1582934400 * kSecond},
        {"2000-03-01", 951868800 * kSecond},
        {"1969-12-31 23:59:59.5", -kSecond / 2},
    };
    for (const auto& row : rows)
        EXPECT_EQ(nanosecondsOf(row.text, DateOrder::DayFirst), row.nanoseconds) << row.text;
    EXPECT_EQ(nanosecondsOf("8/6/2019 10:25:50", DateOrder::MonthFirst), kMoment);
}

TEST(TimeText, WhatIsNoTimeOfAnyDayIsNone) {
    const std::string texts[] = {"",
                                 "noon",
                                 "12",
                                 "12.5",
                                 "2019-02-29",
                                 "2019-13-01",
                                 "2019-00-10",
                                 "2019-01-00",
                                 "24:00:00",
                                 "10:60:00",
                                 "10:00:61",
                                 "2019-08",
                                 "10:25:50.",
                                 "10:25:50x",
                                 "2019-08-06 10",
                                 "2019-08-06x10:25",
                                 "2019-08-06T10:25:50+",
                                 "1-2-3",
                                 "12345-01-01",
                                 "13:00:00 PM",
                                 "2019-08-06T10:25:50+99:00",
                                 "9999-01-01",
                                 "::",
                                 "1:2:3:4:5"};
    for (const std::string& text : texts)
        EXPECT_FALSE(getIsTimeText(text)) << text;
}

TEST(TimeText, ADateWithItsYearBehindMayBeTwoDays) {
    EXPECT_EQ(dateOrderOf("13/04/2021 10:00:00"), DateOrder::DayFirst);
    EXPECT_EQ(dateOrderOf("04/13/2021"), DateOrder::MonthFirst);
    EXPECT_EQ(dateOrderOf("03.04.2021"), DateOrder::DayFirst);
    EXPECT_FALSE(dateOrderOf("03/04/2021"));
    EXPECT_FALSE(dateOrderOf("2021-04-13"));
    EXPECT_TRUE(getIsYearLast("03/04/2021 1:00:00"));
    EXPECT_FALSE(getIsYearLast("2021/03/04"));
}

TEST(TimeText, ADateIsWrittenAsItIsRead) {
    for (const char* const text :
         {"2019-08-06 10:25:50", "2020-02-29 23:59:59.5", "1969-12-31 00:00:00.000000001",
          "2000-12-31 00:00:00", "1900-03-01 00:00:00"})
        EXPECT_EQ(dateText(*nanosecondsOf(text, DateOrder::YearFirst)), text);
}

TEST(TimeText, ANumberKeepsItsDigits) {
    const auto ofNumber = [](const std::string& text, char decimal = '.') {
        return tickOfNumber(text, decimal);
    };
    EXPECT_EQ(ofNumber("1635323262012345679")->since(*ofNumber("1635323262012345678")), 1.0);
    EXPECT_EQ(ofNumber("1635323262.015625")->since(*ofNumber("1635323262")), 0.015625);
    EXPECT_EQ(ofNumber("-1.25")->getValue(), -1.25);
    EXPECT_EQ(ofNumber("+2.")->getValue(), 2.0);
    EXPECT_EQ(ofNumber(".5")->getValue(), 0.5);
    EXPECT_EQ(ofNumber("1,5", ',')->getValue(), 1.5);
    EXPECT_EQ(ofNumber("1.5e3")->getValue(), 1500.0);
    for (const char* const text : {"", "-", ".", "1.5.5", "x", "nan", "inf", "1e99", "1 2", "--1", "+-1"})
        EXPECT_FALSE(ofNumber(text)) << text;
    EXPECT_FALSE(ofNumber("1.5", ','));
}

} // namespace
