// SPDX-License-Identifier: MIT
// What any thread may ask about a link while others make it, take it down and move its ends.
#include "framework/transport/InputPin.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace TestBlocks;
using namespace std::chrono_literals;

namespace {
/// A link between two layouts.
class LinkStateThreadsTest : public testing::Test {
protected:
    LinkStateThreadsTest() {
        senders.add(sender);
        receivers.add(receiver);
        sender.output.attach(receiver.input, false);
    }
    /// Whether `ask` has an answer while somebody else holds that gate.
    static bool getIsAnsweredBeside(LayoutManager& layout, const std::function<void()>& ask) {
        std::atomic<bool> isAsked{false};
        std::atomic<bool> isAnswered{false};
        std::thread asking;
        bool wasAnswered = false;
        {
            const Synchronizer::DisablerLocker held(&layout.getSynchronizer(), nullptr);
            asking = std::thread([&] {
                isAsked = true;
                ask();
                isAnswered = true;
            });
            while (!isAsked)
                std::this_thread::yield();
            std::this_thread::sleep_for(50ms); // an answer without the gate takes no microsecond
            wasAnswered = isAnswered;
        }
        asking.join();
        EXPECT_TRUE(isAnswered);
        return wasAnswered;
    }

    Counting sender{"sender"};
    Receiving receiver{"receiver"};
    LayoutManager senders{"senders"};
    LayoutManager receivers{"receivers"};
};
} // namespace

TEST_F(LinkStateThreadsTest, NobodyIsAnsweredWhileALinkMayBeChanging) {
    EXPECT_FALSE(getIsAnsweredBeside(receivers, [&] { EXPECT_EQ(receiver.input.getQueueLength(), 0u); }));
    EXPECT_FALSE(getIsAnsweredBeside(senders, [&] { EXPECT_TRUE(sender.output.isAttached()); }));
}

/// The strategy that is asked is the very one that a new link or a new capacity throws away.
TEST_F(LinkStateThreadsTest, LinksAreAskedAboutWhileTheyAreMadeAndTakenDown) {
    constexpr std::uint32_t kMost = 3;
    std::atomic<bool> isDone{false};
    std::atomic<int> answers{0};
    std::vector<std::thread> asking;
    for (int i = 0; i < 2; ++i)
        asking.emplace_back([&] {
            while (!isDone) {
                EXPECT_LE(receiver.input.getQueueLength(), kMost);
                if (sender.output.isAttached()) ++answers;
                std::this_thread::yield();
            }
        });
    std::uint32_t round = 0;
    for (; round < 300 || answers == 0; ++round) {
        sender.output.detach(receiver.input, false);
        receiver.input.setBufferCapacity(1 + round % kMost);
        sender.output.attach(receiver.input, false);
        senders.runStep();
        senders.runStep();
    }
    isDone = true;
    for (std::thread& thread : asking)
        thread.join();
    EXPECT_EQ(receiver.input.getQueueLength(), std::min(2u, 1 + (round - 1) % kMost));
}

/// Who finds a layout finds a whole one, without any lock.
TEST(PinManagerThreadsTest, ABlocksLayoutIsPublishedWhole) {
    for (int round = 0; round < 200; ++round) {
        Receiving block("block");
        std::unique_ptr<LayoutManager> layout;
        std::string name;
        Synchronizer* gate = nullptr;
        std::thread looking([&] {
            while ((gate = block.getSynchronizer()) == nullptr)
                std::this_thread::yield();
            EXPECT_FALSE(gate->getIsShutDown());
            LayoutManager* found = nullptr;
            while ((found = block.getManager()) == nullptr)
                std::this_thread::yield();
            name = found->getName();
        });
        layout = std::make_unique<LayoutManager>("layout " + std::to_string(round));
        layout->add(block);
        looking.join();
        EXPECT_EQ(name, "layout " + std::to_string(round));
        EXPECT_EQ(gate, &layout->getSynchronizer());
        layout->remove(block);
    }
}
