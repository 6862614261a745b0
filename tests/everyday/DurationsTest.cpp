// SPDX-License-Identifier: MIT
#include "everyday/Durations.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Support;

namespace {
/// Gives a level for each letter, a second apart: `#` is on, `.` off.
void give(Feed& feed, const std::string& levels, double from = 0.0) {
    for (std::size_t i = 0; i < levels.size(); ++i) {
        feed.give("in", matrix({{levels[i] == '#' ? 1.0 : 0.0}}), from + static_cast<double>(i));
        feed.step();
    }
}
} // namespace

TEST(DurationsTest, Catalogue) {
    Durations block("durations");
    EXPECT_STREQ(block.getTypeName(), "Durations");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range double \"Least\" 0 in [0;1000000000] step 0.10000000000000001\n"
                                "range double \"Gap\" 0 in [0;1000000000] step 0.10000000000000001\n"
                                "command \"Reset\"\n"
                                "command \"Finish\"\n");
}

TEST(DurationsTest, TellsBeginEndAndLength) {
    struct Row {
        const char* name;
        const char* levels;
        double least;
        double gap;
        std::vector<MatrixXd> events;
        std::vector<double> stamps;
    };
    const Row rows[] = {
        {.name = "two",
         .levels = ".##.#..",
         .least = 0,
         .gap = 0,
         .events = {matrix({{1, 3, 2}}), matrix({{4, 5, 1}})},
         .stamps = {3, 5}},
        {.name = "on from the first",
         .levels = "##.",
         .least = 0,
         .gap = 0,
         .events = {matrix({{0, 2, 2}})},
         .stamps = {2}},
        {.name = "without an end", .levels = ".###", .least = 0, .gap = 0, .events = {}, .stamps = {}},
        {.name = "too short",
         .levels = "#.##.",
         .least = 2,
         .gap = 0,
         .events = {matrix({{2, 4, 2}})},
         .stamps = {4}},
        {.name = "which the pause may not end",
         .levels = "##.##..",
         .least = 0,
         .gap = 1,
         .events = {},
         .stamps = {}},
        {.name = "over a pause, told behind it",
         .levels = "##.##...",
         .least = 0,
         .gap = 1,
         .events = {matrix({{0, 5, 5}})},
         .stamps = {7}},
    };
    for (const Row& row : rows) {
        Durations block("durations");
        Feed feed(block);
        feed.set("Least", row.least);
        feed.set("Gap", row.gap);
        give(feed, row.levels);
        EXPECT_TRUE(agree(feed.values(), row.events, same)) << row.name;
        std::vector<double> stamps;
        for (const Sample& event : feed.sent())
            stamps.push_back(event.timeStamp);
        EXPECT_EQ(stamps, row.stamps) << row.name;
    }
}

TEST(DurationsTest, AJumpInTimeEndsWhatPauses) {
    Durations block("durations");
    Feed feed(block);
    feed.set("Gap", 2.0);
    give(feed, "#.");
    give(feed, "##....", 10.0);
    EXPECT_TRUE(agree(feed.values(), {matrix({{0, 1, 1}}), matrix({{10, 12, 2}})}, same));
    EXPECT_TRUE(agree(feed.sent().front().timeStamp, 10.0, same)) << "which the first sample behind it shows";
}

TEST(DurationsTest, AtTheFinishWhatIsUnderWayEndsWithTheLastSample) {
    struct Row {
        const char* levels;
        double gap;
        std::vector<MatrixXd> events;
    };
    const Row rows[] = {{".###", 0, {matrix({{1, 3, 2}})}},
                        {".#.", 5, {matrix({{1, 2, 1}})}}, // a pause that may have gone on
                        {".##.", 0, {matrix({{1, 3, 2}})}},
                        {"...", 0, {}}};
    for (const Row& row : rows) {
        Durations block("durations");
        Feed feed(block);
        feed.set("Gap", row.gap);
        give(feed, row.levels);
        feed.fire("Finish");
        feed.step();
        EXPECT_TRUE(agree(feed.values(), row.events, same)) << row.levels;
        give(feed, ".", 10.0);
        EXPECT_TRUE(agree(feed.values(), row.events, same)) << "told once: " << row.levels;
    }
    Durations block("durations");
    Feed feed(block);
    give(feed, "##");
    feed.fire("Reset");
    feed.fire("Finish");
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "forgotten";
}

TEST(DurationsTest, WhatIsOn) {
    Durations block("durations");
    Feed feed(block);
    double time = 0.0;
    for (const double level : {1e-300, -1.0, kInf, kNaN, 2.0, -0.0}) {
        feed.give("in", matrix({{level, 5.0}}), time);
        feed.step();
        feed.give("in", MatrixXd(0, 0), time + 0.5); // is no level
        feed.step();
        time += 1.0;
    }
    EXPECT_TRUE(agree(feed.values(), {matrix({{0, 1, 1}}), matrix({{2, 3, 1}}), matrix({{4, 5, 1}})}, same));
}

TEST(DurationsTest, ResetForgetsWhatIsUnderWay) {
    Durations block("durations");
    Feed feed(block);
    give(feed, "##");
    feed.fire("Reset");
    give(feed, "#.", 2.0);
    EXPECT_TRUE(agree(feed.values(), {matrix({{2, 3, 1}})}, same));
}

TEST(DurationsTest, ASteadyStepAllocatesNothing) {
    Durations block("durations");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", matrix({{0.0}})), 0U);
}
