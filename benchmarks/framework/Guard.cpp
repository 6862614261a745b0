// SPDX-License-Identifier: MIT
// What a guard costs: one taken by the step's own thread, as for each setting that a step reads, and one
// taken from outside while no step runs, as for a setting that somebody writes; beside locking and unlocking
// a mutex that nobody else wants. A second thread is alive all the time, since a C library may spare a lonely
// one the locked instruction.
#include "benchmarks/support/Pair.h"
#include "framework/core/Synchronizer.h"

#include <atomic>
#include <mutex>
#include <thread>

using Quillmere::Core::Synchronizer;

namespace {

class SecondThread {
public:
    SecondThread() : thread([this] { isOver.wait(false); }) {}
    ~SecondThread() {
        isOver = true;
        isOver.notify_one();
        thread.join();
    }
    SecondThread(const SecondThread&) = delete;
    SecondThread& operator=(const SecondThread&) = delete;

private:
    std::atomic<bool> isOver{false};
    std::thread thread;
};

void lockAMutex(benchmark::State& run) {
    const SecondThread second;
    std::mutex mutex;
    std::mutex* hidden = &mutex;
    for (auto _ : run) {
        benchmark::DoNotOptimize(hidden);
        const std::lock_guard lock(*hidden);
        benchmark::ClobberMemory();
    }
}

void guard(benchmark::State& run, Synchronizer& gate) {
    Synchronizer* hidden = &gate;
    for (auto _ : run) {
        benchmark::DoNotOptimize(hidden);
        const Synchronizer::DisablerLocker held(hidden, nullptr);
        benchmark::ClobberMemory();
    }
}

void guardInAStep(benchmark::State& run) {
    const SecondThread second;
    Synchronizer gate;
    const Synchronizer::StepLocker step(gate);
    guard(run, gate);
}

void guardFromOutside(benchmark::State& run) {
    const SecondThread second;
    Synchronizer gate;
    guard(run, gate);
}

const Bench::Suite suite([] {
    Bench::enter({.name = "guard in a step", .bare = lockAMutex, .ours = guardInAStep, .goal = 1.0});
    Bench::enter({.name = "guard from outside", .bare = lockAMutex, .ours = guardFromOutside});
});

} // namespace
