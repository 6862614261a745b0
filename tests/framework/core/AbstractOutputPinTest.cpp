// SPDX-License-Identifier: MIT
#include "framework/core/AbstractOutputPin.h"

#include "tests/framework/TestBlocks.h"
#include "tests/framework/core/Listening.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Support;
using namespace TestBlocks;

TEST(AbstractOutputPinTest, EntersAndLeavesItsManager) {
    Plain block("block");
    {
        const OutputPin<MatrixXd> one("one", &block);
        const OutputPin<MatrixXd> two("two", &block);
        ASSERT_EQ(block.getOutputPins().size(), 2u);
        EXPECT_EQ(&block.getOutputPin("one"), &one);
    }
    EXPECT_TRUE(block.getOutputPins().empty());
}

TEST(AbstractOutputPinTest, WithoutAListenerEveryLinkIsSynchronous) {
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    output.attach(input, false);
    EXPECT_TRUE(input.getIsSynchronous());
    EXPECT_TRUE(isPlainLink(output, input));
}

TEST(AbstractOutputPinTest, TheListenerDecidesForBlocksWithoutALayout) {
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    listening.answer = false;
    output.attach(input, false);
    EXPECT_EQ(listening.log, std::vector<std::string>{"attached output to input, synchronous"})
        << "the flag comes in true";
    EXPECT_FALSE(input.getIsSynchronous());
    EXPECT_FALSE(isPlainLink(output, input));
}

TEST(AbstractOutputPinTest, TheListenerIsAskedBeforeTheInputLearnsOfTheLink) {
    bool wasConnected = true; // outlives the pins, whose end the listener hears of too
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    listening.meanwhile = [&] { wasConnected = input.isAttached() || output.isAttached(); };
    output.attach(input, false);
    EXPECT_FALSE(wasConnected);
    EXPECT_TRUE(input.isAttached());
}

TEST(AbstractOutputPinTest, OnlySynchronousLinksAreToldWhenTheyGo) {
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    output.attach(input, false);
    listening.log.clear();
    bool wasConnected = false;
    listening.meanwhile = [&] { wasConnected = input.isAttached() && output.isAttached(); };
    output.detach(input, false);
    EXPECT_EQ(listening.log, std::vector<std::string>{"detached output from input"});
    EXPECT_TRUE(wasConnected) << "told before it goes";

    listening.answer = false;
    output.attach(input, false);
    listening.log.clear();
    output.detach(input, false);
    EXPECT_TRUE(listening.log.empty()) << "one that was declared not synchronous goes without a word";
}

TEST(AbstractOutputPinTest, ASilentLinkIsNeverTold) {
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    output.attach(input, true);
    EXPECT_FALSE(input.getIsSynchronous());
    EXPECT_TRUE(output.isAttached());
    EXPECT_FALSE(isPlainLink(output, input));
    output.detach(input, false);
    EXPECT_TRUE(listening.log.empty());
    EXPECT_FALSE(output.isAttached());
}

TEST(AbstractOutputPinTest, AListenerThatRaisesLeavesNoLink) {
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    listening.meanwhile = [] { throw std::runtime_error("no threads left"); };
    EXPECT_EQ(refusal<std::runtime_error>([&] { output.attach(input, false); }), "no threads left");
    EXPECT_FALSE(output.isAttached());
    EXPECT_FALSE(input.isAttached());
    EXPECT_TRUE(input.getIsSynchronous()) << "as it was";
    listening.meanwhile = {};
    output.attach(input, false);
    EXPECT_TRUE(isPlainLink(output, input));
}

TEST(AbstractOutputPinTest, TheListenerIsCalledWithTheGatesOfBothEndsHeld) {
    Listening listening;
    Counting sender("sender");
    Receiving receiver("receiver");
    LayoutManager senders("senders");
    LayoutManager receivers("receivers");
    senders.add(sender);
    receivers.add(receiver);
    int held = 0;
    listening.meanwhile = [&] {
        held += senders.getSynchronizer().getIsWanted() ? 1 : 0;
        held += receivers.getSynchronizer().getIsWanted() ? 1 : 0;
    };
    sender.output.attach(receiver.input, false);
    EXPECT_EQ(held, 2);
    sender.output.detach(receiver.input, false);
    EXPECT_EQ(held, 4);
    listening.meanwhile = [] { throw std::runtime_error("refused"); };
    EXPECT_THROW(sender.output.attach(receiver.input, false), std::runtime_error);
    EXPECT_FALSE(senders.getSynchronizer().getIsWanted()) << "an exception ends the guard";
    EXPECT_FALSE(receivers.getSynchronizer().getIsWanted());
}
