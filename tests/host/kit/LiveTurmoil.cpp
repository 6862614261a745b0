// SPDX-License-Identifier: MIT
#include "tests/host/kit/LiveTurmoil.h"

#include "host/live/LiveClock.h"
#include "tests/host/kit/TurmoilCheck.h"
#include "tests/host/kit/Watchdog.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <thread>

namespace Support {

using namespace Quillmere::Host;

namespace {
constexpr unsigned kKnobTurners = 4;
/// The longest time that who changes links leaves them alone, in microseconds: all layouts stand still for a
/// change.
constexpr std::size_t kLongestPause = 1000;
/// Rows of the source that may be moved for one row of the other.
constexpr std::uint64_t kRowsForOne = 4;
/// What pipes get at a time.
constexpr std::uint64_t kParts = 1000;
const std::string kColumns = "t,n,x,y\n";

// The kinds of links, as far as nobody changes them: near.in plain, near.side plain with a queue, band.in
// plain and newest first; last.side, far.side and odd.aux the same with a lock; log.a, far.in and iir.in the
// same with a reader that sleeps.
constexpr const char* kGraph = R"(
format: 1
layouts: [{id: a}, {id: b}, {id: c}]
blocks:
  - {id: src, type: RecordingSource, layout: a, properties: {file: src.csv, time: t, pins: {out: [n, x, y]}}}
  - {id: slow, type: RecordingSource, layout: a, properties: {file: slow.csv, time: t, pins: {out: [n, x, y]}}}
  - {id: near, type: OddInOrder, layout: a}
  - {id: far, type: OddInOrder, layout: b}
  - {id: last, type: OddInOrder, layout: c}
  - {id: smooth, type: FilterButterworth, layout: a}
  - {id: iir, type: FilterIIR, layout: b}
  - {id: band, type: FilterBessel, layout: a}
  - {id: thrice, type: OddThrice, layout: b}
  - {id: odd, type: OddSettings, layout: c}
  - {id: out, type: RecordingSink, layout: c, properties: {file: out.csv}}
  - {id: log, type: RecordingSink, layout: c, properties: {file: log.csv}}
connections:
  - {from: src, to: near.in}
  - {from: src, to: near.side, buffer: 6}
  - {from: src, to: far.in, buffer: 16}
  - {from: src, to: far.side, buffer: 8}
  - {from: far, to: last.in, buffer: 4}
  - {from: near, to: last.side}
  - {from: last, to: out.last}
  - {from: src, to: smooth.in}
  - {from: smooth, to: iir.in, buffer: 5, order: newest}
  - {from: smooth, to: band.in, buffer: 3, order: newest}
  - {from: band.out, to: thrice.in}
  - {from: thrice, to: odd.main in.put, buffer: 3}
  - {from: slow, to: odd.aux, buffer: 4, order: newest}
  - {from: iir, to: log.a}
  - {from: odd.a, to: log.b}
)";

/// Rows behind number `begin` and up to `end`, all or one of each `step`.
std::string rowsOf(std::uint64_t begin, std::uint64_t end, std::uint64_t step) {
    std::string rows;
    char row[128];
    for (std::uint64_t n = begin + 1; n <= end; ++n) {
        if (n % step != 0) continue;
        std::snprintf(row, sizeof row, "%llu.%03llu,%llu,%d.5,-%d\n",
                      static_cast<unsigned long long>(n / 1000), static_cast<unsigned long long>(n % 1000),
                      static_cast<unsigned long long>(n), static_cast<int>(n % 17), static_cast<int>(n % 5));
        rows += row;
    }
    return rows;
}

LinkChanger::Range whatMayChange(bool makesLoops) {
    return {.layouts = {"a", "b", "c"},
            .blocks = {"slow", "smooth", "iir", "band", "thrice", "odd", "log"},
            .outputs = {"src.out", "slow.out", "far.out", "smooth.out", "iir.out", "band.out", "band.coeffs",
                        "thrice.out", "odd.a"},
            .inputs = {"smooth.in", "smooth.reset", "iir.in", "iir.gain", "band.in", "band.reset",
                       "thrice.in", "odd.main in.put", "odd.aux", "log.a", "log.b"},
            .order = makesLoops ? std::vector<std::string>{}
                                : std::vector<std::string>{"src", "slow", "far", "smooth", "iir", "band",
                                                           "thrice", "odd", "log"}};
}
} // namespace

std::string LiveTurmoil::Result::getText() const {
    char text[256];
    std::snprintf(
        text, sizeof text,
        "%.1f s; %llu writes, %llu reads, %llu fires, %llu refused, %llu changes seen; %llu moves, %llu "
        "attached, %llu detached, %llu added; %llu samples lost",
        seconds, static_cast<unsigned long long>(knobs.writes), static_cast<unsigned long long>(knobs.reads),
        static_cast<unsigned long long>(knobs.fires), static_cast<unsigned long long>(knobs.refusals),
        static_cast<unsigned long long>(knobs.changesSeen), static_cast<unsigned long long>(changes.moves),
        static_cast<unsigned long long>(changes.attaches), static_cast<unsigned long long>(changes.detaches),
        static_cast<unsigned long long>(changes.adds), static_cast<unsigned long long>(lost));
    return text;
}

LiveTurmoil::LiveTurmoil(const TemporaryFolder& givenFolder, const BlockCatalogue& givenCatalogue,
                         const Options& givenOptions)
    : folder(givenFolder), catalogue(givenCatalogue), options(givenOptions) {}

LiveTurmoil::Result LiveTurmoil::run() {
    const Watchdog watchdog(options.timeLimit);
    std::optional<FedPipe> src;
    std::optional<FedPipe> slow;
    if (options.feed == Feed::Recordings) {
        writeRecordings();
    } else {
        // A run begins when it knows the columns.
        for (auto [pipe, name] : {std::pair{&src, "src.csv"}, {&slow, "slow.csv"}})
            pipe->emplace(folder.path(name)).write(kColumns, [] { return true; });
    }
    LiveRun run(Job::fromFile(folder.write("turmoil.yaml", kGraph), catalogue),
                {.speed = LiveClock::kMaximum, .overflow = options.overflow});
    const auto begin = std::chrono::steady_clock::now();
    run.start();
    std::thread feeder;
    if (src) feeder = std::thread([&] { feedPipes(run, *src, *slow); });
    stirUp(run);
    if (src) feeder.join();
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    try {
        run.wait();
        TurmoilCheck check(run, options.samples, options.makesLoops);
        check.checkTable(folder);
        for (const std::string& complaint : check.getComplaints())
            complain(complaint);
        result.lost = check.getLost();
    } catch (const RunException& exception) {
        complain(std::string("the run failed: ") + exception.what());
    }
    return result;
}

void LiveTurmoil::writeRecordings() const {
    folder.write("src.csv", kColumns + rowsOf(0, options.samples, 1));
    folder.write("slow.csv", kColumns + rowsOf(0, options.samples, kRowsForOne));
}

/// Part by part, each when its part of the turmoil has been made.
void LiveTurmoil::feedPipes(LiveRun& run, FedPipe& src, FedPipe& slow) {
    const auto isWanted = [&run] { return run.getState() < LiveRun::State::Ended; };
    for (std::uint64_t part = 0; part < kParts; ++part) {
        while (isWanted() && !hasFailed &&
               (turnsMade * kParts < part * kTurns || changesMade * kParts < part * kChanges))
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        const std::uint64_t begin = part * options.samples / kParts;
        const std::uint64_t end = (part + 1) * options.samples / kParts;
        src.write(rowsOf(begin, end, 1), isWanted);
        slow.write(rowsOf(begin, end, kRowsForOne), isWanted);
    }
    src.close();
    slow.close();
}

/// Nobody stops before the run has ended: that it ends must not depend on their leaving it alone.
void LiveTurmoil::stirUp(LiveRun& run) {
    const auto watch = run.getSettings().observe("*", [](const SettingState&) {});
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kKnobTurners; ++i)
        threads.emplace_back([this, &run, i] {
            RandomKnobs knobs(run, options.seed + i);
            asLongAsItRuns(run, [&] {
                knobs.turn();
                ++turnsMade;
            });
            const std::lock_guard lock(mutex);
            result.knobs += knobs.getCounts();
        });
    threads.emplace_back([this, &run] {
        LinkChanger changer(run, whatMayChange(options.makesLoops), options.seed + kKnobTurners);
        Dice dice(options.seed);
        asLongAsItRuns(run, [&] {
            changer.change();
            ++changesMade;
            std::this_thread::sleep_for(std::chrono::microseconds(dice.below(kLongestPause)));
        });
        const std::lock_guard lock(mutex);
        result.changes = changer.getCounts();
    });
    for (std::thread& thread : threads)
        thread.join();
}

template <class Action>
void LiveTurmoil::asLongAsItRuns(LiveRun& run, Action action) {
    try {
        while (run.getState() < LiveRun::State::Ended)
            action();
    } catch (const std::exception& exception) {
        complain(exception.what());
    }
}

void LiveTurmoil::complain(const std::string& text) {
    const std::lock_guard lock(mutex);
    result.complaints.push_back(text);
    hasFailed = true;
}

} // namespace Support
