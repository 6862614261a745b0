// SPDX-License-Identifier: MIT
#include "framework/core/AbstractInputPin.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

using namespace Support;
using namespace TestBlocks;

TEST(AbstractInputPinTest, ANewPinIsBlockingAndKeepsOneSample) {
    Receiving block("block");
    EXPECT_EQ(block.input.getBufferCapacity(), 1u);
    EXPECT_FALSE(block.input.getIsLifo());
    EXPECT_TRUE(block.input.getIsBlocking());
    EXPECT_TRUE(block.input.getIsSynchronous());
    EXPECT_EQ(block.input.getConnectedOutput(), nullptr);
    block.input.setIsBlocking(false);
    EXPECT_FALSE(block.input.getIsBlocking());
}

TEST(AbstractInputPinTest, EntersAndLeavesItsManager) {
    Plain block("block");
    {
        const InputPin<MatrixXd> one("one", &block);
        const InputPin<MatrixXd> two("two", &block);
        ASSERT_EQ(block.getInputPins().size(), 2u);
        EXPECT_EQ(&block.getInputPin("two"), &two);
        EXPECT_EQ(one.getManager(), &block);
    }
    EXPECT_TRUE(block.getInputPins().empty());
    const InputPin<MatrixXd> alone("alone", nullptr);
    EXPECT_EQ(alone.getManager(), nullptr);
    EXPECT_EQ(alone.getSynchronizer(), nullptr);
}

TEST(AbstractInputPinTest, ACapacityOfZeroIsRefused) {
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> input("speed", nullptr);
    sender.attach(input, false);
    input.setBufferCapacity(2);
    sendNumber(sender, 7.0);
    EXPECT_EQ(refusal<Poco::InvalidArgumentException>([&] { input.setBufferCapacity(0); }),
              "Input pin 'speed' must keep at least one sample, got 0");
    EXPECT_EQ(input.getBufferCapacity(), 2u);
    EXPECT_EQ(drain(input), std::vector<double>{7.0}) << "a refusal loses nothing";
}

TEST(AbstractInputPinTest, CapacityAndOrderRebuildTheBuffer) {
    struct Row {
        const char* name;
        std::uint32_t capacity;
        bool isLifo;
        std::vector<double> wanted; // of the numbers 1 to 4
    };
    const Row rows[] = {
        {.name = "one sample, by address", .capacity = 1, .isLifo = false, .wanted = {4}},
        {.name = "one sample, newest first", .capacity = 1, .isLifo = true, .wanted = {4}},
        {.name = "oldest first", .capacity = 3, .isLifo = false, .wanted = {2, 3, 4}},
        {.name = "newest first", .capacity = 3, .isLifo = true, .wanted = {4, 3, 2}},
        {.name = "more than are sent", .capacity = 9, .isLifo = false, .wanted = {1, 2, 3, 4}},
    };
    for (const bool isSilent : {false, true}) { // plain, and with a lock
        for (const Row& row : rows) {
            OutputPin<MatrixXd> sender("sender", nullptr);
            InputPin<MatrixXd> input("input", nullptr);
            sender.attach(input, isSilent);
            input.setIsLifo(row.isLifo);
            input.setBufferCapacity(row.capacity);
            EXPECT_EQ(input.getIsLifo(), row.isLifo);
            for (const double number : {1.0, 2.0, 3.0, 4.0})
                sendNumber(sender, number);
            EXPECT_EQ(drain(input), row.wanted) << row.name << ", silent " << isSilent;
        }
    }
}

TEST(AbstractInputPinTest, ARebuildLosesWhatWaits) {
    for (const bool changesOrder : {false, true}) {
        OutputPin<MatrixXd> sender("sender", nullptr);
        InputPin<MatrixXd> input("input", nullptr);
        sender.attach(input, false);
        input.setBufferCapacity(3);
        sendNumber(sender, 1.0, 5.0);
        sendNumber(sender, 2.0, 6.0);
        ASSERT_TRUE(input.hasData()); // one is fetched, one waits
        if (changesOrder)
            input.setIsLifo(true);
        else
            input.setBufferCapacity(2);
        EXPECT_EQ(input.getTimeStamp(), 0.0);
        EXPECT_FALSE(input.hasData());
        sendNumber(sender, 3.0);
        EXPECT_EQ(drain(input), std::vector<double>{3.0}) << "the link itself stays";
    }
}
