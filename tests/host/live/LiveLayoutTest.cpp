// SPDX-License-Identifier: MIT
#include "host/live/LiveLayout.h"

#include "host/run/RunEnd.h"
#include "tests/host/kit/NoThreads.h"
#include "tests/support/Allocations.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <optional>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;

constexpr int kStepsToSettle = 200;
constexpr int kSteps = 5000;
constexpr std::uint32_t kBuffer = 16;

/// Drives a layout: a sample of 1 by 3 in each step.
class Ticker final : public Filter {
public:
    Ticker() : Filter("ticker", true), out("out", this) { out.data.value = MatrixXd::Constant(1, 3, 0.5); }
    void process() override { out.send(out.data.timeStamp + 0.01); }
    const char* getTypeName() const override { return "Ticker"; }

    OutputPin<MatrixXd> out;
};

/// Passes samples on, and counts what its thread allocates between one of its samples and another.
class Counting final : public Filter {
public:
    Counting() : Filter("counting", true), in("in", this), out("out", this) {}
    void process() override {
        if (!in.hasData()) return;
        copySample(out.data.value, in.take());
        out.send(in.getTimeStamp());
        ++samples;
        // A reader gives back storage of its own with its first sample, which may come late.
        if (!counter && samples >= kStepsToSettle && reader->samples >= kStepsToSettle) {
            counter.emplace();
            end = samples + kSteps;
        }
        if (samples == end) allocations = static_cast<int>(counter->count());
    }
    const char* getTypeName() const override { return "Counting"; }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    const Counting* reader = this; ///< Of what this one sends, if it lives in another layout.
    std::atomic<int> samples{0};
    int end = 0;
    std::optional<Support::AllocationCounter> counter;
    std::atomic<int> allocations{-1}; ///< Not known yet.
};

/// Two layouts, the second fed by the first over a link that wakes it, which run until both have seen enough.
class LiveLayoutTest : public testing::Test {
protected:
    LiveLayoutTest() {
        first.add(ticker);
        first.add(here);
        second.add(there);
        ticker.out.attach(here.in, false);
        there.in.setBufferCapacity(kBuffer); // what is lost doesn't matter here
        here.out.attach(there.in, false);
        here.reader = &there;
        // A buffer grows with the lag of its reader, whenever that comes: it has all its places from the
        // start.
        here.out.data.value = MatrixXd::Constant(1, 3, 0.5);
        for (std::uint32_t i = 0; i < kBuffer; ++i)
            here.out.send(0.0);
    }
    void run() {
        for (LiveLayout* const layout : {&firstLive, &secondLive})
            layout->refresh(noSources);
        for (LiveLayout* const layout : {&firstLive, &secondLive})
            layout->start();
        while (here.allocations < 0 || there.allocations < 0)
            std::this_thread::yield();
        drive.cut("seen enough");
        for (LiveLayout* const layout : {&firstLive, &secondLive}) {
            layout->getGate().shutDown();
            layout->join();
        }
    }

    Timeline timeline;
    LiveDrive drive{LiveClock::kMaximum, {}, true, timeline};
    std::deque<RunSource> noSources;
    LayoutManager first{"first"};
    LayoutManager second{"second"};
    Ticker ticker;
    Counting here;
    Counting there;
    LiveLayout firstLive{"first", first, drive};
    LiveLayout secondLive{"second", second, drive};
};

TEST_F(LiveLayoutTest, ASteadyPassAllocatesNothing) {
    run();
    EXPECT_EQ(here.allocations, 0) << "with a clock, and a link that another layout reads";
    EXPECT_EQ(there.allocations, 0) << "with a link that wakes the layout";
}

TEST_F(LiveLayoutTest, OneForWhichNoThreadCanBeMadeSaysSo) {
    firstLive.refresh(noSources);
    const Support::NoThreads none;
    try {
        firstLive.start();
        ADD_FAILURE() << "it has a thread";
    } catch (const RunException& exception) {
        EXPECT_STREQ(exception.what(),
                     "no thread can be made for the layout 'first': Resource temporarily unavailable");
    }
    firstLive.join();
}

TEST_F(LiveLayoutTest, StepsAreCountedAndSomeOfThemTimed) {
    run();
    EXPECT_EQ(ticker.stepTally.steps.get(), firstLive.getRounds());
    EXPECT_EQ(here.stepTally.steps.get(), static_cast<std::uint64_t>(here.samples));
    EXPECT_GE(there.stepTally.steps.get(), static_cast<std::uint64_t>(there.samples));
    const std::uint64_t steps = here.stepTally.steps.get();
    const std::uint64_t measured = here.stepTally.measuredSteps.get();
    EXPECT_GE(measured, steps / 500);
    EXPECT_LE(measured, steps / 499 + 1);
    EXPECT_GT(here.stepTally.nanoseconds.get(), 0u);
}

} // namespace
