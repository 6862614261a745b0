// SPDX-License-Identifier: MIT
#include "host/live/TimeBoard.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Quillmere::Core;
using Quillmere::Host::TimeBoard;

/// Three layouts, of which the first two meet.
class TimeBoardTest : public testing::Test {
protected:
    TimeBoardTest() {
        for (std::size_t layout = 0; layout < 3; ++layout)
            board.enter(layout, gates[layout]);
        board.arrange({{1}, {0}, {}});
    }
    bool begin(std::size_t layout, double time) {
        if (!board.getMayBegin(layout, time)) return false;
        board.countRound(layout);
        return true;
    }
    /// Rounds that a layout begins, one a second from `time` on, before it has to wait.
    unsigned run(std::size_t layout, double time) {
        unsigned rounds = 0;
        while (rounds < 1000 && begin(layout, time + rounds))
            ++rounds;
        return rounds;
    }
    bool getIsStirred(std::size_t layout) { return gates[layout].takeReasons() != 0; }

    Synchronizer gates[3];
    TimeBoard board;
};

TEST_F(TimeBoardTest, NobodyRunsAwayFromWhomItMeets) {
    EXPECT_EQ(run(0, 0.0), TimeBoard::kMostAhead) << "nobody knows yet where the other is";
    EXPECT_EQ(board.getAwaited(0), 1u);
    EXPECT_EQ(run(2, 0.0), 1000u) << "meets nobody";
    EXPECT_TRUE(begin(1, 0.0));
    EXPECT_FALSE(getIsStirred(0));
    EXPECT_EQ(run(1, 1.0), 2u * TimeBoard::kMostAhead - 1) << "from the round on in which it was as far";
    EXPECT_TRUE(getIsStirred(0));
    EXPECT_EQ(run(0, TimeBoard::kMostAhead), 2u * TimeBoard::kMostAhead);
}

TEST_F(TimeBoardTest, RoundsOfOneTimeWaitForNobody) {
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(begin(0, 5.0));
        EXPECT_TRUE(begin(1, 5.0));
    }
}

TEST_F(TimeBoardTest, WhoHasEndedIsWaitedForNoMore) {
    EXPECT_EQ(run(0, 0.0), TimeBoard::kMostAhead);
    EXPECT_FALSE(getIsStirred(0));
    board.end(1);
    EXPECT_TRUE(getIsStirred(0));
    EXPECT_EQ(run(0, TimeBoard::kMostAhead), 1000u);
}

TEST_F(TimeBoardTest, ANewArrangementForgetsWhoWaited) {
    EXPECT_EQ(run(0, 0.0), TimeBoard::kMostAhead);
    board.arrange({{}, {2}, {1}});
    EXPECT_EQ(run(0, 0.0), 1000u);
    EXPECT_LE(run(1, 0.0), TimeBoard::kMostAhead);
    EXPECT_TRUE(begin(2, 1000.0));
    EXPECT_TRUE(getIsStirred(1));
    EXPECT_FALSE(getIsStirred(0));
}

} // namespace
