// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveRun.h"
#include "tests/host/kit/FedPipe.h"
#include "tests/host/kit/LinkChanger.h"
#include "tests/host/kit/RandomKnobs.h"
#include "tests/host/kit/TemporaryFolder.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace Support {

/// A live run in three layouts with links of every kind, and people who turn its knobs and change its links
/// and layouts at random from begin to end.
///
/// Five of its twelve blocks and the links between these are left alone: samples there must come in order and
/// whole, and what the statistics count must be what the blocks have seen.
class LiveTurmoil {
public:
    /// Where the samples come from: recordings, as fast as they can be read, or pipes into which somebody
    /// writes so slowly that each part of a run sees its part of the turmoil.
    enum class Feed { Recordings, Pipes };
    struct Options {
        std::uint64_t samples = 0; ///< Of the source whose links are left alone.
        unsigned seed = 0;
        Feed feed = Feed::Recordings;
        bool makesLoops = false; ///< Whether links may be made that lead back to where they come from.
        /// Of all links between layouts, as far as these make no loop.
        Quillmere::Host::Overflow overflow = Quillmere::Host::Overflow::Drop;
        std::chrono::seconds timeLimit{0}; ///< After which a run that hasn't ended ends the program.
    };
    /// What pipes wait for before they end.
    static constexpr std::uint64_t kTurns = 20000;
    static constexpr std::uint64_t kChanges = 2000;

    struct Result {
        std::vector<std::string> complaints; ///< What went wrong; empty if nothing did.
        RandomKnobs::Counts knobs;           ///< Of all who turned some.
        LinkChanger::Counts changes;
        std::uint64_t lost = 0; ///< On the links that are left alone.
        double seconds = 0.0;

        /// What was done and seen, in a line for people.
        std::string getText() const;
    };

    /// Neither is owned; `catalogue` has this project's blocks and the odd ones.
    LiveTurmoil(const TemporaryFolder& folder, const Quillmere::Host::BlockCatalogue& catalogue,
                const Options& options);

    /// Runs from begin to end.
    Result run();

private:
    using LiveRun = Quillmere::Host::LiveRun;

    void writeRecordings() const;
    void feedPipes(LiveRun& run, FedPipe& src, FedPipe& slow);
    void stirUp(LiveRun& run);
    void complain(const std::string& text);
    template <class Action>
    void asLongAsItRuns(LiveRun& run, Action action);

    const TemporaryFolder& folder;
    const Quillmere::Host::BlockCatalogue& catalogue;
    const Options options;
    std::atomic<std::uint64_t> turnsMade{0};
    std::atomic<std::uint64_t> changesMade{0};
    std::atomic<bool> hasFailed{false};
    std::mutex mutex;
    Result result; ///< Under `mutex` while threads run.
};

} // namespace Support
