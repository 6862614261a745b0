// SPDX-License-Identifier: MIT
#include "host/live/RowHandOver.h"

#include "host/ends/RecordingException.h"

#include <gtest/gtest.h>

#include <stop_token>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;
using namespace std::chrono_literals;
using Clock = RowHandOver::Clock;

/// A result that knows only how many rows wait, and how many it has handed over each time.
class Result final : public Filter, public ResultEnd {
public:
    explicit Result(const std::string& name) : Filter(name, true) {}
    void process() override {}
    const char* getTypeName() const override { return "Result"; }

    bool getHoldsRows() const override { return held > 0; }
    void handOver() override {
        if (isFull) throw RecordingException({{}, "no room", "some"});
        handedOver.push_back(held);
        held = 0;
    }
    void setOverwrites(bool) override {}
    void checkFile(const std::vector<std::string>&, Complaints&) override {}
    void setStop(const std::stop_token&) override {}
    void giveUp() override {}
    std::string getPartialPath() const override { return ""; }
    std::vector<File> getFiles() const override { return {}; }

    int held = 0;
    bool isFull = false;
    std::vector<int> handedOver;
};

class Other final : public Filter {
public:
    Other() : Filter("other", true) {}
    void process() override {}
    const char* getTypeName() const override { return "Other"; }
};

class RowHandOverTest : public testing::Test {
protected:
    RowHandOverTest() { handOver.watch({&first, &other, &second}); }

    /// A pass that takes so long, in which the first result gets so many rows.
    void pass(Clock::duration time, int rows) {
        now += time;
        first.held += rows;
        handOver.endPass([this] {
            ++looks;
            return now;
        });
    }

    Result first{"first"};
    Other other;
    Result second{"second"};
    RowHandOver handOver;
    Clock::time_point now{1h};
    int looks = 0; ///< At the clock.
};

using Numbers = std::vector<int>;

TEST_F(RowHandOverTest, HandsOverAtRestWhatWaits) {
    first.held = 2;
    handOver.rest();
    handOver.rest();
    EXPECT_EQ(first.handedOver, Numbers{2}) << "and nothing that isn't there";
    EXPECT_EQ(second.handedOver, Numbers{});
}

TEST_F(RowHandOverTest, DoesNotKeepTheFirstRowBehindARestFromItsReader) {
    pass(1h, 1);
    EXPECT_EQ(first.handedOver, Numbers{1});
}

TEST_F(RowHandOverTest, LetsNoRowWaitForTenMillisecondsWhileOnePassChasesTheNext) {
    pass(1ms, 1);
    ASSERT_EQ(first.handedOver, Numbers{1});
    second.held = 1;
    for (int i = 0; i < 25; ++i)
        pass(1ms, 1);
    // The first of them waits for 9 ms at the end of the tenth pass, and would for too long at the next.
    EXPECT_EQ(first.handedOver, (Numbers{1, 10, 10}));
    EXPECT_EQ(second.handedOver, Numbers{1}) << "both at a time";
}

TEST_F(RowHandOverTest, CountsFromTheFirstRowThatWaitsOn) {
    pass(1ms, 1);
    for (int i = 0; i < 25; ++i)
        pass(1ms, 0);
    EXPECT_EQ(looks, 1) << "where nothing waits nobody looks at the clock";
    pass(0ms, 1);
    ASSERT_EQ(first.handedOver, (Numbers{1, 1}));
    pass(1ms, 1);
    for (int i = 0; i < 8; ++i)
        pass(1ms, 0);
    EXPECT_EQ(first.handedOver, (Numbers{1, 1}));
    pass(1ms, 0);
    EXPECT_EQ(first.handedOver, (Numbers{1, 1, 1}));
}

TEST_F(RowHandOverTest, HoldsNothingBetweenPassesThatTakeLong) {
    for (int i = 0; i < 3; ++i)
        pass(10ms, 1);
    EXPECT_EQ(first.handedOver, (Numbers{1, 1, 1}));
}

TEST_F(RowHandOverTest, NamesTheResultThatFails) {
    second.held = 1;
    second.isFull = true;
    EXPECT_THROW(handOver.rest(), RecordingException);
    EXPECT_EQ(handOver.getAsked(), &second);
    second.isFull = false;
    handOver.rest();
    EXPECT_EQ(handOver.getAsked(), nullptr);
}

TEST_F(RowHandOverTest, LeavesResultsThatAreElsewhereAlone) {
    first.held = 1;
    handOver.watch({&other, &second});
    handOver.rest();
    EXPECT_EQ(first.handedOver, Numbers{});
}

} // namespace
