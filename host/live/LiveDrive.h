// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Timeline.h"
#include "host/live/LiveClock.h"
#include "host/live/PipeWatcher.h"
#include "host/live/RoomBoard.h"
#include "host/live/TimeBoard.h"
#include "host/run/RunEnd.h"
#include "host/run/RunLimit.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

namespace Quillmere::Host {

/// What the layouts of a live run share: how time passes, what still drives the run, and how it ends.
///
/// A run is over when nothing new comes: its sources have ended, or its generators have reached their limit,
/// or somebody has said so. Layouts then let out what is in their links. A run that is cut leaves everything
/// where it is.
class QUILLMERE_API LiveDrive {
public:
    LiveDrive(double speed, const RunLimit& runLimit, bool counts, Timeline& graphsTimeline)
        : clock(speed), limit(runLimit), countsSteps(counts), timeline(graphsTimeline) {}

    LiveClock clock;
    const RunLimit limit;
    const bool countsSteps; ///< Whether layouts count their blocks' steps and take the time of some.
    PipeWatcher pipes;
    RoomBoard room;
    TimeBoard time;
    Timeline& timeline;
    std::mutex timelineMutex; ///< Held by who applies the timeline or says who shall; taken before any gate.
    /// For a layout, when the run is over: what goes round in a loop is left alone then. Changed with all
    /// gates held.
    std::uint64_t mostDrainRounds = 0;
    std::atomic<std::uint64_t> nonFiniteSeen{0}; ///< Over all layouts' `FiniteWatch`.

    /// One more source, or where there are none one more layout with a generator, keeps the run going. [any]
    void addDriver() { ++driversLeft; }
    /// One of them has nothing more. [run]
    void endDriver() {
        if (--driversLeft == 0) end();
    }
    /// Nothing new shall come. [any]
    void end();
    /// The run ends here and now, for this reason; of several the first counts. [any]
    void cut(RunEnding reason);
    /// The same for who has no more to say than a text, which needs no memory if it is short. [any]
    void cut(std::string reason);

    /// [any]
    bool getIsOver() const { return isOver.load(std::memory_order_relaxed); }
    bool getIsCut() const { return isCut.load(std::memory_order_relaxed); }
    /// Why the run was cut; whole if it wasn't. [any]
    RunEnding getEnding() const;
    /// Sleeps until the run is over or cut. [any]
    void waitForEnd() const;

private:
    std::atomic<unsigned> driversLeft{0};
    std::atomic<bool> isOver{false};
    std::atomic<bool> isCut{false};
    mutable std::mutex state;
    mutable std::condition_variable hasEnded;
    RunEnding ending; ///< Under `state`.
};

} // namespace Quillmere::Host
