// SPDX-License-Identifier: MIT
#include "framework/core/AbstractInputPin.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/ThreadState.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

using namespace Support;
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

namespace {
/// A pin that only notes whose gate is held when its strategy would be rebuilt.
class Noting final : public InputPinBase<MatrixXd> {
public:
    Noting(PinManager* manager, Synchronizer& watchedGate)
        : Pin("noting", manager), InputPinBase("noting", manager), gate(watchedGate) {}
    ~Noting() override { InputPinBase::detachAll(); }
    void clear() override {}
    void rebuildStrategy() override {
        ++rebuilt;
        if (!gate.getIsOwn()) ++rebuiltWithout;
    }
    void setConnectedOutput(AbstractOutputPin* output, bool) override { connectedOutput = output; }
    void receive(const Sample&) override {}

    Synchronizer& gate;
    int rebuilt = 0;
    int rebuiltWithout = 0;
};

/// In the order of their addresses.
using ThreeLayouts = std::array<LayoutManager, 3>;
ThreeLayouts threeLayouts() {
    return {LayoutManager("low"), LayoutManager("middle"), LayoutManager("high")};
}
} // namespace

/// While a new capacity waits at the sender's gate, the pin gets another sender: the strategy is rebuilt with
/// that one's gate held, whose step writes to it.
TEST(AbstractInputPinThreadsTest, TheGatesThatAreHeldAreThoseOfTheEndsOfThen) {
    for (const bool changesOrder : {false, true}) {
        ThreeLayouts layouts = threeLayouts();
        Counting former("former");
        Counting next("next");
        Plain reader("reader");
        layouts[0].add(former);
        layouts[1].add(next);
        // behind the others, so that it isn't held yet while the sender's gate is waited for
        layouts[2].add(reader);
        Noting input(&reader, layouts[1].getSynchronizer());
        former.output.attach(input, true);
        Standstill atTheGate;
        std::thread changing;
        {
            const Synchronizer::DisablerLocker held(&layouts[0].getSynchronizer(), nullptr);
            changing = std::thread([&] {
                atTheGate.enter();
                if (changesOrder)
                    input.setIsLifo(true);
                else
                    input.setBufferCapacity(3);
            });
            atTheGate.await();
            former.output.detach(input, false);
            next.output.attach(input, true);
        }
        changing.join();
        EXPECT_EQ(input.rebuilt, 1);
        EXPECT_EQ(input.rebuiltWithout, 0) << "the new sender's step might have been under way";
    }
}

/// While a block that moves waits for a gate, it gets a link from a third layout.
TEST(AbstractInputPinThreadsTest, AMoveHoldsTheGatesOfTheLinksOfThen) {
    ThreeLayouts layouts = threeLayouts();
    Counting sender("sender");
    Plain reader("reader");
    layouts[0].add(sender);
    layouts[2].add(reader);
    Noting input(&reader, layouts[0].getSynchronizer());
    Standstill atTheGate;
    std::thread moving;
    {
        const Synchronizer::DisablerLocker held(&layouts[1].getSynchronizer(), nullptr);
        moving = std::thread([&] {
            atTheGate.enter();
            layouts[1].add(reader);
        });
        atTheGate.await();
        sender.output.attach(input, true); // its sender's gate is one that the move has gone past
    }
    moving.join();
    EXPECT_EQ(reader.getManager(), &layouts[1]);
    EXPECT_EQ(input.rebuilt, 1);
    EXPECT_EQ(input.rebuiltWithout, 0) << "the sender's step might have been under way";
}
