// SPDX-License-Identifier: MIT
#include "framework/transport/BufferStrategies.h"

#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>

using namespace Quillmere::Core;
using namespace Support;

namespace {
using Strategy = AbstractBufferStrategy<Sample>;

Sample number(double value) {
    return {.value = matrix({{value}}), .timeStamp = value};
}

/// A single value whose reader can be watched, and whose writer can be held up, both while the strategy's
/// lock is held.
template <class S>
class WatchedBuffer {
public:
    explicit WatchedBuffer(std::uint32_t capacity) : buffer(capacity) {}
    void write(const S& sample) {
        buffer.write(sample);
        if (inWrite) inWrite();
    }
    bool read(S*& out) {
        ++reads;
        return buffer.read(out);
    }
    void clear() { buffer.clear(); }
    std::uint32_t capacity() const { return buffer.capacity(); }
    bool isEmpty() const {
        ++looks;
        return buffer.isEmpty();
    }
    std::uint32_t size() const { return buffer.size(); }

    static inline std::atomic<int> looks{0};
    static inline std::atomic<int> reads{0};
    static inline std::function<void()> inWrite;

private:
    SingleValueBuffer<S> buffer;
};

using Watched = SynchronizedBufferStrategy<Sample, WatchedBuffer>;

/// One read in a thread of its own.
class Reader {
public:
    explicit Reader(Strategy& readStrategy)
        : strategy(readStrategy), looksBefore(WatchedBuffer<Sample>::looks),
          thread([this] { wasTrue = strategy.read(out); }) {}
    ~Reader() {
        if (thread.joinable()) thread.join();
    }

    /// Returns when the reader has found nothing and sleeps. It looks at the buffer under the strategy's lock
    /// and gives that up only in its sleep, so a lock taken after the look is taken from a sleeper.
    void waitUntilAsleep() const {
        while (WatchedBuffer<Sample>::looks == looksBefore)
            std::this_thread::yield();
        strategy.size();
    }
    void join() { thread.join(); }

    Sample untouched;
    Sample* out = &untouched;
    bool wasTrue = true;

private:
    Strategy& strategy;
    int looksBefore;
    std::thread thread;
};
} // namespace

TEST(BufferStrategiesThreadsTest, AWriteWakesTheReader) {
    Synchronizer gate;
    Watched strategy(1, &gate);
    Reader reader(strategy);
    reader.waitUntilAsleep();
    strategy.write(number(7));
    reader.join();
    EXPECT_TRUE(reader.wasTrue);
    ASSERT_NE(reader.out, &reader.untouched);
    EXPECT_EQ(reader.out->value(0), 7.0);
}

TEST(BufferStrategiesThreadsTest, AGuardWakesTheReaderWithNothing) {
    Synchronizer gate;
    Watched strategy(1, &gate);
    Reader reader(strategy);
    reader.waitUntilAsleep();
    const Synchronizer::DisablerLocker guard(&gate, nullptr);
    reader.join(); // while the guard is held
    EXPECT_FALSE(reader.wasTrue);
    EXPECT_EQ(reader.out, &reader.untouched) << "untouched";
}

TEST(BufferStrategiesThreadsTest, UnderAGuardAReadReturnsAtOnce) {
    Synchronizer gate;
    Watched strategy(1, &gate);
    const Synchronizer::DisablerLocker guard(&gate, nullptr);
    Sample* out = nullptr;
    EXPECT_FALSE(strategy.read(out));
    EXPECT_EQ(out, nullptr);
    strategy.write(number(1));
    EXPECT_TRUE(strategy.read(out)) << "what is there is read";
}

TEST(BufferStrategiesThreadsTest, AReaderWokenByAGuardSleepsAgainAfterwards) {
    Synchronizer gate;
    Watched strategy(1, &gate);
    for (int round = 0; round < 20; ++round) {
        {
            Reader reader(strategy);
            reader.waitUntilAsleep();
            const Synchronizer::DisablerLocker guard(&gate, nullptr);
            reader.join();
            EXPECT_FALSE(reader.wasTrue);
        }
        Reader reader(strategy);
        reader.waitUntilAsleep(); // the guard's wake-up isn't kept for this one
        strategy.write(number(round));
        reader.join();
        ASSERT_TRUE(reader.wasTrue);
        EXPECT_EQ(reader.out->value(0), round);
    }
}

TEST(BufferStrategiesThreadsTest, AShutDownWakesTheReaderForGood) {
    Synchronizer gate;
    Watched strategy(1, &gate);
    Reader reader(strategy);
    reader.waitUntilAsleep();
    gate.shutDown();
    reader.join();
    EXPECT_FALSE(reader.wasTrue);
    Sample* out = nullptr;
    EXPECT_FALSE(strategy.read(out)) << "and nobody sleeps there any more";
}

TEST(BufferStrategiesThreadsTest, DeletionWakesTheReaderAndWaitsForIt) {
    for (int round = 0; round < 50; ++round) {
        Synchronizer gate;
        auto strategy = std::make_unique<Watched>(1, &gate);
        Reader reader(*strategy);
        reader.waitUntilAsleep();
        const int reads = WatchedBuffer<Sample>::reads;
        strategy = nullptr; // a reader that stayed inside would touch what is gone
        EXPECT_EQ(WatchedBuffer<Sample>::reads, reads + 1) << "the last thing that a reader does inside";
        reader.join();
        EXPECT_FALSE(reader.wasTrue);
        EXPECT_EQ(reader.out, &reader.untouched);
    }
}

TEST(BufferStrategiesThreadsTest, ToSleepNeedsNoMemory) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    Synchronizer gate;
    Watched strategy(1, &gate);
    Sample* out = nullptr;
    bool wasTrue = false;
    const int looksBefore = WatchedBuffer<Sample>::looks;
    std::thread reader([&] { EXPECT_TRUE(succeedsWith(0, [&] { wasTrue = strategy.read(out); })); });
    while (WatchedBuffer<Sample>::looks == looksBefore)
        std::this_thread::yield();
    strategy.write(number(1)); // gets the lock when the reader sleeps
    reader.join();
    EXPECT_TRUE(wasTrue);
}

TEST(BufferStrategiesThreadsTest, AWakeUpForOneLinkLeavesTheOthersAsleep) {
    Synchronizer gate;
    Watched one(1, &gate);
    Watched other(1, &gate);
    Reader sleeper(one);
    sleeper.waitUntilAsleep();
    other.write(number(1));
    Sample* out = nullptr;
    EXPECT_TRUE(other.read(out));
    const int looks = WatchedBuffer<Sample>::looks;
    one.write(number(2));
    sleeper.join();
    EXPECT_TRUE(sleeper.wasTrue) << "had it been woken before, it would have returned with nothing";
    EXPECT_GE(WatchedBuffer<Sample>::looks, looks);
}

/// The plain strategies under a lock answer at once, whatever the gate does.
TEST(BufferStrategiesThreadsTest, AThreadSafeReaderNeverSleeps) {
    ThreadSafeBufferStrategy<Sample, SingleValueBuffer> strategy(1);
    Sample* out = nullptr;
    EXPECT_FALSE(strategy.read(out));
}

TEST(BufferStrategiesThreadsTest, CapacityOfAThreadSafeStrategyIsToldWithoutItsLock) {
    ThreadSafeBufferStrategy<Sample, WatchedBuffer> strategy(1);
    std::promise<void> isInside;
    std::promise<void> mayLeave;
    WatchedBuffer<Sample>::inWrite = [&] { // inside the lock
        isInside.set_value();
        mayLeave.get_future().wait();
    };
    std::thread writer([&] { strategy.write(number(1)); });
    isInside.get_future().wait();
    std::future<std::uint32_t> capacity = std::async(std::launch::async, [&] { return strategy.capacity(); });
    const bool isToldAtOnce = capacity.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
    mayLeave.set_value();
    writer.join();
    WatchedBuffer<Sample>::inWrite = nullptr;
    EXPECT_TRUE(isToldAtOnce);
    EXPECT_EQ(capacity.get(), 1u);
}

/// Every locked strategy: what is read is whole, each sample comes at most once, and in the order that the
/// buffer tells.
namespace {
struct Kind {
    const char* name;
    std::function<std::unique_ptr<Strategy>(std::uint32_t, Synchronizer&)> make;
    bool isInOrder;
};

template <template <class, template <class> class> class Made, template <class> class Buffer>
std::unique_ptr<Strategy> made(std::uint32_t capacity, Synchronizer& gate) {
    using Whole = Made<Sample, Buffer>;
    if constexpr (std::is_constructible_v<Whole, std::uint32_t, Synchronizer*>)
        return std::make_unique<Whole>(capacity, &gate);
    else
        return std::make_unique<Whole>(capacity);
}

const Kind kinds[] = {
    {.name = "thread-safe, one sample",
     .make = made<ThreadSafeBufferStrategy, SingleValueBuffer>,
     .isInOrder = true},
    {.name = "thread-safe, newest first",
     .make = made<ThreadSafeBufferStrategy, LifoBuffer>,
     .isInOrder = false},
    {.name = "thread-safe, oldest first",
     .make = made<ThreadSafeBufferStrategy, FifoBuffer>,
     .isInOrder = true},
    {.name = "synchronized, one sample",
     .make = made<SynchronizedBufferStrategy, SingleValueBuffer>,
     .isInOrder = true},
    {.name = "synchronized, newest first",
     .make = made<SynchronizedBufferStrategy, LifoBuffer>,
     .isInOrder = false},
    {.name = "synchronized, oldest first",
     .make = made<SynchronizedBufferStrategy, FifoBuffer>,
     .isInOrder = true},
};
} // namespace

TEST(BufferStrategiesThreadsTest, SamplesCrossWholeAndAtMostOnce) {
    constexpr int kCount = 3000;
    for (const Kind& kind : kinds) {
        Synchronizer gate;
        const std::unique_ptr<Strategy> strategy = kind.make(4, gate);
        std::thread writer([&] {
            Sample sent;
            for (int i = 1; i <= kCount; ++i) { // shapes of 1 to 6 elements, every element the same
                sent.value = MatrixXd::Constant(1 + i % 2, 1 + i % 3, i);
                sent.timeStamp = i;
                strategy->write(sent);
            }
            gate.shutDown(); // the reader, if asleep, comes back with nothing
        });
        std::vector<bool> seen(kCount + 1);
        int last = 0;
        for (bool isOver = false;;) {
            Sample* out = nullptr;
            if (!strategy->read(out)) {
                if (isOver) break;
                isOver = gate.getIsShutDown(); // one more look: the last may have come before the shut-down
                continue;
            }
            const auto which = static_cast<int>(out->timeStamp);
            ASSERT_TRUE(agree(out->value, MatrixXd::Constant(1 + which % 2, 1 + which % 3, which), same))
                << kind.name;
            ASSERT_FALSE(seen[static_cast<std::size_t>(which)]) << kind.name << " gave " << which << " twice";
            seen[static_cast<std::size_t>(which)] = true;
            ASSERT_TRUE(!kind.isInOrder || which > last)
                << kind.name << " gave " << which << " after " << last;
            last = which;
        }
        writer.join();
        EXPECT_TRUE(seen[kCount]) << kind.name << ": the newest is never the one that is dropped";
        EXPECT_TRUE(strategy->isEmpty()) << kind.name;
    }
}

TEST(BufferStrategiesThreadsTest, ALargeBufferLosesNothing) {
    constexpr int kCount = 2000;
    for (const bool isSynchronized : {false, true}) {
        Synchronizer gate;
        const std::unique_ptr<Strategy> strategy =
            isSynchronized ? made<SynchronizedBufferStrategy, FifoBuffer>(kCount, gate)
                           : made<ThreadSafeBufferStrategy, FifoBuffer>(kCount, gate);
        std::thread writer([&] {
            for (int i = 1; i <= kCount; ++i)
                strategy->write(number(i));
        });
        for (int next = 1; next <= kCount;) {
            Sample* out = nullptr;
            if (!strategy->read(out)) continue;
            ASSERT_EQ(out->value(0), next);
            ++next;
        }
        writer.join();
    }
}

TEST(BufferStrategiesThreadsTest, WhatIsHandedOutStaysWhileTheWriterGoesOn) {
    for (const Kind& kind : kinds) {
        Synchronizer gate;
        gate.shutDown();
        const std::unique_ptr<Strategy> strategy = kind.make(3, gate);
        strategy->write(number(1));
        Sample* out = nullptr;
        ASSERT_TRUE(strategy->read(out)) << kind.name;
        std::thread writer([&] {
            for (int i = 2; i < 500; ++i)
                strategy->write(number(i));
        });
        for (int look = 0; look < 500; ++look)
            ASSERT_EQ(out->value(0), 1.0) << kind.name;
        writer.join();
        EXPECT_EQ(out->timeStamp, 1.0) << kind.name;
    }
}
