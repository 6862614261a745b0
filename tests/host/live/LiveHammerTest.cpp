// SPDX-License-Identifier: MIT
#include "host/recording/HostCatalogue.h"
#include "tests/host/kit/LiveTurmoil.h"

#include <gtest/gtest.h>

#include <cstdio>

// Everything that may happen to a live run at once. Meant for the thread sanitizer, which sees what goes
// right by luck.

namespace {
constexpr std::uint64_t kSamples = 200000;
/// Under the thread sanitizer, on two processors that others use too.
constexpr std::chrono::seconds kTimeLimit{240};

using Quillmere::Host::Overflow;
using Support::LiveTurmoil;

LiveTurmoil::Result hammer(LiveTurmoil::Options options) {
    const Support::TemporaryFolder folder;
    Quillmere::Host::HostCatalogue catalogue;
    catalogue.load(VELMARIND_PLUGIN);
    catalogue.load(ODD_PLUGIN);
    if (options.samples == 0) options.samples = kSamples;
    options.timeLimit = kTimeLimit;
    LiveTurmoil turmoil(folder, catalogue, options);
    const LiveTurmoil::Result result = turmoil.run();
    std::printf("%s\n", result.getText().c_str());
    for (const std::string& complaint : result.complaints)
        ADD_FAILURE() << complaint;
    if (options.overflow == Overflow::Drop) {
        EXPECT_GT(result.lost, 0u) << "readers lag";
    }
    return result;
}
} // namespace

TEST(LiveHammerTest, RecordingsAsFastAsTheyCanBeRead) {
    hammer({.seed = 1});
}

TEST(LiveHammerTest, PipesThatLastUntilAllHasBeenTurnedAndChanged) {
    const LiveTurmoil::Result result = hammer({.seed = 2, .feed = LiveTurmoil::Feed::Pipes});
    const auto& knobs = result.knobs;
    EXPECT_GE(knobs.writes + knobs.reads + knobs.fires + knobs.refusals, LiveTurmoil::kTurns);
    EXPECT_GT(knobs.writes, LiveTurmoil::kTurns / 10);
    EXPECT_GT(knobs.reads, LiveTurmoil::kTurns / 10);
    EXPECT_GT(knobs.fires, LiveTurmoil::kTurns / 20);
    EXPECT_GT(knobs.refusals, LiveTurmoil::kTurns / 10);
    EXPECT_GT(knobs.changesSeen, 100u);
    EXPECT_GT(result.changes.moves, LiveTurmoil::kChanges / 5);
    EXPECT_GT(result.changes.attaches, LiveTurmoil::kChanges / 20);
    EXPECT_GT(result.changes.detaches, LiveTurmoil::kChanges / 20);
    EXPECT_GT(result.changes.adds, 0u);
}

TEST(LiveHammerTest, LinksThatMakeLoops) {
    hammer({.seed = 3, .feed = LiveTurmoil::Feed::Pipes, .makesLoops = true});
}

// Who waits is to be woken whatever changes under it: a run that stands still ends the program.
TEST(LiveHammerTest, LayoutsThatWaitForEachOther) {
    hammer({.samples = kSamples / 4, .seed = 4, .overflow = Overflow::Wait});
}

TEST(LiveHammerTest, LayoutsThatWaitForEachOtherAndMakeLoops) {
    hammer({.samples = kSamples / 4,
            .seed = 5,
            .feed = LiveTurmoil::Feed::Pipes,
            .makesLoops = true,
            .overflow = Overflow::Wait});
}
