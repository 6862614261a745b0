// SPDX-License-Identifier: MIT
#include "host/live/RestSign.h"

#include <gtest/gtest.h>

namespace {

using Quillmere::Core::Synchronizer;
using Quillmere::Host::RestSign;

struct RestSignTest : testing::Test {
    RestSignTest() { gate.setSleepsBetweenPasses(true); }
    bool isAtRest() const { return sign.getIsAtRest(gate); }
    void signal() {
        const Poco::FastMutex::ScopedLock lock(mutex);
        gate.signal(event);
    }

    Poco::FastMutex mutex;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    Synchronizer gate;
    RestSign sign;
};

TEST_F(RestSignTest, ALoopThatHasFoundNothingToDoRests) {
    EXPECT_FALSE(isAtRest());
    sign.set(false);
    EXPECT_EQ(sign.getDepartures(), 0u) << "it has never rested";
    sign.set(true);
    sign.set(true);
    EXPECT_TRUE(isAtRest());
    EXPECT_EQ(sign.getDepartures(), 0u);
    sign.set(false);
    EXPECT_FALSE(isAtRest());
    EXPECT_EQ(sign.getDepartures(), 1u);
}

TEST_F(RestSignTest, ASampleThatComesEndsTheRest) {
    sign.set(true);
    signal();
    EXPECT_FALSE(isAtRest()) << "before the loop knows";
    EXPECT_EQ(sign.getDepartures(), 0u);
    EXPECT_EQ(sign.takeReasons(gate), unsigned{Synchronizer::kSignal});
    EXPECT_FALSE(isAtRest()) << "and since";
    EXPECT_EQ(sign.getDepartures(), 1u);
    sign.set(true);
    EXPECT_TRUE(isAtRest());
    EXPECT_EQ(sign.getDepartures(), 1u);
}

TEST_F(RestSignTest, ASettingThatIsTurnedDoesNot) {
    sign.set(true);
    gate.stir();
    EXPECT_TRUE(isAtRest());
    EXPECT_EQ(sign.takeReasons(gate), unsigned{Synchronizer::kStir});
    EXPECT_TRUE(isAtRest());
    EXPECT_EQ(sign.getDepartures(), 0u);
}

} // namespace
