// SPDX-License-Identifier: MIT
#include "framework/transport/InputPin.h"

#include "tests/framework/TestBlocks.h"
#include "tests/framework/core/Listening.h"
#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <iterator>

using namespace Support;
using namespace TestBlocks;

TEST(InputPinTest, UnconnectedItHasNothingAndNeverSleeps) {
    LayoutManager layout("layout");
    Receiving block("block");
    layout.add(block);
    for (const bool isBlocking : {true, false}) {
        block.input.setIsBlocking(isBlocking);
        EXPECT_FALSE(block.input.hasData());
    }
    EXPECT_FALSE(block.input.isAttached());
    EXPECT_EQ(block.input.getConnectedOutput(), nullptr);
    EXPECT_EQ(block.input.getTimeStamp(), 0.0);
    block.input.detachAll(); // nothing to take down
    block.input.detachSynchronous();
}

TEST(InputPinTest, ASampleIsTakenInThreeSteps) {
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    sender.attach(input, true); // a link that copies, so that what waits is told apart from what is sent
    sendNumber(sender, 1.0, 0.5);
    EXPECT_EQ(input.getTimeStamp(), 0.0) << "not fetched yet";
    ASSERT_TRUE(input.hasData());
    EXPECT_EQ(input.getTimeStamp(), 0.5);
    sendNumber(sender, 2.0, 0.75);
    ASSERT_TRUE(input.hasData()) << "the one that was fetched waits";
    EXPECT_EQ(input.getTimeStamp(), 0.5);
    EXPECT_EQ(input.take()(0), 1.0);
    EXPECT_EQ(input.getTimeStamp(), 0.5) << "of the sample just taken";
    ASSERT_TRUE(input.hasData());
    EXPECT_EQ(input.getTimeStamp(), 0.75);
    EXPECT_EQ(input.take()(0), 2.0);
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(input.getTimeStamp(), 0.75);
}

TEST(InputPinTest, ThePlainLinkHandsOutTheSendersOwnSample) {
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    sender.attach(input, false);
    sendNumber(sender, 1.0, 0.5);
    sender.data.value(0) = 2.0;
    sender.data.timeStamp = 0.25;
    ASSERT_TRUE(input.hasData());
    EXPECT_EQ(input.getTimeStamp(), 0.25);
    const MatrixXd& taken = input.take();
    EXPECT_EQ(&taken, &sender.data.value);
    EXPECT_EQ(taken(0), 2.0) << "as at read time, not at write time";
}

TEST(InputPinTest, ClearForgetsWhatWaitsAndTheTimeStamp) {
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    sender.attach(input, false);
    input.setBufferCapacity(4);
    for (const double value : {1.0, 2.0, 3.0})
        sendNumber(sender, value, value);
    ASSERT_TRUE(input.hasData());
    input.take();
    ASSERT_TRUE(input.hasData()); // one taken, one fetched, one in the buffer
    EXPECT_EQ(input.getQueueLength(), 1u);
    input.clear();
    EXPECT_EQ(input.getTimeStamp(), 0.0);
    EXPECT_EQ(input.getQueueLength(), 0u);
    EXPECT_FALSE(input.hasData());
    sendNumber(sender, 4.0, 4.0);
    EXPECT_EQ(drain(input), std::vector<double>{4.0}) << "the link stays";
}

TEST(InputPinTest, DetachAndAttachAgainForgetTheSampleAndTheTimeStamp) {
    for (const bool isSilent : {false, true}) {
        OutputPin<MatrixXd> sender("sender", nullptr);
        InputPin<MatrixXd> input("input", nullptr);
        sender.attach(input, isSilent);
        sendNumber(sender, 1.0, 5.0);
        ASSERT_TRUE(input.hasData());
        input.take();
        sendNumber(sender, 2.0, 6.0);
        ASSERT_TRUE(input.hasData());
        sender.detach(input, false);
        EXPECT_EQ(input.getTimeStamp(), 0.0);
        EXPECT_FALSE(input.hasData());
        sender.attach(input, isSilent);
        EXPECT_FALSE(input.hasData());
        EXPECT_EQ(input.getTimeStamp(), 0.0);
    }
}

TEST(InputPinTest, BothEndsGiveOneDataTypeName) {
    const InputPin<MatrixXd> one("one", nullptr);
    const InputPin<MatrixXd> two("two", nullptr);
    const OutputPin<MatrixXd> output("output", nullptr);
    EXPECT_EQ(one.getDataTypeName(), typeid(MatrixXd).name());
    EXPECT_EQ(&one.getDataTypeName(), &two.getDataTypeName()) << "one static text";
    EXPECT_EQ(&one.getDataTypeName(), &output.getDataTypeName());
}

TEST(InputPinTest, DetachesItsLinkFromItsOwnEnd) {
    OutputPin<MatrixXd> sender("sender", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    sender.attach(input, false);
    EXPECT_TRUE(input.isAttached());
    EXPECT_EQ(input.getConnectedOutput(), &sender);
    input.detachSynchronous();
    EXPECT_FALSE(input.isAttached());
    EXPECT_FALSE(sender.isAttached());

    sender.attach(input, true); // not synchronous
    input.detachSynchronous();
    EXPECT_TRUE(input.isAttached());
    input.detachAll();
    EXPECT_FALSE(input.isAttached());
    EXPECT_FALSE(sender.isAttached());
    EXPECT_TRUE(input.getIsSynchronous()) << "as the detaching output leaves it";
}

TEST(InputPinTest, ItsEndTakesTheLinkDown) {
    Listening listening;
    OutputPin<MatrixXd> sender("sender", nullptr);
    {
        InputPin<MatrixXd> input("input", nullptr);
        sender.attach(input, false);
    }
    EXPECT_FALSE(sender.isAttached());
    EXPECT_EQ(listening.log.back(), "detached sender from input");
    sendNumber(sender, 1.0);
}

/// Which kind of link a pin chooses, by the layouts of both blocks, the flag and whether the pin may sleep.
TEST(InputPinTest, ChoosesTheKindOfLink) {
    enum Where { None, One, Two };
    struct Row {
        const char* name;
        Where sender;
        Where reader;
        bool isSynchronous;
        bool isBlocking;
        bool isPlain;
        bool isAsleepWhenEmpty;
    };
    // clang-format off
    const Row rows[] = {
        // name                                sender reader synchronous blocking plain  asleep when empty
        {"one layout",                         One,   One,   true,       true,    true,  false},
        {"one layout, the flag says no",       One,   One,   false,      true,    true,  false},
        {"one layout, non-blocking",           One,   One,   false,      false,   true,  false},
        {"no layouts, synchronous",            None,  None,  true,       true,    true,  false},
        {"no layouts, not synchronous",        None,  None,  false,      true,    false, false},
        {"sender in a layout, reader in none", One,   None,  true,       true,    false, false},
        {"reader in a layout, non-blocking",   None,  One,   true,       false,   false, false},
        {"two layouts, non-blocking",          One,   Two,   true,       false,   false, false},
        {"two layouts",                        One,   Two,   true,       true,    false, true},
        {"reader in a layout",                 None,  One,   false,      true,    false, true},
    };
    // clang-format on
    for (const Row& row : rows) {
        LayoutManager one("one");
        LayoutManager two("two");
        LayoutManager* const layouts[] = {nullptr, &one, &two};
        Listening listening;
        listening.answer = row.isSynchronous;
        Counting sender("sender");
        Receiving reader("reader");
        reader.input.setIsBlocking(row.isBlocking);
        if (layouts[row.sender] != nullptr) layouts[row.sender]->add(sender);
        if (layouts[row.reader] != nullptr) layouts[row.reader]->add(reader);
        sender.output.attach(reader.input, false);
        EXPECT_EQ(isPlainLink(sender.output, reader.input), row.isPlain) << row.name;
        // A pin that must not sleep answers here; one that would is answered for by tests with threads.
        if (row.isAsleepWhenEmpty) continue;
        EXPECT_FALSE(reader.input.hasData()) << row.name;
    }
}

TEST(InputPinTest, ASteadyLinkAllocatesNothing) {
    for (const bool isSilent : {false, true}) {
        for (const std::uint32_t capacity : {1u, 3u}) {
            OutputPin<MatrixXd> sender("sender", nullptr);
            InputPin<MatrixXd> input("input", nullptr);
            sender.attach(input, isSilent);
            input.setBufferCapacity(capacity);
            sender.data.value = MatrixXd::Ones(3, 3);
            const auto round = [&] {
                sender.send(1.0);
                sender.send(2.0);
                ASSERT_TRUE(input.hasData());
                input.take();
            };
            for (int i = 0; i < 8; ++i)
                round();
            const AllocationCounter counter;
            for (int i = 0; i < 50; ++i)
                round();
            EXPECT_EQ(counter.count(), 0u) << "silent " << isSilent << ", capacity " << capacity;
        }
    }
}

TEST(InputPinTest, ABufferForWhichThereIsNoMemoryLeavesTheOldOne) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    for (const bool isLinked : {false, true}) {
        const auto failures = withEveryShortage([&](std::uint64_t granted) {
            OutputPin<MatrixXd> sender("sender", nullptr);
            InputPin<MatrixXd> input("input", nullptr);
            if (isLinked) sender.attach(input, true);
            input.setBufferCapacity(3);
            for (const double value : {1.0, 2.0}) {
                const Sample sample{.value = matrix({{value}}), .timeStamp = value};
                input.receive(sample);
            }
            const bool isLonger = succeedsWith(granted, [&] { input.setBufferCapacity(5); });
            EXPECT_EQ(input.getBufferCapacity(), isLonger ? 5u : 3u);
            EXPECT_EQ(input.getQueueLength(), isLonger ? 0u : 2u)
                << "what waits is lost only with the buffer";
            const bool isTurned = succeedsWith(granted, [&] { input.setIsLifo(true); });
            EXPECT_EQ(input.getIsLifo(), isTurned);
            if (!isTurned) {
                EXPECT_EQ(drain(input), (std::vector<double>{1, 2}));
            }
            return isLonger && isTurned;
        });
        EXPECT_GT(failures, 0u);
    }
}

TEST(InputPinTest, ItsFiveVirtualOperationsFollowEachOther) {
    // A pointer to a virtual member function begins with one more than the operation's place in the table, in
    // bytes.
    const auto place = [](auto operation) {
        std::ptrdiff_t first = 0;
        static_assert(sizeof operation >= sizeof first);
        std::memcpy(&first, &operation, sizeof first);
        return (first - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
    };
    const std::ptrdiff_t places[] = {
        place(&AbstractInputPin::getConnectedOutput), place(&AbstractInputPin::clear),
        place(&AbstractInputPin::rebuildStrategy), place(&AbstractInputPin::setConnectedOutput),
        place(&InputPinBase<MatrixXd>::receive)};
    for (std::size_t i = 1; i < std::size(places); ++i)
        EXPECT_EQ(places[i], places[0] + static_cast<std::ptrdiff_t>(i)) << i;
}
