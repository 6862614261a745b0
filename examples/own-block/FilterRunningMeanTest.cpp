// SPDX-License-Identifier: MIT
#include "FilterRunningMean.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

using Support::agree;
using Support::Feed;
using Support::matrix;
using Support::same;

TEST(FilterRunningMeanTest, FollowsByAWindowsPart) {
    FilterRunningMean block("mean");
    Feed feed(block);
    feed.set("Window", 4.0);
    EXPECT_TRUE(agree(feed.run("in", matrix({{8.0, -4.0}})), matrix({{8.0, -4.0}}), same));
    EXPECT_TRUE(agree(feed.run("in", matrix({{0.0, 0.0}}), 0.5), matrix({{6.0, -3.0}}), same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 0.5, same));
}

TEST(FilterRunningMeanTest, StartsAnew) {
    FilterRunningMean block("mean");
    Feed feed(block);
    feed.run("in", matrix({{1.0}}));
    feed.fire("Reset");
    EXPECT_TRUE(agree(feed.run("in", matrix({{5.0}})), matrix({{5.0}}), same));
    feed.give("reset", matrix({{1.0}}));
    EXPECT_TRUE(agree(feed.run("in", matrix({{7.0}})), matrix({{7.0}}), same));
    EXPECT_TRUE(agree(feed.run("in", matrix({{1.0, 2.0}})), matrix({{1.0, 2.0}}), same));
}
