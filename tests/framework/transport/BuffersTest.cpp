// SPDX-License-Identifier: MIT
#include "framework/transport/Buffers.h"

#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

using namespace Quillmere::Core;
using namespace Support;

namespace {
Sample number(double value, double timeStamp = 0.0) {
    return {.value = matrix({{value}}), .timeStamp = timeStamp};
}

template <class Buffer>
std::vector<double> drain(Buffer& buffer) {
    std::vector<double> numbers;
    for (Sample* sample = nullptr; buffer.read(sample);)
        numbers.push_back(sample->value(0));
    return numbers;
}

using Numbers = std::vector<double>;
} // namespace

TEST(BuffersTest, AnAddressIsHandedOutOnceAndReadAsItIs) {
    SingleValuePtrBuffer<Sample> buffer(1);
    EXPECT_TRUE(buffer.isEmpty());
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(buffer.capacity(), 1u);
    Sample sent = number(1);
    buffer.write(sent);
    EXPECT_EQ(buffer.size(), 1u);
    sent.value(0) = 2.0;
    Sample* out = nullptr;
    ASSERT_TRUE(buffer.read(out));
    EXPECT_EQ(out, &sent);
    EXPECT_EQ(out->value(0), 2.0) << "as at read time, not at write time";
    EXPECT_TRUE(buffer.isEmpty());
    out = nullptr;
    EXPECT_FALSE(buffer.read(out));
    EXPECT_EQ(out, nullptr) << "untouched";
}

TEST(BuffersTest, ASingleValueIsCopiedAndTheNewestWins) {
    SingleValueBuffer<Sample> buffer(1);
    Sample sent = number(1, 0.5);
    buffer.write(sent);
    sent = number(2, 0.75);
    buffer.write(sent);
    sent = number(3);
    EXPECT_EQ(buffer.size(), 1u);
    EXPECT_EQ(buffer.capacity(), 1u);
    Sample* out = nullptr;
    ASSERT_TRUE(buffer.read(out));
    EXPECT_EQ(out->value(0), 2.0);
    EXPECT_EQ(out->timeStamp, 0.75);
    EXPECT_FALSE(buffer.read(out));
}

TEST(BuffersTest, WhatIsHandedOutStaysUntilTheNextRead) {
    SingleValueBuffer<Sample> single(1);
    FifoBuffer<Sample> fifo(2);
    LifoBuffer<Sample> lifo(2);
    const auto check = [](auto& buffer) {
        buffer.write(number(1));
        Sample* out = nullptr;
        ASSERT_TRUE(buffer.read(out));
        for (const double next : {2.0, 3.0, 4.0})
            buffer.write(number(next));
        EXPECT_EQ(out->value(0), 1.0);
        buffer.clear();
        EXPECT_EQ(out->value(0), 1.0);
    };
    check(single);
    check(fifo);
    check(lifo);
}

TEST(BuffersTest, AReadSwapsStorageInsteadOfCopying) {
    SingleValueBuffer<Sample> single(1);
    FifoBuffer<Sample> fifo(1);
    LifoBuffer<Sample> lifo(1);
    const auto check = [](auto& buffer) {
        const double* storage[4];
        for (int i = 0; i < 4; ++i) {
            buffer.write(number(i));
            Sample* out = nullptr;
            ASSERT_TRUE(buffer.read(out));
            storage[i] = out->value.data();
        }
        EXPECT_NE(storage[0], storage[1]);
        EXPECT_EQ(storage[0], storage[2]) << "two pieces of storage take turns";
        EXPECT_EQ(storage[1], storage[3]);
    };
    check(single);
    check(fifo);
    check(lifo);
}

TEST(BuffersTest, AFullBufferDropsTheOldest) {
    FifoBuffer<Sample> fifo(3);
    LifoBuffer<Sample> lifo(3);
    for (const double value : {1.0, 2.0, 3.0, 4.0}) {
        fifo.write(number(value));
        lifo.write(number(value));
    }
    EXPECT_EQ(fifo.size(), 3u);
    EXPECT_EQ(lifo.size(), 3u);
    EXPECT_EQ(fifo.capacity(), 3u);
    EXPECT_EQ(lifo.capacity(), 3u);
    EXPECT_EQ(drain(fifo), (Numbers{2, 3, 4}));
    EXPECT_EQ(drain(lifo), (Numbers{4, 3, 2}));
    Sample* out = nullptr;
    EXPECT_FALSE(fifo.read(out));
    EXPECT_FALSE(lifo.read(out));
    EXPECT_EQ(out, nullptr);
}

TEST(BuffersTest, ClearForgetsWhatWaits) {
    SingleValuePtrBuffer<Sample> address(1);
    SingleValueBuffer<Sample> single(1);
    FifoBuffer<Sample> fifo(3);
    LifoBuffer<Sample> lifo(3);
    const Sample one = number(1);
    const Sample two = number(2);
    const auto check = [&](auto& buffer) {
        buffer.write(one);
        buffer.write(two);
        buffer.clear();
        EXPECT_TRUE(buffer.isEmpty());
        EXPECT_EQ(buffer.size(), 0u);
        EXPECT_EQ(drain(buffer), Numbers{});
        buffer.write(one);
        EXPECT_EQ(drain(buffer), Numbers{1});
    };
    check(address);
    check(single);
    check(fifo);
    check(lifo);
}

TEST(BuffersTest, ShapeFollowsEverySample) {
    const auto check = [](auto& buffer) {
        for (const MatrixXd& value : {matrix({{1, 2, 3}, {4, 5, 6}}), matrix({{7}}), MatrixXd(0, 0),
                                      MatrixXd(0, 3), matrix({{1}, {2}})}) {
            buffer.write({.value = value, .timeStamp = 0.0});
            Sample* out = nullptr;
            ASSERT_TRUE(buffer.read(out));
            EXPECT_TRUE(agree(out->value, value, same));
        }
    };
    SingleValueBuffer<Sample> single(1);
    FifoBuffer<Sample> fifo(3);
    LifoBuffer<Sample> lifo(3);
    check(single);
    check(fifo);
    check(lifo);
}

/// Against a double-ended queue, which is what the buffers are told to be.
TEST(BuffersTest, QueuesAgreeWithADoubleEndedQueue) {
    std::mt19937 random(11);
    for (const std::uint32_t capacity : {1u, 2u, 3u, 4u, 5u, 8u, 17u}) {
        FifoBuffer<Sample> fifo(capacity);
        LifoBuffer<Sample> lifo(capacity);
        std::deque<double> fifoModel;
        std::deque<double> lifoModel;
        for (int step = 0; step < 2000; ++step) {
            const auto choice = random() % 100;
            if (choice < 55) {
                fifo.write(number(step));
                lifo.write(number(step));
                for (std::deque<double>* const model : {&fifoModel, &lifoModel}) {
                    if (model->size() == capacity) model->pop_front();
                    model->push_back(step);
                }
            } else if (choice < 99) {
                Sample* out = nullptr;
                ASSERT_EQ(fifo.read(out), !fifoModel.empty());
                if (!fifoModel.empty()) {
                    ASSERT_EQ(out->value(0), fifoModel.front());
                    fifoModel.pop_front();
                }
                ASSERT_EQ(lifo.read(out), !lifoModel.empty());
                if (!lifoModel.empty()) {
                    ASSERT_EQ(out->value(0), lifoModel.back());
                    lifoModel.pop_back();
                }
            } else {
                fifo.clear();
                lifo.clear();
                fifoModel.clear();
                lifoModel.clear();
            }
            ASSERT_EQ(fifo.size(), fifoModel.size()) << "capacity " << capacity << ", step " << step;
            ASSERT_EQ(lifo.size(), lifoModel.size());
        }
    }
}

TEST(BuffersTest, AQueueNeedsNoRoomThatItDoesNotUse) {
    FifoBuffer<Sample> fifo(4294967295u);
    fifo.write(number(1));
    fifo.write(number(2));
    EXPECT_EQ(fifo.capacity(), 4294967295u);
    EXPECT_EQ(drain(fifo), (Numbers{1, 2}));
}

TEST(BuffersTest, AQueueOfCapacityZeroIsNeverFull) {
    FifoBuffer<Sample> fifo(0);
    LifoBuffer<Sample> lifo(0);
    Numbers numbers;
    for (int i = 0; i < 20; ++i) {
        fifo.write(number(i));
        lifo.write(number(i));
        numbers.push_back(i);
    }
    EXPECT_EQ(fifo.capacity(), 0u);
    EXPECT_EQ(fifo.size(), 20u);
    EXPECT_EQ(drain(fifo), numbers);
    EXPECT_EQ(drain(lifo), Numbers(numbers.rbegin(), numbers.rend()));
    fifo.write(number(7));
    EXPECT_EQ(drain(fifo), Numbers{7});
}

TEST(BuffersTest, AFullQueueWithoutMemoryLosesNothing) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    FifoBuffer<Sample> fifo(3);
    for (int i = 0; i < 4; ++i)
        fifo.write(number(i));
    const Sample larger{.value = matrix({{1, 2}, {3, 4}}), .timeStamp = 0.75};
    EXPECT_FALSE(succeedsWith(0, [&] { fifo.write(larger); }));
    EXPECT_EQ(drain(fifo), (Numbers{1, 2, 3}));
}

TEST(BuffersTest, AWriteWithoutMemoryLeavesTheSampleThatWaits) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    SingleValueBuffer<Sample> buffer(1);
    buffer.write(number(1, 0.5));
    const Sample larger{.value = matrix({{1, 2}, {3, 4}}), .timeStamp = 0.75};
    EXPECT_FALSE(succeedsWith(0, [&] { buffer.write(larger); }));
    Sample* out = nullptr;
    ASSERT_TRUE(buffer.read(out));
    EXPECT_TRUE(agree(out->value, matrix({{1}}), same)) << "not an empty matrix";
    EXPECT_EQ(out->timeStamp, 0.5);
}
