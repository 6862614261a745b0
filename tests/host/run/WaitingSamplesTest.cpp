// SPDX-License-Identifier: MIT
#include "host/run/WaitingSamples.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace Quillmere::Core;
using Quillmere::Host::WaitingSamples;

class Node final : public Filter {
public:
    explicit Node(const std::string& name, const char* type = "Node")
        : Filter(name, true), in("in", this), out("out", this), typeName(type) {}
    void process() override {}
    const char* getTypeName() const override { return typeName; }

    void take() {
        if (in.hasData()) in.take();
    }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;

private:
    const char* typeName;
};

class Sender final : public Filter {
public:
    Sender() : Filter("sender", true), out("out", this) {}
    void process() override {}
    const char* getTypeName() const override { return "Sender"; }

    OutputPin<MatrixXd> out;
};

/// A sender, two nodes behind it, and another layout.
class WaitingSamplesTest : public testing::Test {
protected:
    WaitingSamplesTest() {
        for (Filter* const block : std::vector<Filter*>{&sender, &a, &b})
            layout.add(*block);
        a.in.setBufferCapacity(5);
        sender.out.attach(a.in, false);
        a.out.attach(b.in, false);
    }

    LayoutManager layout{"layout"};
    LayoutManager elsewhere{"elsewhere"};
    Sender sender;
    Node a{"a"};
    Node b{"b"};
    WaitingSamples waiting;
};

TEST_F(WaitingSamplesTest, ALinkWithinTheLayoutHasMovedWhenItHasMoreOrFewer) {
    waiting.watch({&sender, &a, &b});
    EXPECT_FALSE(waiting.count());
    EXPECT_FALSE(waiting.getIsAny());
    sender.out.send(0);
    sender.out.send(1);
    EXPECT_TRUE(waiting.count());
    EXPECT_TRUE(waiting.getIsAny());
    EXPECT_FALSE(waiting.getIsAnyWaking());
    EXPECT_FALSE(waiting.count()) << "as many as at the last count";
    a.take();
    EXPECT_TRUE(waiting.count());
    a.take();
    sender.out.send(2);
    EXPECT_FALSE(waiting.count()) << "one taken, one sent: a steady pace";
    a.take();
    EXPECT_TRUE(waiting.count());
    EXPECT_FALSE(waiting.getIsAny());
    EXPECT_FALSE(waiting.getHasWakingLinks());
    EXPECT_EQ(waiting.getLinksFromElsewhere(), 0u);
}

TEST_F(WaitingSamplesTest, ALinkFromElsewhereHasMovedWhenASampleWasUsedUp) {
    elsewhere.add(sender);
    waiting.watch({&a, &b});
    EXPECT_TRUE(waiting.getHasWakingLinks());
    EXPECT_EQ(waiting.getLinksFromElsewhere(), 1u);
    sender.out.send(0);
    sender.out.send(1);
    EXPECT_FALSE(waiting.count()) << "others have sent, these blocks have moved nothing";
    EXPECT_TRUE(waiting.getIsAny());
    EXPECT_TRUE(waiting.getIsAnyWaking());
    a.take();
    sender.out.send(2);
    EXPECT_TRUE(waiting.count()) << "as many as before, and yet one was used up";
    EXPECT_FALSE(waiting.count());
}

TEST_F(WaitingSamplesTest, AControlInputFromElsewhereWakesNobody) {
    b.in.detachAll();
    b.in.setIsBlocking(false);
    elsewhere.add(sender);
    sender.out.attach(b.in, false);
    a.in.detachAll();
    waiting.watch({&a, &b});
    EXPECT_FALSE(waiting.getHasWakingLinks());
    EXPECT_EQ(waiting.getLinksFromElsewhere(), 1u);
    sender.out.send(0);
    EXPECT_FALSE(waiting.count());
    EXPECT_TRUE(waiting.getIsAny());
    EXPECT_FALSE(waiting.getIsAnyWaking());
    b.take();
    EXPECT_TRUE(waiting.count());
    EXPECT_FALSE(waiting.getIsAny());
}

TEST_F(WaitingSamplesTest, MostRoundsAreTheBlocksThatTakeAndAllThatLinksHold) {
    waiting.watch({&sender, &a, &b});
    EXPECT_EQ(waiting.getMostRounds(), 2u + 5u + 1u) << "the sender has no input";
    waiting.watch({});
    EXPECT_EQ(waiting.getMostRounds(), 0u);
    EXPECT_FALSE(waiting.count());
}

TEST_F(WaitingSamplesTest, WhatABlockOfTheLayoutSendsByTimesOfItsOwnIsABurst) {
    Node maker{"maker", "Unframe"};
    Node behind{"behind"};
    behind.in.setBufferCapacity(1000);
    maker.out.attach(behind.in, false);
    layout.add(maker);
    layout.add(behind);
    waiting.watch({&maker, &behind});
    EXPECT_TRUE(waiting.getHasBursts());
    EXPECT_FALSE(waiting.getHasWakingLinks());
    EXPECT_EQ(waiting.getMostRounds(), 2u + 1u + 1u) << "through before a round ends, however many they are";
    maker.out.send(0);
    EXPECT_TRUE(waiting.countPass(WaitingSamples::Where::Bursts));
    EXPECT_FALSE(waiting.getIsAnyWaking());
    behind.take();
    EXPECT_FALSE(waiting.countPass(WaitingSamples::Where::Bursts));
    elsewhere.add(maker);
    waiting.watch({&behind});
    EXPECT_FALSE(waiting.getHasBursts()) << "from another layout it comes as others do";
    EXPECT_TRUE(waiting.getHasWakingLinks());
    EXPECT_EQ(waiting.getMostRounds(), 1u + 1000u);
}

} // namespace
