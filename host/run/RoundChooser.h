// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/Source.h"
#include "host/run/GeneratorClock.h"
#include "host/run/RoundPace.h"

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// A source of a run, and whether it has ended. Touched under the gate of the layout that holds the block.
struct RunSource {
    Source* source;
    WakingSource* waking = nullptr; ///< The source, if it is one.
    bool hasEnded = false;
};

/// What begins a round: of the sources whose next sample is due the one with the earliest, of equals the
/// first; or, where there are none, the step of a generator, which is the clock.
///
/// A round has three steps here, between which its runner does what has to come first: `choose` tells whether
/// there is one, `begin` what time it is in it, and `release` lets it go. Requires of every operation: the
/// gate of the layout that holds sources and clock is held, or nobody else runs it.
class QUILLMERE_API RoundChooser {
public:
    using Clock = RoundPace::Clock;
    enum class Answer {
        Round,
        NotYet, ///< Later, or when a source that is watched has something.
        End,    ///< Never: there is nothing, or no more.
    };
    struct Choice {
        Answer answer;
        /// When the next of those that aren't due yet is; the end of all times where there is none.
        Clock::time_point due = Clock::time_point::max();
    };

    /// Without a pace everything is due at once, and sources are waited for. The pace isn't owned.
    explicit RoundChooser(RoundPace* roundPace = nullptr) : pace(roundPace) {}

    /// Takes up these sources, which are not owned; those that have ended are left out.
    void setSources(std::vector<RunSource*> newSources);
    /// Rounds begin with the clock's step, up to the limit; without one they go on until nobody asks any
    /// more.
    void setClock(const GeneratorClock& newClock, const std::optional<RunLimit>& newLimit);
    /// The generator that is the clock; null where there is none. [any, guarded]
    Core::Filter* getClock() const { return clock ? clock->getBlock() : nullptr; }
    /// Whether there is anything that begins rounds, or did until its limit. [any, guarded]
    bool getIsDriven() const { return clock || !sources.empty(); }
    /// Whether there are no more rounds, as far as is known. [any, guarded]
    bool getHasEnded() const { return clock ? isClockDone : sources.empty(); }

    /// Whether there is a round at `now`, which doesn't matter where nothing is paced. Raises what sources
    /// raise. [run]
    Choice choose(Clock::time_point now) { return clock ? chooseClock(now) : chooseSource(now); }
    /// Seconds, of the round that sources begin next. Requires: `choose` gave a round, and there is no clock.
    double getNextTime() const { return next->getNextTimeStamp(); }
    /// Requires: `choose` gave a round. The clock steps, unless it has done so already and its round is still
    /// to come: then `getHasBegun` is true before. [run]
    void begin() {
        if (clock) return stepClock();
        streamTime = elapsed = next->getNextTimeStamp();
    }
    bool getHasBegun() const { return hasClockStepped; }
    /// Lets the source's sample go, or the clock's time pass. Requires: `begin`. [run]
    void release() {
        ++rounds;
        hasClockStepped = false;
        if (!clock) next->release();
    }

    /// Seconds, of the round that has begun: what is stamped, and what the graph's timeline counts, which a
    /// clock that tells the time of day counts from its start on.
    double getStreamTime() const { return streamTime; }
    double getElapsed() const { return elapsed; }
    /// Whether the clock tells the time of day. Requires: `begin`.
    bool getIsWallClock() const { return clock && clock->getIsWallClock(); }

    /// How many sources, or clocks, have come to their end since it was asked last.
    unsigned takeEnded() { return std::exchange(ended, 0u); }
    /// The block that is being asked or stepped; null between.
    const Core::Filter* getAsked() const { return asked; }

private:
    Choice chooseSource(Clock::time_point now);
    Choice chooseClock(Clock::time_point now);
    void stepClock();
    bool getIsPaced() const { return pace != nullptr && !pace->getIsUnpaced(); }
    bool getIsWaitedFor(const RunSource& candidate) const;
    Clock::time_point dueOf(const RunSource& candidate) const;

    RoundPace* const pace;           ///< Null where nothing is paced.
    std::vector<RunSource*> sources; ///< Those that have not ended.
    std::optional<GeneratorClock> clock;
    std::optional<RunLimit> limit;
    std::uint64_t rounds = 0;

    Source* next = nullptr; ///< Whose sample begins the round that was chosen.
    Clock::time_point chosenAt;
    Clock::time_point clockDue = Clock::time_point::min();
    bool hasClockStepped = false; ///< And the rest of its round is to come.
    bool isClockDone = false;     ///< It has reached the limit.
    double streamTime = 0.0;
    double elapsed = 0.0;
    unsigned ended = 0;
    const Core::Filter* asked = nullptr;
};

} // namespace Quillmere::Host
