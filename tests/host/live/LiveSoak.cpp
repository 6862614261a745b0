// SPDX-License-Identifier: MIT
// soak_live [SECONDS]: live runs in turmoil, one behind the other, for so long (60 without an argument), and
// an idle one. Fails when a run goes wrong, when memory grows from the first quarter to the last, or when a
// run that has nothing to do uses the processor.
#include "host/live/LiveRun.h"
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/FedPipe.h"
#include "tests/host/kit/LiveTurmoil.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <optional>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Clock = std::chrono::steady_clock;
using Support::LiveTurmoil;

constexpr double kSeconds = 60.0;
constexpr std::uint64_t kSamples = 50000;
constexpr std::chrono::seconds kLongestRun{120};
constexpr std::chrono::milliseconds kBetweenLooks{100};
constexpr std::chrono::seconds kIdle{2};
constexpr double kMostOfACore = 0.01;
/// Of memory; the few MiB that a run needs wander by less, and a leak in each change or sample would come to
/// more.
constexpr double kMostGrowth = 1.1;
/// Runs before memory is looked at: they bring in what every later one uses again.
constexpr unsigned kFirstRuns = 3;

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

/// What of this program is in memory, in MiB.
double residentMemory() {
    std::ifstream file("/proc/self/statm");
    double whole = 0.0;
    double resident = 0.0;
    file >> whole >> resident;
    return resident * static_cast<double>(::sysconf(_SC_PAGESIZE)) / 1048576.0;
}

double processorSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double mean(const std::vector<double>& values, std::size_t begin, std::size_t end) {
    const auto at = [&](std::size_t index) { return values.begin() + static_cast<std::ptrdiff_t>(index); };
    return std::accumulate(at(begin), at(end), 0.0) / static_cast<double>(end - begin);
}

/// A run whose pipe nobody writes to sleeps.
bool idles(const BlockCatalogue& catalogue) {
    const Support::TemporaryFolder folder;
    Support::FedPipe pipe(folder.path("in.csv"));
    pipe.write("t,x\n0,1\n", [] { return true; });
    Job job = Job::fromFile(
        folder.write(
            "idle.yaml",
            "format: 1\nlayouts: [{id: a}, {id: b}]\nblocks:\n"
            "  - {id: in, type: RecordingSource, properties: {file: in.csv, time: t, pins: {x: x}}}\n"
            "  - {id: gain, type: FilterGain, layout: b}\n"
            "  - {id: out, type: RecordingSink, layout: b, properties: {file: out.csv}}\n"
            "connections:\n  - {from: in, to: gain}\n  - {from: gain, to: out.x}\n"),
        catalogue);
    LiveRun run(std::move(job));
    run.start();
    while (run.getJob().getGraph().getSources().front()->getRows() == 0)
        std::this_thread::yield();
    std::this_thread::sleep_for(kBetweenLooks);
    const double before = processorSeconds();
    std::this_thread::sleep_for(kIdle);
    const double used = (processorSeconds() - before) / std::chrono::duration<double>(kIdle).count();
    run.stop();
    run.wait();
    std::printf("idle: %.3f %% of a core\n", 100.0 * used);
    return used < kMostOfACore;
}

/// Memory over time, in MiB, looked at by a thread of its own.
class MemoryLog {
public:
    MemoryLog() : thread([this] { look(); }) {}
    ~MemoryLog() {
        if (thread.joinable()) stop();
    }
    const std::vector<double>& stop() {
        isDone = true;
        thread.join();
        return looks;
    }

private:
    void look() {
        while (!isDone) {
            looks.push_back(residentMemory());
            std::this_thread::sleep_for(kBetweenLooks);
        }
    }

    std::atomic<bool> isDone{false};
    std::vector<double> looks;
    std::thread thread;
};

bool soak(const BlockCatalogue& catalogue, double seconds) {
    const auto begin = Clock::now();
    std::optional<MemoryLog> log;
    bool isGood = true;
    for (unsigned seed = 1; seed <= kFirstRuns + 1 || secondsSince(begin) < seconds; ++seed) {
        if (seed == kFirstRuns + 1) log.emplace();
        const Support::TemporaryFolder folder;
        LiveTurmoil turmoil(folder, catalogue,
                            {.samples = kSamples,
                             .seed = seed * 100,
                             .feed = LiveTurmoil::Feed::Pipes,
                             .overflow = seed % 2 == 0 ? Overflow::Wait : Overflow::Drop,
                             .timeLimit = kLongestRun});
        const LiveTurmoil::Result result = turmoil.run();
        std::printf("%3u: %s; %.2f MiB\n", seed, result.getText().c_str(), residentMemory());
        for (const std::string& complaint : result.complaints)
            std::printf("     %s\n", complaint.c_str());
        std::fflush(stdout);
        isGood = isGood && result.complaints.empty();
    }
    const std::vector<double>& looks = log->stop();
    const std::size_t quarter = looks.size() / 4;
    const double first = mean(looks, 0, quarter);
    const double last = mean(looks, looks.size() - quarter, looks.size());
    std::printf("memory: %.2f MiB in the first quarter, %.2f in the last\n", first, last);
    return isGood && last <= first * kMostGrowth;
}

} // namespace

int main(int count, char** arguments) {
    // Each thread would have an area of its own to allocate from, and which of them are used again is luck.
    ::mallopt(M_ARENA_MAX, 1);
    const double seconds = count > 1 ? std::atof(arguments[1]) : kSeconds;
    HostCatalogue catalogue;
    catalogue.load(VELMARIND_PLUGIN);
    catalogue.load(ODD_PLUGIN);
    const bool hasIdled = idles(catalogue);
    const bool hasSoaked = soak(catalogue, seconds);
    std::printf("%s\n", hasIdled && hasSoaked ? "ok" : "FAILED");
    return hasIdled && hasSoaked ? EXIT_SUCCESS : EXIT_FAILURE;
}
