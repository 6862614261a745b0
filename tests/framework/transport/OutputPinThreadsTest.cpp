// SPDX-License-Identifier: MIT
#include "framework/transport/OutputPin.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

#include <thread>

using namespace TestBlocks;

/// One thread makes the link, three take it down, from either end, while nobody holds a lock of their own.
TEST(OutputPinThreadsTest, ALinkIsTakenDownFromBothEndsAtOnce) {
    constexpr int kRounds = 400;
    Counting sender("sender");
    Receiving receiver("receiver");
    LayoutManager senders("senders");
    LayoutManager receivers("receivers");
    senders.add(sender);
    receivers.add(receiver);

    std::atomic<int> links{0};
    std::atomic<bool> isDone{false};
    std::thread maker([&] {
        for (int round = 0; round < kRounds; ++round) {
            try {
                sender.output.attach(receiver.input, round % 2 != 0);
                ++links;
            } catch (const Poco::ExistsException&) {
                std::this_thread::yield(); // the former link still stands
            }
        }
        isDone = true;
    });
    const auto keepDetaching = [&](auto detach) {
        return std::thread([&isDone, detach] {
            while (!isDone) {
                detach();
                std::this_thread::yield();
            }
        });
    };
    std::thread fromInput = keepDetaching([&] { receiver.input.detachAll(); });
    std::thread synchronousOnly = keepDetaching([&] { receiver.input.detachSynchronous(); });
    std::thread fromOutput = keepDetaching([&] { sender.output.detachAll(); });
    for (std::thread* const thread : {&maker, &fromInput, &synchronousOnly, &fromOutput})
        thread->join();

    EXPECT_GT(links, 0);
    receiver.input.detachAll();
    EXPECT_FALSE(receiver.input.isAttached());
    EXPECT_FALSE(sender.output.isAttached());
    sender.output.attach(receiver.input, false);
    EXPECT_TRUE(receiver.input.isAttached());
}
