// SPDX-License-Identifier: MIT
// Whole runs, from file to file: ten columns read, three filters over three of them each, ten written.
// Offline beside a bare loop that does the same arithmetic on one core; by two threads, and live at full
// speed, beside offline. An iteration is the whole table; what all threads do together takes the time that
// passes.
#include "benchmarks/design/PackedCascade.h"
#include "benchmarks/support/Pair.h"
#include "benchmarks/support/Table.h"
#include "host/live/LiveRun.h"
#include "host/recording/HostCatalogue.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Bench::kColumns;
using Bench::kRows;

constexpr int kOrder = 4;
constexpr double kCutOff = 0.1;
constexpr std::size_t kFilters = 3;
constexpr int kElements = 3;

const Bench::Table& table() {
    static const Bench::Table all(4);
    return all;
}

std::string resultPath() {
    return (table().folder.getPath() / "result.csv").string();
}
std::string pipePath() {
    return (table().folder.getPath() / "pipe").string();
}

/// Reads a whole file into `bytes`, which has its size.
bool readFile(const std::string& path, std::string& bytes) {
    const int file = ::open(path.c_str(), O_RDONLY);
    const ssize_t count = ::read(file, bytes.data(), bytes.size());
    ::close(file);
    return count == static_cast<ssize_t>(bytes.size());
}

/// Parses, filters and prints a row after the other, with the standard library's conversions.
char* filterAll(const char* at, const char* end, char* to) {
    constexpr int kLanes = 4;
    using Cascade = Bench::PackedCascade<kLanes, kOrder>;
    std::vector<Cascade> filters(kFilters, Cascade(kCutOff, kElements));
    std::array<double, kColumns + kLanes> row{};
    std::array<double, kColumns + kLanes> filtered{};
    while (at != end) {
        for (std::size_t i = 0; i < kColumns; ++i)
            at = std::from_chars(at, end, row[i]).ptr + 1;
        filtered[0] = row[0];
        for (std::size_t i = 0; i < kFilters; ++i)
            filters[i].step(row.data() + 1 + kElements * i, filtered.data() + 1 + kElements * i);
        for (std::size_t i = 0; i < kColumns; ++i) {
            to = std::to_chars(to, to + 32, filtered[i]).ptr;
            *to++ = ',';
        }
        to[-1] = '\n';
    }
    return to;
}

void bareRun(benchmark::State& state) {
    std::string text(table().text.size(), '\0');
    std::vector<char> result(kRows * kColumns * 26);
    for (auto _ : state) {
        if (!readFile(table().path(), text)) state.SkipWithError("the table cannot be read");
        const char* const end =
            filterAll(text.data() + table().body, text.data() + text.size(), result.data());
        const int file = ::open(resultPath().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (::write(file, result.data(), static_cast<std::size_t>(end - result.data())) < 0)
            state.SkipWithError("the result cannot be written");
        ::close(file);
    }
}

Job makeJob(const std::string& result, std::size_t threads = 1) {
    static const HostCatalogue catalogue = [] {
        HostCatalogue made;
        made.load(VELMARIND_PLUGIN);
        return made;
    }();
    std::string blocks = "format: 1\nblocks:\n  - {id: in, type: RecordingSource, properties: {file: \"" +
                         table().path() +
                         "\", time: t, pins: {p0: [a, b, c], p1: [d, e, f], p2: [g, h, i]}}}\n"
                         "  - {id: out, type: RecordingSink, properties: {file: \"" +
                         result + "\", overwrite: true}}\n";
    std::string links = "connections:\n";
    for (const char* const number : {"0", "1", "2"}) {
        const std::string filter = std::string("f") + number;
        blocks += "  - {id: " + filter +
                  ", type: FilterButterworth, properties: {Order: 4, RelativeCutOffFreq: 0.1}}\n";
        links += "  - {from: in.p" + std::string(number) + ", to: " + filter + ".in}\n  - {from: " + filter +
                 ".out, to: out.p" + number + "}\n";
    }
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromText(blocks + links, "bench.yaml", complaints);
    return Job(description, catalogue, {.threads = threads}, std::move(complaints));
}

void requireWhole(benchmark::State& state, const RunOutcome& outcome) {
    if (!outcome.failure.empty()) state.SkipWithError(outcome.failure.c_str());
}

void runOffline(benchmark::State& state, const std::string& result) {
    Job job = makeJob(result);
    requireWhole(state, job.run());
}

void runByTwo(benchmark::State& state, const std::string& result) {
    Job job = makeJob(result, 2);
    requireWhole(state, job.run());
}

void runLive(benchmark::State& state, const std::string& result) {
    LiveRun run(makeJob(result), {.speed = std::numeric_limits<double>::infinity(), .overflow = {}});
    run.start();
    while (!run.waitFor(std::chrono::milliseconds(1000))) {
    }
    requireWhole(state, run.getOutcome());
}

using Run = void (*)(benchmark::State&, const std::string&);

void intoFile(benchmark::State& state, Run run) {
    for (auto _ : state)
        run(state, resultPath());
}

void intoPipe(benchmark::State& state, Run run) {
    ::mkfifo(pipePath().c_str(), 0600);
    std::vector<char> bytes(std::size_t{1} << 16);
    for (auto _ : state) {
        std::thread reader([&] {
            const int pipe = ::open(pipePath().c_str(), O_RDONLY);
            while (::read(pipe, bytes.data(), bytes.size()) > 0) {
            }
            ::close(pipe);
        });
        run(state, pipePath());
        reader.join();
    }
}

const Bench::Suite suite([] {
    Bench::enter({.name = "offline, to a bare loop",
                  .bare = bareRun,
                  .ours = [](benchmark::State& state) { intoFile(state, runOffline); },
                  .goal = 1.0});
    Bench::enter({.name = "offline by two threads, to one",
                  .bare = [](benchmark::State& state) { intoFile(state, runOffline); },
                  .ours = [](benchmark::State& state) { intoFile(state, runByTwo); },
                  .goal = 0.67,
                  .time = Bench::Time::OfWall});
    Bench::enter({.name = "live at full speed, to offline",
                  .bare = [](benchmark::State& state) { intoFile(state, runOffline); },
                  .ours = [](benchmark::State& state) { intoFile(state, runLive); },
                  .goal = 1.1,
                  .time = Bench::Time::OfWall});
    Bench::enter({.name = "live at full speed into a pipe, to offline into one",
                  .bare = [](benchmark::State& state) { intoPipe(state, runOffline); },
                  .ours = [](benchmark::State& state) { intoPipe(state, runLive); },
                  .goal = 1.3,
                  .time = Bench::Time::OfWall});
});

} // namespace
