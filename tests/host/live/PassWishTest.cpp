// SPDX-License-Identifier: MIT
#include "host/live/PassWish.h"

#include <gtest/gtest.h>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;
using Waker = PassWish::Waker;

class Node final : public Filter {
public:
    explicit Node(const std::string& name) : Filter(name, true), in("in", this), out("out", this) {}
    void process() override {}
    const char* getTypeName() const override { return "Node"; }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
};

/// A layout of two blocks, the first of which another layout feeds.
class PassWishTest : public testing::Test {
protected:
    static constexpr std::uint64_t kMost = 3;

    PassWishTest() {
        elsewhere.add(sender);
        layout.add(first);
        layout.add(second);
        sender.out.attach(first.in, false);
        first.out.attach(second.in, false);
        waiting.watch({&first, &second});
        wish.takeUp(kMost);
        wish.start();
    }
    /// A pass in which something does or doesn't move.
    void pass(bool moves, bool isDriven) {
        wish.take();
        if (moves) takeFirst();
        wish.endPass(waiting, isDriven);
    }
    void takeFirst() {
        ASSERT_TRUE(first.in.hasData());
        first.in.take();
    }
    bool getIsWanted() { return wish.getIsWanted(waiting); }

    LayoutManager layout{"layout"};
    LayoutManager elsewhere{"elsewhere"};
    Node sender{"sender"};
    Node first{"first"};
    Node second{"second"};
    WaitingSamples waiting;
    PassWish wish;
};

TEST_F(PassWishTest, AtTheStartOnlyWhatWaitsIsAReason) {
    EXPECT_FALSE(getIsWanted());
    EXPECT_TRUE(wish.getMayRest());
    sender.out.send(0);
    wish.start();
    EXPECT_TRUE(getIsWanted());
    EXPECT_FALSE(wish.getMayRest());
}

TEST_F(PassWishTest, ASampleIsAReasonUnlessAPassHasTakenIt) {
    ASSERT_FALSE(getIsWanted());
    wish.wake(Waker::Sample, kMost);
    EXPECT_FALSE(getIsWanted()) << "the pass before took it";
    sender.out.send(0);
    EXPECT_FALSE(getIsWanted()) << "nobody has said so yet";
    wish.wake(Waker::Nobody, kMost);
    EXPECT_FALSE(getIsWanted());
    wish.wake(Waker::Sample, kMost);
    EXPECT_TRUE(getIsWanted());
}

TEST_F(PassWishTest, WhoeverWantsALookGetsOne) {
    wish.wake(Waker::Somebody, kMost);
    EXPECT_TRUE(getIsWanted());
    pass(false, false);
    EXPECT_FALSE(getIsWanted()) << "one";
    EXPECT_TRUE(wish.getMayRest());
}

TEST_F(PassWishTest, PassesGoOnAsLongAsTheyMoveWhatWaits) {
    first.in.setBufferCapacity(2);
    sender.out.send(0);
    sender.out.send(1);
    wish.wake(Waker::Sample, kMost);
    ASSERT_TRUE(getIsWanted());
    pass(true, false);
    EXPECT_TRUE(getIsWanted()) << "one is left";
    pass(false, false);
    EXPECT_FALSE(getIsWanted()) << "and stays";
}

TEST_F(PassWishTest, WhatStaysInTheLayoutWaitsForTheNextRoundWhereThereIsOne) {
    first.in.setBufferCapacity(2);
    for (const bool isDriven : {true, false}) {
        second.in.clear();
        sender.out.send(0);
        wish.wake(Waker::Sample, kMost);
        ASSERT_TRUE(getIsWanted());
        wish.take();
        takeFirst();
        first.out.send(0); // behind the step of the second
        wish.endPass(waiting, isDriven);
        EXPECT_EQ(wish.getMayRest(), isDriven);
    }
}

TEST_F(PassWishTest, SoManyPassesAndNoMore) {
    first.in.setBufferCapacity(10);
    for (int i = 0; i < 10; ++i)
        sender.out.send(i);
    wish.wake(Waker::Sample, kMost);
    for (std::uint64_t left = kMost; left > 0; --left) {
        ASSERT_TRUE(getIsWanted());
        pass(true, false);
    }
    EXPECT_FALSE(getIsWanted());
    wish.wake(Waker::Sample, 0);
    EXPECT_TRUE(getIsWanted()) << "a sample is worth one at least";
}

TEST_F(PassWishTest, WhileItDrainsOnlyWhatWaitsIsAReasonAndNobodyAddsPasses) {
    sender.out.send(0);
    wish.beginDrain(1);
    EXPECT_TRUE(wish.getIsDraining());
    ASSERT_TRUE(getIsWanted());
    pass(true, true);
    wish.wake(Waker::Somebody, kMost);
    wish.takeUp(kMost);
    sender.out.send(1);
    EXPECT_FALSE(getIsWanted());
}

TEST_F(PassWishTest, WhileItDrainsWhatStaysInTheLayoutCounts) {
    wish.beginDrain(kMost);
    sender.out.send(0);
    ASSERT_TRUE(getIsWanted());
    wish.take();
    takeFirst();
    first.out.send(0);
    wish.endPass(waiting, true);
    EXPECT_TRUE(getIsWanted());
}

TEST_F(PassWishTest, LinksTakenUpWithinAPassAreLookedAtBehindIt) {
    wish.wake(Waker::Somebody, kMost);
    ASSERT_TRUE(getIsWanted());
    wish.take();
    sender.out.send(0);
    waiting.watch({&first, &second});
    wish.takeUp(kMost);
    wish.endPass(waiting, false);
    EXPECT_FALSE(wish.getMayRest());
    EXPECT_TRUE(getIsWanted());
}

} // namespace
