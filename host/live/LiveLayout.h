// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"
#include "host/live/LiveDrive.h"
#include "host/live/SendRoom.h"
#include "host/run/FiniteWatch.h"
#include "host/run/GeneratorClock.h"
#include "host/run/WaitingSamples.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace Quillmere::Host {

/// A source of a live run, and whether it has ended. Touched under the gate of the layout that holds the block.
struct LiveSource {
    Source* source;
    WakingSource* waking; ///< The source, if it is one.
    bool hasEnded = false;
};

/// One layout of a live run: a thread that steps its blocks as long as anything moves, and sleeps else.
///
/// There are two kinds of passes. A round begins with a source whose next sample is due, or with the step of the layout's
/// clock; it is the offline runner's round. Any other pass is there for what comes from other threads: samples over links
/// that wake the layout, settings. Sources and generators rest in it.
class QUILLMERE_API LiveLayout {
public:
    /// Neither is owned; both outlive the layout's thread.
    LiveLayout(std::string id, Core::LayoutManager& blocks, LiveDrive& drive);

    const std::string& getId() const { return id; }
    Core::LayoutManager& getBlocks() { return layout; }
    const Core::LayoutManager& getBlocks() const { return layout; }
    Core::Synchronizer& getGate() { return layout.getSynchronizer(); }

    /// Takes up what the layout holds now. `runSources` are all of the run's; where there are none, a generator is the
    /// layout's clock. Requires: the gate is held, or no thread runs. [any, guarded]
    void refresh(std::deque<LiveSource>& runSources);
    /// Takes up the links to other layouts that are to lose nothing. Requires: as `refresh`. [any, guarded]
    void waitForRoomIn(std::vector<SendRoom::Link> links) { sendRoom.watch(std::move(links)); }
    /// Its number on the board of those who wait for room. [any]
    std::size_t getNumber() const { return number; }
    /// Whether its rounds tell the time for the graph's timeline. Requires: the gate and the timeline's mutex are held, or no
    /// thread runs. [any, guarded]
    void setAppliesTimeline(bool flag) { appliesTimeline = flag; }
    /// The generator that is its clock; null where there is none. Requires: the gate is held, or no thread runs.
    const Core::Filter* getClock() const { return clock == nullptr ? nullptr : clock->getBlock(); }
    /// More passes than it takes to let out what is in the links. Requires: no thread runs. [setup]
    std::uint64_t getMostRounds() const { return waiting.getMostRounds(); }
    /// How many links come from other layouts. Requires: no thread runs. [setup]
    std::uint64_t getLinksFromElsewhere() const { return waiting.getLinksFromElsewhere(); }

    /// What its blocks sent that wasn't finite. Requires: no thread runs.
    const std::vector<FirstNonFinite>& getNonFinite() const { return finite.getFound(); }

    /// Starts its thread. Raises `RunException` when none can be made. [setup]
    void start();
    /// [setup]
    void join();
    /// Something outside has changed: another pass, please. [any]
    void lookAgain();
    /// Rounds so far. [any]
    std::uint64_t getRounds() const { return rounds.get(); }

private:
    class Pass;
    using Clock = Core::Synchronizer::Clock;
    enum class Kind { None, Round, Other };
    /// A sample that woke the layout may have gone into the pass before; there is no other for it then, since some blocks
    /// send in each of their steps, whether anything came or not.
    enum class Wish { None, PassIfAnyWaits, Pass };

    void run();
    void runUntilEnd();
    double timeOfFailure();
    void turn();
    void applyTimeline();
    void rest();
    Kind choose();
    Kind chooseKind();
    bool getHasRoom();
    bool chooseSource();
    bool getIsReady(LiveSource& source);
    bool chooseClock();
    void stepClock();
    bool beginRound(double time);
    void step(Core::Filter& block, Kind kind);
    void stepMeasured(Core::Filter& block);
    void endPass(Kind kind);
    void takeWishes();
    bool getIsPassWanted();
    void beginDrain();
    void gatherRows();
    bool getIsFedFromElsewhere(const Core::PinManager& block, std::set<const Core::PinManager*>& seen) const;

    const std::string id;
    Core::LayoutManager& layout;
    LiveDrive& drive;
    const std::size_t number;
    std::thread thread;
    std::atomic<bool> isLookWanted{false};
    Core::Tally rounds;

    // The thread's own, changed by others under the gate.
    bool appliesTimeline = false;
    std::vector<LiveSource*> sources; ///< Those of the layout that have not ended.
    std::vector<Sink*> sinks;
    std::unique_ptr<GeneratorClock> clock; ///< Null where sources drive the run.
    WaitingSamples waiting;
    SendRoom sendRoom;
    FiniteWatch finite;
    bool hasWakingLinks = false;

    const Core::Filter* current = nullptr; ///< The block that is being stepped or read, for messages.
    double streamTime = 0.0;               ///< Seconds; of the last round.
    double timelineTime = 0.0;             ///< Seconds; what the timeline is asked for.
    bool isTimelineDue = false;            ///< It has something to do first, outside the gate.
    bool hasClockStepped = false;          ///< And the rest of its round is to come.
    bool isClockDone = false;              ///< It has reached the run's limit.
    bool isDraining = false;
    Wish wish = Wish::None;       ///< For a pass that is no round.
    bool isRefreshed = false;     ///< Since the last pass ended.
    bool isLooking = false;       ///< What woke it: somebody who wants it to look again,
    bool isSignalled = false;     ///< a sample from another layout.
    bool mayRest = false;         ///< Nothing is to be done before `due`, or before something wakes it.
    bool isHeldUp = false;        ///< There was something to do, and no room for it.
    bool mayOverflow = false;     ///< The next round needs no room.
    bool isExpecting = false;     ///< It may rest, and will wake by itself.
    std::uint64_t generation = 0; ///< Of links and layouts, at the last look.
    std::uint64_t passesLeft = 0; ///< Before what goes round in a loop is left alone.
    std::uint64_t passes = 0;
    bool isMeasuring = false; ///< Whether this pass takes the time of each step.
    Clock::time_point due;    ///< Until when the layout may sleep.
    Clock::time_point clockDue = Clock::time_point::min();
};

} // namespace Quillmere::Host
