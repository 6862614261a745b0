// SPDX-License-Identifier: MIT
#include "framework/core/Synchronizer.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Quillmere::Core;

// The loop that sleeps between its passes, in `sleep`, where a lost wake-up would show as a time-out.

namespace {
using Clock = Synchronizer::Clock;
constexpr Clock::time_point kNever = Clock::time_point::max();

struct Mailbox {
    Poco::FastMutex mutex;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    int letters = 0;

    void post(Synchronizer& gate) {
        const Poco::FastMutex::ScopedLock lock(mutex);
        ++letters;
        gate.signal(event);
    }
    /// What a reader of a buffer does; never sleeps here, as the loop sleeps by itself.
    int fetch(Synchronizer& gate) {
        const Poco::FastMutex::ScopedLock lock(mutex);
        if (letters == 0) gate.wait(mutex, event);
        const int found = letters;
        letters = 0;
        return found;
    }
};

void yieldUntilAsleep(const Synchronizer& gate) {
    while (!gate.getIsAsleep())
        std::this_thread::yield();
}
} // namespace

TEST(SynchronizerSleepTest, WaitReturnsAtOnce) {
    Synchronizer gate;
    gate.setSleepsBetweenPasses(true);
    Mailbox box;
    EXPECT_EQ(box.fetch(gate), 0);
}

TEST(SynchronizerSleepTest, AReasonThatCameBeforeIsKept) {
    Synchronizer gate;
    gate.setSleepsBetweenPasses(true);
    Mailbox box;
    box.post(gate);
    gate.sleep(kNever);
    gate.stir();
    gate.sleep(kNever);
    EXPECT_FALSE(gate.getIsAsleep());
    EXPECT_EQ(gate.takeReasons(), unsigned{Synchronizer::kSignal | Synchronizer::kStir});
    EXPECT_EQ(gate.takeReasons(), 0u);
}

TEST(SynchronizerSleepTest, SignalsGiveNoReasonToALoopThatSleepsInItsReaders) {
    Synchronizer gate;
    Mailbox box;
    box.post(gate);
    EXPECT_EQ(gate.takeReasons(), 0u);
}

TEST(SynchronizerSleepTest, SleepEndsWhenItsTimeHasCome) {
    Synchronizer gate;
    const Clock::time_point due = Clock::now() + std::chrono::milliseconds(5);
    gate.sleep(due);
    EXPECT_GE(Clock::now(), due);
    gate.sleep(due);
    EXPECT_EQ(gate.takeReasons(), 0u);
    EXPECT_EQ(gate.getSleeps(), 2u);
}

TEST(SynchronizerSleepTest, ShutDownEndsSleepForGood) {
    Synchronizer gate;
    std::thread loop([&] { gate.sleep(kNever); });
    yieldUntilAsleep(gate);
    gate.shutDown();
    loop.join();
    gate.sleep(kNever);
}

TEST(SynchronizerSleepTest, AGuardNeitherWaitsForTheSleeperNorWakesIt) {
    Synchronizer gate;
    std::thread loop([&] { gate.sleep(kNever); });
    yieldUntilAsleep(gate);
    for (int i = 0; i < 100; ++i)
        const Synchronizer::DisablerLocker guard(&gate, nullptr);
    EXPECT_TRUE(gate.getIsAsleep());
    EXPECT_EQ(gate.getSleeps(), 1u);
    gate.stir();
    loop.join();
}

TEST(SynchronizerSleepTest, NoLetterIsLostBetweenAPosterAndALoopThatSleeps) {
    constexpr int kLetters = 20000;
    Synchronizer gate;
    gate.setSleepsBetweenPasses(true);
    Mailbox box;
    std::thread poster([&] {
        for (int i = 0; i < kLetters; ++i) {
            box.post(gate);
            if (i % 7 == 0) std::this_thread::yield();
        }
    });
    for (int found = 0; found < kLetters;) {
        gate.takeReasons();
        const int letters = box.fetch(gate);
        found += letters;
        if (letters == 0) gate.sleep(kNever); // for ever, if the last letter gave no reason
    }
    poster.join();
}

TEST(SynchronizerSleepTest, NoStirIsLostBetweenAWriterAndALoopThatSleeps) {
    constexpr int kWrites = 20000;
    Synchronizer gate;
    int written = 0; // no atomic: the gate is its lock
    std::thread writer([&] {
        for (int i = 0; i < kWrites; ++i) {
            {
                const Synchronizer::DisablerLocker guard(&gate, nullptr);
                ++written;
            }
            gate.stir();
            if (i % 7 == 0) std::this_thread::yield();
        }
    });
    for (int seen = 0; seen < kWrites;) {
        gate.takeReasons();
        int now = 0;
        {
            const Synchronizer::StepLocker step(gate);
            now = written;
        }
        const bool isNews = now != seen;
        seen = now;
        if (!isNews) gate.sleep(kNever);
    }
    writer.join();
}
