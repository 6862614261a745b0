// SPDX-License-Identifier: MIT
#include "blocks/FilterBandPass.h"
#include "blocks/FilterButterworth.h"
#include "blocks/FilterGain.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/RowTwins.h"

#include <gtest/gtest.h>

// Many rows in one call give the bits of as many steps, and what only a step can do is left to one.

using namespace Support;

namespace {
double drawn(std::mt19937_64& random, double most) {
    return std::uniform_real_distribution<double>(0.0, most)(random);
}
} // namespace

TEST(RowStepperTest, FilterButterworth) {
    checkRows({.name = "FilterButterworth",
               .make = [] { return std::make_unique<FilterButterworth>("smooth"); },
               .change =
                   [](Filter& block, std::mt19937_64& random) {
                       switch (random() % 6) {
                       case 0:
                           return write(block, "Order", static_cast<int>(random() % 11));
                       case 1:
                           return write(block, "RelativeCutOffFreq", drawn(random, 1.0));
                       case 2:
                           return write(block, "Mode", static_cast<unsigned>(random() % 2));
                       case 3:
                           return fire(block, "Init");
                       default:
                           return;
                       }
                   }});
}

TEST(RowStepperTest, FilterBandPass) {
    checkRows({.name = "FilterBandPass",
               .make = [] { return std::make_unique<FilterBandPass>("band"); },
               .change =
                   [](Filter& block, std::mt19937_64& random) {
                       switch (random() % 5) {
                       case 0:
                           return write(block, "Order", static_cast<int>(random() % 11));
                       case 1:
                           return write(block, "Low Cutoff Freq. (relative)", drawn(random, 0.3));
                       case 2:
                           return write(block, "High Cutoff Freq. (relative)", drawn(random, 1.0));
                       default:
                           return;
                       }
                   }});
}

TEST(RowStepperTest, FilterGain) {
    checkRows({.name = "FilterGain",
               .make = [] { return std::make_unique<FilterGain>("gain"); },
               .change = [](Filter& block,
                            std::mt19937_64& random) { write(block, "Gain", 10.0 - drawn(random, 20.0)); }});
}

TEST(RowStepperTest, AResetThatWaitsIsTakenByAStep) {
    FilterButterworth block("smooth");
    Feed feed(block);
    feed.set("RelativeCutOffFreq", 0.2);
    EXPECT_EQ(block.getRowWidth(3), RowStepper::kOneByOne) << "nothing has come yet";
    feed.run("in", matrix({{0, 0, 0}}));
    EXPECT_EQ(block.getRowWidth(3), 3);
    EXPECT_EQ(block.getRowWidth(2), RowStepper::kOneByOne) << "another shape";
    feed.give("reset", matrix({{1}}));
    EXPECT_EQ(block.getRowWidth(3), RowStepper::kOneByOne);
    EXPECT_TRUE(agree(feed.run("in", matrix({{5, 6, 7}})), matrix({{5, 6, 7}}), withinRel(1e-12)));
    EXPECT_EQ(block.getRowWidth(3), 3);
    feed.set("Order", 3);
    EXPECT_EQ(block.getRowWidth(3), RowStepper::kOneByOne) << "a setting that hasn't been read";
}
