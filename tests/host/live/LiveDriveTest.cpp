// SPDX-License-Identifier: MIT
#include "host/live/LiveDrive.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;

class LiveDriveTest : public testing::Test {
protected:
    Timeline timeline;
    LiveDrive drive{LiveClock::kMaximum, {}, false, timeline};
};

TEST_F(LiveDriveTest, TheLastOfItsDriversEndsTheRun) {
    for (int i = 0; i < 3; ++i)
        drive.addDriver();
    drive.endDriver();
    drive.endDriver();
    EXPECT_FALSE(drive.getIsOver());
    drive.addDriver(); // one that is added meanwhile counts
    drive.endDriver();
    EXPECT_FALSE(drive.getIsOver());
    drive.endDriver();
    EXPECT_TRUE(drive.getIsOver());
    EXPECT_FALSE(drive.getIsCut()) << "what is in the links still comes out";
}

TEST_F(LiveDriveTest, WhoeverSaysSoEndsItWhateverStillDrives) {
    drive.addDriver();
    drive.end();
    EXPECT_TRUE(drive.getIsOver());
    EXPECT_FALSE(drive.getIsCut());
    EXPECT_EQ(drive.getEnding().failure, "");
}

TEST_F(LiveDriveTest, ACutIsAnEndWithAReason) {
    drive.cut("no room");
    EXPECT_TRUE(drive.getIsCut());
    EXPECT_TRUE(drive.getIsOver());
    EXPECT_EQ(drive.getEnding().failure, "no room");
    drive.cut("no paper");
    EXPECT_EQ(drive.getEnding().failure, "no room") << "the first counts";
}

TEST_F(LiveDriveTest, ARunThatDrainsCanBeCut) {
    drive.end();
    drive.cut("no room");
    EXPECT_TRUE(drive.getIsCut());
    EXPECT_EQ(drive.getEnding().failure, "no room");
}

TEST_F(LiveDriveTest, EveryoneWhoWaitsHearsOfTheEnd) {
    std::atomic<int> seen{0};
    std::vector<std::thread> waiting;
    for (int i = 0; i < 3; ++i)
        waiting.emplace_back([&] {
            drive.waitForEnd();
            seen += drive.getIsOver() ? 1 : 100;
        });
    EXPECT_EQ(seen, 0);
    drive.addDriver();
    drive.endDriver();
    for (std::thread& thread : waiting)
        thread.join();
    EXPECT_EQ(seen, 3);
    drive.waitForEnd(); // who comes later doesn't wait
}

TEST_F(LiveDriveTest, OfManyWhoCutItAtOnceOneIsHeard) {
    std::vector<std::thread> cutting;
    for (const char* const reason : {"aaaaaaaaaaaaaaaaaaaa", "bbbbbbbbbbbbbbbbbbbb", "cccccccccccccccccccc"})
        cutting.emplace_back([this, reason] { drive.cut(reason); });
    drive.waitForEnd();
    const std::string failure = drive.getEnding().failure;
    for (std::thread& thread : cutting)
        thread.join();
    EXPECT_EQ(failure, std::string(20, failure.at(0)));
    EXPECT_EQ(drive.getEnding().failure, failure);
}

} // namespace
