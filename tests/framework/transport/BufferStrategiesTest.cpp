// SPDX-License-Identifier: MIT
#include "framework/transport/BufferStrategies.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace Quillmere::Core;
using namespace Support;

namespace {
using Strategy = AbstractBufferStrategy<Sample>;
using Numbers = std::vector<double>;

Sample number(double value, double timeStamp = 0.0) {
    return {.value = matrix({{value}}), .timeStamp = timeStamp};
}

/// Every strategy that exists, at a capacity of 3 where it has a choice. A synchronized reader of these tests
/// never sleeps: its gate is shut down.
struct Kind {
    const char* name;
    std::function<std::unique_ptr<Strategy>(Synchronizer&)> make;
    std::uint32_t capacity;
    bool copies;
    Numbers afterFourWrites; // of 1 to 4
};

template <class Made>
std::function<std::unique_ptr<Strategy>(Synchronizer&)> plain() {
    return [](Synchronizer&) { return std::make_unique<Made>(3); };
}
template <class Made>
std::function<std::unique_ptr<Strategy>(Synchronizer&)> gated() {
    return [](Synchronizer& gate) { return std::make_unique<Made>(3, &gate); };
}

const Kind kinds[] = {
    {.name = "simple, by address",
     .make = plain<SimpleBufferStrategy<Sample, SingleValuePtrBuffer>>(),
     .capacity = 1,
     .copies = false,
     .afterFourWrites = {4}},
    {.name = "simple, newest first",
     .make = plain<SimpleBufferStrategy<Sample, LifoBuffer>>(),
     .capacity = 3,
     .copies = true,
     .afterFourWrites = {4, 3, 2}},
    {.name = "simple, oldest first",
     .make = plain<SimpleBufferStrategy<Sample, FifoBuffer>>(),
     .capacity = 3,
     .copies = true,
     .afterFourWrites = {2, 3, 4}},
    {.name = "thread-safe, one sample",
     .make = plain<ThreadSafeBufferStrategy<Sample, SingleValueBuffer>>(),
     .capacity = 1,
     .copies = true,
     .afterFourWrites = {4}},
    {.name = "thread-safe, newest first",
     .make = plain<ThreadSafeBufferStrategy<Sample, LifoBuffer>>(),
     .capacity = 3,
     .copies = true,
     .afterFourWrites = {4, 3, 2}},
    {.name = "thread-safe, oldest first",
     .make = plain<ThreadSafeBufferStrategy<Sample, FifoBuffer>>(),
     .capacity = 3,
     .copies = true,
     .afterFourWrites = {2, 3, 4}},
    {.name = "synchronized, one sample",
     .make = gated<SynchronizedBufferStrategy<Sample, SingleValueBuffer>>(),
     .capacity = 1,
     .copies = true,
     .afterFourWrites = {4}},
    {.name = "synchronized, newest first",
     .make = gated<SynchronizedBufferStrategy<Sample, LifoBuffer>>(),
     .capacity = 3,
     .copies = true,
     .afterFourWrites = {4, 3, 2}},
    {.name = "synchronized, oldest first",
     .make = gated<SynchronizedBufferStrategy<Sample, FifoBuffer>>(),
     .capacity = 3,
     .copies = true,
     .afterFourWrites = {2, 3, 4}},
};

std::string nameOfKind(const testing::TestParamInfo<Kind>& tested) {
    std::string name;
    for (const char letter : std::string(tested.param.name))
        if (letter != ' ' && letter != ',' && letter != '-') name += letter;
    return name;
}

class BufferStrategiesTest : public testing::TestWithParam<Kind> {
protected:
    BufferStrategiesTest() { gate.shutDown(); }

    void write(double value) {
        sent = number(value);
        strategy->write(sent);
    }
    Numbers drain() {
        Numbers numbers;
        for (Sample* out = nullptr; strategy->read(out);)
            numbers.push_back(out->value(0));
        return numbers;
    }

    Synchronizer gate;
    Sample sent;
    std::unique_ptr<Strategy> strategy = GetParam().make(gate);
};
} // namespace

INSTANTIATE_TEST_SUITE_P(, BufferStrategiesTest, testing::ValuesIn(kinds), nameOfKind);

TEST_P(BufferStrategiesTest, StartsEmpty) {
    EXPECT_TRUE(strategy->isEmpty());
    EXPECT_EQ(strategy->size(), 0u);
    EXPECT_EQ(strategy->capacity(), GetParam().capacity);
    Sample* out = &sent;
    EXPECT_FALSE(strategy->read(out));
    EXPECT_EQ(out, &sent) << "untouched";
}

TEST_P(BufferStrategiesTest, HandsOutInItsOrderAndDropsTheOldest) {
    for (const double value : {1.0, 2.0, 3.0, 4.0})
        write(value);
    EXPECT_FALSE(strategy->isEmpty());
    EXPECT_EQ(strategy->size(), GetParam().capacity);
    EXPECT_EQ(drain(), GetParam().afterFourWrites);
    EXPECT_TRUE(strategy->isEmpty());
    EXPECT_EQ(strategy->capacity(), GetParam().capacity);
}

TEST_P(BufferStrategiesTest, OnlyThePlainLinkKeepsAnAddress) {
    write(1.0);
    sent.value(0) = 2.0;
    sent.timeStamp = 3.0;
    Sample* out = nullptr;
    ASSERT_TRUE(strategy->read(out));
    EXPECT_EQ(out == &sent, !GetParam().copies);
    EXPECT_EQ(out->value(0), GetParam().copies ? 1.0 : 2.0);
    EXPECT_EQ(out->timeStamp, GetParam().copies ? 0.0 : 3.0);
}

TEST_P(BufferStrategiesTest, AReadAfterAClearIsFalse) {
    write(1.0);
    write(2.0);
    strategy->clear();
    EXPECT_TRUE(strategy->isEmpty());
    EXPECT_EQ(strategy->size(), 0u);
    Sample* out = nullptr;
    EXPECT_FALSE(strategy->read(out));
    EXPECT_EQ(out, nullptr);
    write(3.0);
    EXPECT_EQ(drain(), Numbers{3.0});
}

TEST_P(BufferStrategiesTest, WhatIsHandedOutStaysUntilTheNextRead) {
    if (!GetParam().copies) { // the sender's own, by design
        write(1.0);
        Sample* out = nullptr;
        ASSERT_TRUE(strategy->read(out));
        write(2.0);
        EXPECT_EQ(out->value(0), 2.0);
        return;
    }
    write(1.0);
    Sample* out = nullptr;
    ASSERT_TRUE(strategy->read(out));
    for (const double value : {2.0, 3.0, 4.0, 5.0})
        write(value);
    EXPECT_EQ(out->value(0), 1.0);
}

TEST_P(BufferStrategiesTest, TheSteadyStateAllocatesNothing) {
    sent = {.value = MatrixXd::Ones(3, 4), .timeStamp = 1.0};
    Sample* out = nullptr;
    const auto lag = [&] { // writes more than fit, then reads some, so that samples are dropped and left over
        for (int i = 0; i < 5; ++i)
            strategy->write(sent);
        strategy->read(out);
        strategy->write(sent);
        strategy->read(out);
        strategy->read(out);
    };
    lag();
    lag();
    const AllocationCounter counter;
    for (int round = 0; round < 50; ++round)
        lag();
    sent.value.resize(2, 6); // another shape of as many elements keeps the storage
    lag();
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_EQ(out->value.size(), 12);
}

TEST_P(BufferStrategiesTest, TheTimeStampGoesWithItsSample) {
    sent = number(1.0, 0.1 + 0.2);
    strategy->write(sent);
    Sample* out = nullptr;
    ASSERT_TRUE(strategy->read(out));
    EXPECT_TRUE(agree(out->timeStamp, 0.1 + 0.2, same));
}
