// SPDX-License-Identifier: MIT
// What a live run adds: a sample on its way from one sleeping layout to another, and the counting of steps.
#include "benchmarks/support/Pair.h"
#include "blocks/FilterButterworth.h"
#include "framework/Quillmere.h"
#include "host/live/LiveDrive.h"
#include "host/live/LiveLayout.h"

#include <Poco/Event.h>
#include <Poco/Mutex.h>

#include <chrono>
#include <cstring>
#include <deque>
#include <limits>
#include <semaphore>
#include <thread>

namespace {

using namespace Quillmere::Core;
using namespace Quillmere::Host;
using Clock = std::chrono::steady_clock;

constexpr int kHops = 2000; ///< From one thread to the other, in an iteration; half of them lead back.
constexpr std::uint64_t kRounds = 20000;
constexpr std::size_t kBlocks = 10;

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// What a hand-off of 1 by 3 doubles and a time stamp takes at least: a copy under a mutex, and an event.
class Box {
public:
    void put(const TimeStampedData<MatrixXd>& sample) {
        {
            const Poco::FastMutex::ScopedLock lock(mutex);
            std::memcpy(values, sample.value.data(), sizeof values);
            timeStamp = sample.timeStamp;
        }
        event.set(); // outside the lock, so that who wakes doesn't run into it
    }
    void take(TimeStampedData<MatrixXd>& sample) {
        event.wait();
        const Poco::FastMutex::ScopedLock lock(mutex);
        std::memcpy(sample.value.data(), values, sizeof values);
        sample.timeStamp = timeStamp;
    }

private:
    Poco::FastMutex mutex;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    double values[3] = {};
    double timeStamp = 0.0;
};

void bareHandOff(benchmark::State& state) {
    Box there;
    Box back;
    for (auto _ : state) {
        std::thread other([&] {
            TimeStampedData<MatrixXd> sample;
            sample.value.resize(1, 3);
            for (int hop = 0; hop < kHops / 2; ++hop) {
                there.take(sample);
                back.put(sample);
            }
        });
        TimeStampedData<MatrixXd> sample;
        sample.value = MatrixXd::Constant(1, 3, 0.5);
        const Clock::time_point begin = Clock::now();
        for (int hop = 0; hop < kHops / 2; ++hop) {
            there.put(sample);
            back.take(sample);
        }
        state.SetIterationTime(secondsSince(begin));
        other.join();
    }
}

/// Passes samples on; one that counts down keeps the last and says so.
class Relay final : public Filter {
public:
    explicit Relay(const std::string& name) : Filter(name, true), out("out", this), in("in", this) {}
    void process() override {
        if (!in.hasData()) return;
        copySample(out.data.value, in.take());
        if (hopsLeft > 0 && (hopsLeft -= 2) == 0) return done.release();
        out.send(in.getTimeStamp());
    }
    const char* getTypeName() const override { return "Relay"; }

    OutputPin<MatrixXd> out;
    InputPin<MatrixXd> in;
    int hopsLeft = 0; ///< In a ring of two, before this one keeps the sample; 0: it never does.
    std::binary_semaphore done{0};
};

void layoutHandOff(benchmark::State& state) {
    Timeline timeline;
    LiveDrive drive(LiveClock::kMaximum, {}, true, timeline);
    std::deque<RunSource> noSources;
    Relay first("first");
    Relay second("second");
    LayoutManager here("here");
    LayoutManager there("there");
    here.add(first);
    there.add(second);
    first.out.attach(second.in, false);
    second.out.attach(first.in, false);
    LiveLayout hereLive("here", here, drive);
    LiveLayout thereLive("there", there, drive);
    for (LiveLayout* const layout : {&hereLive, &thereLive}) {
        layout->refresh(noSources);
        layout->start();
    }
    for (auto _ : state) {
        const Clock::time_point begin = Clock::now();
        {
            const Synchronizer::DisablerLocker guard(&here.getSynchronizer(), nullptr);
            first.hopsLeft = kHops;
            first.out.data.value = MatrixXd::Constant(1, 3, 0.5);
            first.out.send(0.0);
        }
        first.done.acquire();
        state.SetIterationTime(secondsSince(begin));
    }
    for (LiveLayout* const layout : {&hereLive, &thereLive}) {
        layout->getGate().shutDown();
        layout->join();
    }
}

/// Drives a layout: a sample of 1 by 3 in each step.
class Ticker final : public Filter {
public:
    Ticker() : Filter("ticker", true), out("out", this) { out.data.value = MatrixXd::Constant(1, 3, 0.5); }
    void process() override { out.send(out.data.timeStamp + 0.01); }
    const char* getTypeName() const override { return "Ticker"; }

    OutputPin<MatrixXd> out;
};

/// Ten blocks in a row, in one layout.
template <class Block>
void runChain(benchmark::State& state, bool countsSteps) {
    for (auto _ : state) {
        Timeline timeline;
        LiveDrive drive(LiveClock::kMaximum, {.rounds = kRounds, .seconds = {}}, countsSteps, timeline);
        std::deque<RunSource> noSources;
        Ticker ticker;
        std::deque<Block> blocks;
        LayoutManager manager("chain");
        manager.add(ticker);
        AbstractOutputPin* sender = &ticker.out;
        for (std::size_t i = 0; i < kBlocks; ++i) {
            Block& block = blocks.emplace_back("block");
            manager.add(block);
            sender->attach(*block.getInputPins().front(), false);
            sender = block.getOutputPins().front();
        }
        LiveLayout layout("chain", manager, drive);
        layout.refresh(noSources);
        const Clock::time_point begin = Clock::now();
        layout.start();
        drive.waitForEnd();
        state.SetIterationTime(secondsSince(begin));
        layout.getGate().shutDown();
        layout.join();
    }
}

const Bench::Suite suite([] {
    Bench::enter({.name = "hand-off between sleeping layouts/1x3",
                  .bare = bareHandOff,
                  .ours = layoutHandOff,
                  .goal = 2.0,
                  .time = Bench::Time::OfBody});
    Bench::enter({.name = "statistics, 10 filters",
                  .bare = [](benchmark::State& state) { runChain<FilterButterworth>(state, false); },
                  .ours = [](benchmark::State& state) { runChain<FilterButterworth>(state, true); },
                  .goal = 1.02,
                  .time = Bench::Time::OfBody});
    Bench::enter({.name = "statistics, 10 blocks that do nothing",
                  .bare = [](benchmark::State& state) { runChain<Relay>(state, false); },
                  .ours = [](benchmark::State& state) { runChain<Relay>(state, true); },
                  .time = Bench::Time::OfBody});
});

} // namespace
