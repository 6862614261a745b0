// SPDX-License-Identifier: MIT
#include "framework/core/Synchronizer.h"

#include "tests/support/CheckingHost.h"
#include "tests/support/ThreadState.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using namespace Quillmere::Core;
using namespace Support;

// Every test here ends only if the gate keeps its promises; a broken one shows as a time-out, a count that
// doesn't add up, or a report of the thread sanitizer.

namespace {
using Guard = Synchronizer::DisablerLocker;
using Step = Synchronizer::StepLocker;

/// Runs each function in a thread of its own, to the end.
template <class... Functions>
void runTogether(Functions... functions) {
    std::vector<std::thread> threads;
    threads.reserve(sizeof...(functions));
    (threads.emplace_back(functions), ...);
    for (std::thread& thread : threads)
        thread.join();
}

/// What a reader and a writer share, as a buffer strategy does.
struct Mailbox {
    Poco::FastMutex mutex;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    bool isFull = false;
};

void post(Synchronizer& gate, Mailbox& box) {
    const Poco::FastMutex::ScopedLock lock(box.mutex);
    box.isFull = true;
    gate.signal(box.event);
}

/// One look into the box, asleep if it is empty; what was in it is gone.
bool fetch(Synchronizer& gate, Mailbox& box) {
    const Poco::FastMutex::ScopedLock lock(box.mutex);
    if (!box.isFull) gate.wait(box.mutex, box.event);
    const bool was = box.isFull;
    box.isFull = false;
    return was;
}
} // namespace

TEST(SynchronizerTest, GuardsOverNothingDoNothing) {
    const Guard none(nullptr, nullptr);
    Synchronizer gate;
    {
        const Guard first(nullptr, &gate);
        EXPECT_TRUE(gate.getIsWanted());
    }
    EXPECT_FALSE(gate.getIsWanted());
}

TEST(SynchronizerTest, GuardsOfOneThreadNestInAnyOrderAndOverTheSameGateTwice) {
    Synchronizer gate;
    Synchronizer other;
    {
        const Guard outer(&gate, nullptr);
        const Guard inner(&gate, &other);
        const Guard twice(&other, &other);
        const Guard back(&other, &gate);
        EXPECT_TRUE(gate.getIsWanted());
        EXPECT_TRUE(other.getIsWanted());
    }
    EXPECT_FALSE(gate.getIsWanted());
    EXPECT_FALSE(other.getIsWanted());
    runTogether([&] { const Guard free(&gate, &other); });
}

TEST(SynchronizerTest, TheInnerGuardMayOutliveTheOuter) {
    Synchronizer gate;
    auto outer = std::make_unique<Guard>(&gate, nullptr);
    auto inner = std::make_unique<Guard>(&gate, nullptr);
    outer.reset();
    EXPECT_TRUE(gate.getIsWanted());
    inner.reset();
    EXPECT_FALSE(gate.getIsWanted());
}

TEST(SynchronizerTest, AStepPassesItsOwnGateAgain) {
    Synchronizer gate;
    Step step(gate);
    {
        const Guard guard(&gate, nullptr); // a step reads a setting of its own
        Step nested(gate);
        nested.giveWayIfWanted();
        EXPECT_FALSE(gate.getIsWanted()) << "a guard of the step's own thread disturbs nobody";
    }
    step.giveWayIfWanted();
}

TEST(SynchronizerTest, GuardsAndStepsExcludeEachOther) {
    Synchronizer gate;
    long plain = 0; // no atomic: the gate is its lock
    const auto guards = [&] {
        for (int i = 0; i < 3000; ++i) {
            const Guard guard(&gate, nullptr);
            ++plain;
        }
    };
    runTogether(guards, guards, [&] {
        for (int i = 0; i < 3000; ++i) {
            Step step(gate);
            ++plain;
            step.giveWayIfWanted();
            ++plain;
        }
    });
    EXPECT_EQ(plain, 12000);
}

TEST(SynchronizerTest, GuardsOverTwoGatesInOppositeOrderDoNotDeadlock) {
    Synchronizer a;
    Synchronizer b;
    long plain = 0;
    const auto swing = [&plain](Synchronizer* first, Synchronizer* second) {
        return [&plain, first, second] {
            for (int i = 0; i < 5000; ++i) {
                const Guard guard(first, second);
                ++plain;
            }
        };
    };
    const auto loop = [](Synchronizer& gate) {
        return [&gate] {
            for (int i = 0; i < 5000; ++i) {
                Step step(gate);
                step.giveWayIfWanted();
            }
        };
    };
    runTogether(swing(&a, &b), swing(&b, &a), loop(a), loop(b));
    EXPECT_EQ(plain, 10000);
}

TEST(SynchronizerTest, AGuardWakesASleepingReaderAndWaitsForTheEndOfItsStep) {
    Synchronizer gate;
    Mailbox box;
    bool isStepOver = false; // no atomic: the gate is its lock
    std::atomic<bool> isInStep{false};
    runTogether(
        [&] {
            Step step(gate);
            isInStep = true;
            EXPECT_FALSE(fetch(gate, box)); // asleep with the gate held
            isStepOver = true;
        },
        [&] {
            while (!isInStep)
                std::this_thread::yield();
            const Guard guard(&gate, nullptr);
            EXPECT_TRUE(isStepOver);
        });
}

TEST(SynchronizerTest, WaitReturnsAtOnceWhileAGuardHoldsTheGate) {
    Synchronizer gate;
    Mailbox box;
    const Guard guard(&gate, nullptr);
    EXPECT_FALSE(fetch(gate, box));
    EXPECT_FALSE(fetch(gate, box));
}

TEST(SynchronizerTest, ShutDownWakesTheSleepersAndForbidsSleep) {
    Synchronizer gate;
    Mailbox boxes[3];
    std::atomic<int> arrived{0};
    const auto sleeper = [&](Mailbox& box) {
        return [&] {
            ++arrived;
            EXPECT_FALSE(fetch(gate, box));
        };
    };
    runTogether(sleeper(boxes[0]), sleeper(boxes[1]), sleeper(boxes[2]), [&] {
        while (arrived < 3)
            std::this_thread::yield();
        gate.shutDown();
    });
    EXPECT_TRUE(gate.getIsShutDown());
    EXPECT_FALSE(fetch(gate, boxes[0]));
    const Guard guard(&gate, nullptr); // guards and steps go on
}

TEST(SynchronizerTest, ASignalWakesItsOwnSleeperOnlyAndIsNotKept) {
    Synchronizer gate;
    Mailbox box;
    Mailbox other;
    {
        const Poco::FastMutex::ScopedLock lock(box.mutex);
        gate.signal(box.event); // nobody sleeps: nothing must be left for the next wait
    }
    std::atomic<bool> isPosted{false};
    runTogether(
        [&] {
            EXPECT_TRUE(fetch(gate, box)); // woken early, it would find the box empty
            EXPECT_TRUE(isPosted);
        },
        [&] {
            for (int i = 0; i < 100; ++i) {
                post(gate, other);
                std::this_thread::yield();
            }
            isPosted = true;
            post(gate, box);
        });
}

TEST(SynchronizerTest, NoWakeUpIsLostBetweenAReaderAndAWriter) {
    Synchronizer gate;
    Mailbox there;
    Mailbox back;
    constexpr int kRounds = 5000;
    runTogether(
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                post(gate, there);
                while (!fetch(gate, back)) {
                }
            }
        },
        [&] {
            for (int i = 0; i < kRounds; ++i) {
                while (!fetch(gate, there)) {
                }
                post(gate, back);
            }
        });
}

TEST(SynchronizerTest, GuardsNeverStopABusyLoopAndTheLoopNeverStopsThem) {
    Synchronizer gate;
    std::atomic<bool> isDone{false};
    std::atomic<long> written{0};
    const auto writer = [&] {
        while (!isDone) {
            const Guard guard(&gate, nullptr);
            ++written;
        }
    };
    runTogether(writer, writer, writer, [&] {
        // Four threads want the gate without a pause: each side gets its two thousand turns, and all end only
        // then.
        for (int i = 0; i < 2000 || written < 2000; ++i) {
            Step step(gate);
            step.giveWayIfWanted();
        }
        isDone = true;
    });
}

TEST(SynchronizerTest, AStepGetsItsTurnBetweenGuardsThatHandTheGateOn) {
    constexpr long kTurns = 200;
    Synchronizer gate;
    std::atomic<bool> isDone{false};
    std::atomic<int> waiting{0};
    long visits = 0; // no atomic: the gate is its lock
    const auto writer = [&] {
        while (!isDone) {
            ++waiting;
            const Guard guard(&gate, nullptr);
            --waiting;
            ++visits;
            // Goes when the next one stands before the gate, so that there is hardly ever no guard.
            while (waiting == 0 && !isDone)
                std::this_thread::yield();
            for (std::atomic<int> left{2000}; left > 0; --left) {
            }
        }
    };
    runTogether(writer, writer, [&] {
        for (long i = 0; i < kTurns; ++i)
            const Step step(gate);
        isDone = true;
    });
    // Two at a turn and not thousands; much room for a thread that is held up before it stands in the queue.
    EXPECT_LT(visits, 50 * kTurns) << "the guards went first for ever";
}

TEST(SynchronizerTest, AGuardThatComesWhenItIsTheStepsTurnWaits) {
    constexpr int kRounds = 200;
    Synchronizer gate;
    Standstill beforeTheStep;
    std::atomic<int> queued{0};  // rounds in which the step may queue
    std::atomic<int> givenUp{0}; // rounds in which the gate was given up
    std::atomic<int> steps{0};   // written by the step, under the gate
    int overtaken = 0;           // no atomic: the gate is its lock
    runTogether(
        [&] {
            for (int round = 1; round <= kRounds; ++round) {
                auto guard = std::make_unique<Guard>(&gate, nullptr);
                queued = round;
                beforeTheStep.await(); // it stands in the queue, and no other guard was there when it came
                givenUp = round;
                guard.reset();
                while (steps < round)
                    std::this_thread::yield();
            }
        },
        [&] {
            for (int round = 1; round <= kRounds; ++round) {
                while (queued < round)
                    std::this_thread::yield();
                beforeTheStep.enter();
                const Step step(gate);
                steps = round;
            }
        },
        [&] {
            for (int round = 1; round <= kRounds; ++round) {
                while (givenUp < round)
                    std::this_thread::yield();
                while (steps < round) {
                    const Guard guard(&gate, nullptr);
                    if (steps < round) ++overtaken;
                }
            }
        });
    EXPECT_EQ(overtaken, 0);
}

TEST(SynchronizerTest, ASettingIsWrittenTenThousandTimesAgainstABusyLoop) {
    CheckingHost host("busy");
    ProbeBlock block("probe", host);
    host.add(block);
    const long changesBefore = block.changes;
    host.start();
    while (host.getPasses() == 0)
        std::this_thread::yield();
    for (int i = 0; i < 10000; ++i)
        block.order.setValue(i % 11);
    const long passes = host.getPasses();
    while (host.getPasses() < passes + 10)
        std::this_thread::yield();
    host.stop();
    EXPECT_EQ(block.changes - changesBefore, 9999) << "the first write is of the value that is there";
    EXPECT_EQ(host.getComplaints(), std::set<std::string>());
}

TEST(SynchronizerTest, AMovingSubjectIsGuardedWhereItIsInTheEnd) {
    struct Subject {
        Synchronizer* getSynchronizer() const { return gate; }
        std::atomic<Synchronizer*> gate{nullptr};
        long plain = 0;
    };
    Synchronizer gates[2];
    Subject subject;
    subject.gate = &gates[0];
    const auto writer = [&] {
        for (int i = 0; i < 3000; ++i) {
            const Synchronizer::SubjectLocker<Subject> guard(subject);
            ++subject.plain;
        }
    };
    runTogether(writer, writer, [&] {
        for (int i = 0; i < 3000; ++i) {
            const Guard both(&gates[0], &gates[1]);
            subject.gate = &gates[i % 2];
            ++subject.plain;
        }
    });
    EXPECT_EQ(subject.plain, 9000);
}
