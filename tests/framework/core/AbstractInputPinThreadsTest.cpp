// SPDX-License-Identifier: MIT
#include "framework/core/AbstractInputPin.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace TestBlocks;

namespace {
/// Runs passes of a layout in a thread of its own until told to stop.
class Loop {
public:
    explicit Loop(LayoutManager& runLayout) : layout(runLayout), thread([this] { run(); }) {}
    ~Loop() {
        isStopped = true;
        layout.getSynchronizer().shutDown();
        thread.join();
    }
    int getPasses() const { return passes; }

private:
    void run() {
        while (!isStopped) {
            layout.runStep();
            ++passes;
        }
    }

    LayoutManager& layout;
    std::atomic<bool> isStopped{false};
    std::atomic<int> passes{0};
    std::thread thread;
};
} // namespace

/// The sender's step writes to the very strategy that a new capacity replaces.
TEST(AbstractInputPinThreadsTest, TheBufferIsRebuiltWhileTheSenderRuns) {
    Counting sender("sender");
    Receiving receiver("receiver");
    receiver.input.setIsBlocking(false);
    LayoutManager senders("senders");
    LayoutManager receivers("receivers");
    senders.add(sender);
    receivers.add(receiver);
    sender.output.attach(receiver.input, false);
    {
        const Loop sending(senders);
        const Loop receiving(receivers);
        for (int round = 0; round < 300; ++round) {
            receiver.input.setBufferCapacity(1 + static_cast<unsigned>(round) % 3);
            receiver.input.setIsLifo(round % 2 == 0);
        }
        while (sending.getPasses() < 10)
            std::this_thread::yield();
    }
    EXPECT_EQ(receiver.input.getBufferCapacity(), 3u);
    EXPECT_GE(sender.output.data.value(0), 10.0);
}
