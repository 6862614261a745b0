// SPDX-License-Identifier: MIT
#include "framework/transport/InputPin.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

using namespace TestBlocks;
using namespace std::chrono_literals;

namespace {
/// A sender in one layout and a reader in another, whose step sleeps on its input in a thread of its own.
class InputPinThreadsTest : public testing::Test {
protected:
    InputPinThreadsTest() {
        senders.add(sender);
        readers.add(reader);
        sender.output.attach(reader.input, false);
        reader.received = [this](const MatrixXd& value, double) { last = static_cast<int>(value(0)); };
    }
    ~InputPinThreadsTest() override { stop(); }

    /// Starts the reader's loop and returns when its step is about to sleep, or sleeps.
    void startReading() {
        thread = std::thread([this] {
            while (!isStopped)
                readers.runStep();
        });
        while (reader.stepsBegun == 0)
            std::this_thread::yield();
        std::this_thread::sleep_for(5ms);
    }
    void stop() {
        isStopped = true;
        readers.getSynchronizer().shutDown();
        if (thread.joinable()) thread.join();
    }
    /// Whether `condition` holds before long.
    template <class Condition>
    static bool comesTrue(Condition condition) {
        for (int i = 0; i < 20000 && !condition(); ++i)
            std::this_thread::sleep_for(1ms);
        return condition();
    }

    Counting sender{"sender"};
    Receiving reader{"reader"};
    LayoutManager senders{"senders"};
    LayoutManager readers{"readers"};
    std::atomic<int> last{0};
    std::atomic<bool> isStopped{false};
    std::thread thread;
};
} // namespace

TEST_F(InputPinThreadsTest, ABlockingReaderSleepsUntilASampleComes) {
    startReading();
    EXPECT_LE(reader.stepsBegun, 2) << "it sleeps: a loop that didn't would have made thousands of steps";
    EXPECT_EQ(reader.stepsEnded, reader.stepsBegun - 1);
    senders.runStep();
    EXPECT_TRUE(comesTrue([&] { return last == 1; }));
    senders.runStep();
    EXPECT_TRUE(comesTrue([&] { return last == 2; }));
}

TEST_F(InputPinThreadsTest, ANonBlockingReaderNeverSleeps) {
    sender.output.detach(reader.input, false);
    reader.input.setIsBlocking(false);
    sender.output.attach(reader.input, false);
    startReading();
    EXPECT_TRUE(comesTrue([&] { return reader.stepsEnded > 1000; }));
    senders.runStep();
    EXPECT_TRUE(comesTrue([&] { return last == 1; }));
}

TEST_F(InputPinThreadsTest, AWriteOfASettingGetsPastASleepingReader) {
    ValueProperty<int> setting("setting", &reader.getPropertyBag());
    startReading();
    for (int i = 1; i <= 50; ++i) {
        setting.setValue(i);
        ASSERT_EQ(setting.getValue(), i);
    }
    EXPECT_GE(reader.stepsEnded, 1) << "the step that slept has ended without a sample";
    EXPECT_EQ(last, 0);
    senders.runStep();
    EXPECT_TRUE(comesTrue([&] { return last == 1; })) << "and the reader sleeps for samples again";
}

TEST_F(InputPinThreadsTest, ACommandGetsPastASleepingReader) {
    struct Target {
        void reset() { ++resets; }
        int resets = 0;
    } target;
    CommandProperty command("reset", &reader.getPropertyBag());
    command.setChangeHandler(&target, &Target::reset);
    startReading();
    command.fire();
    command.fire();
    EXPECT_EQ(target.resets, 2);
}

TEST_F(InputPinThreadsTest, ADetachGetsPastASleepingReaderAndLeavesItAwake) {
    startReading();
    sender.output.detach(reader.input, false);
    EXPECT_FALSE(reader.input.isAttached());
    EXPECT_TRUE(comesTrue([&] { return reader.stepsEnded > 1000; })) << "an unconnected input never sleeps";
    sender.output.attach(reader.input, false);
    senders.runStep();
    EXPECT_TRUE(comesTrue([&] { return last == 1; }));
}

TEST_F(InputPinThreadsTest, AMoveToTheSendersLayoutMakesTheLinkPlain) {
    startReading();
    senders.add(reader);
    EXPECT_TRUE(readers.getFilters().empty());
    stop();
    senders.runStep(); // sender, then reader, in this thread
    EXPECT_EQ(last, 1);
    EXPECT_TRUE(isPlainLink(sender.output, reader.input));
}

TEST_F(InputPinThreadsTest, ANewCapacityGetsPastASleepingReader) {
    startReading();
    reader.input.setBufferCapacity(100);
    reader.input.setIsLifo(true);
    senders.runStep();
    EXPECT_TRUE(comesTrue([&] { return last == 1; }));
}

TEST_F(InputPinThreadsTest, AShutDownEndsTheSleep) {
    startReading();
    const int before = reader.stepsEnded;
    readers.getSynchronizer().shutDown();
    EXPECT_TRUE(comesTrue([&] { return reader.stepsEnded > before + 100; })) << "nobody sleeps any more";
}

TEST_F(InputPinThreadsTest, ASenderIsNeverHeldUpByASlowReader) {
    reader.input.setBufferCapacity(2);
    std::atomic<bool> mayGoOn{false};
    reader.received = [&](const MatrixXd& value, double) {
        while (!mayGoOn)
            std::this_thread::yield();
        last = static_cast<int>(value(0));
    };
    startReading();
    for (int i = 0; i < 1000; ++i) // while the reader is inside its step, and holds its gate
        senders.runStep();
    mayGoOn = true;
    EXPECT_TRUE(comesTrue([&] { return last == 1000; }))
        << "the newest came through, the older ones are lost";
}
