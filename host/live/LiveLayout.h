// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/ends/Sink.h"
#include "host/graph/Followers.h"
#include "host/live/LiveDrive.h"
#include "host/live/LivePace.h"
#include "host/live/PassWish.h"
#include "host/live/RoomSeat.h"
#include "host/live/RowHandOver.h"
#include "host/live/StepTimer.h"
#include "host/run/BurstPasses.h"
#include "host/run/FiniteWatch.h"
#include "host/run/RoundChooser.h"
#include "host/run/WaitingSamples.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <exception>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace Quillmere::Host {

/// One layout of a live run: a thread that steps its blocks as long as anything moves, and sleeps else.
///
/// A pass is one of three kinds. A round begins with a source whose next sample is due, or with the step of
/// the layout's clock; it is the offline runner's round. Another one is there for what comes from other
/// threads: samples over links that wake the layout, settings. Sources and generators rest in it. Behind
/// both, where a block has sent several samples in one step by times of its own, come those of the blocks
/// behind it alone, until everything is through; the block isn't stepped again before.
class QUILLMERE_API LiveLayout {
public:
    /// Neither is owned; both outlive the layout's thread.
    LiveLayout(std::string id, Core::LayoutManager& blocks, LiveDrive& drive);

    const std::string& getId() const { return id; }
    Core::LayoutManager& getBlocks() { return layout; }
    const Core::LayoutManager& getBlocks() const { return layout; }
    Core::Synchronizer& getGate() { return layout.getSynchronizer(); }

    /// Takes up what the layout holds now. `runSources` are all of the run's; where there are none, a
    /// generator is the layout's clock. `followers` are those blocks of all layouts that stand behind blocks
    /// which make times. Requires: the gate is held, or no thread runs. [any, guarded]
    void refresh(std::deque<RunSource>& runSources, const FollowerSet& followers = {});
    /// Takes up the links to other layouts that are to lose nothing. Requires: as `refresh`. [any, guarded]
    void waitForRoomIn(std::vector<SendRoom::Link> links) { seat.watch(std::move(links)); }
    /// Its number on the boards of those who wait for each other. [any]
    std::size_t getNumber() const { return seat.getNumber(); }
    /// Whether it has rounds by sources. Requires: the gate is held, or no thread runs. [any, guarded]
    bool getHasSources() const { return rounds.getIsDriven() && rounds.getClock() == nullptr; }
    /// Whether its rounds tell the time for the graph's timeline. Requires: the gate and the timeline's mutex
    /// are held, or no thread runs. [any, guarded]
    void setAppliesTimeline(bool flag) { appliesTimeline = flag; }
    /// The generator that is its clock; null where there is none. Requires: the gate is held, or no thread
    /// runs.
    const Core::Filter* getClock() const { return rounds.getClock(); }
    /// More passes than it takes to let out what is in the links. Requires: no thread runs. [setup]
    std::uint64_t getMostRounds() const { return waiting.getMostRounds(); }
    /// How many links come from other layouts. Requires: no thread runs. [setup]
    std::uint64_t getLinksFromElsewhere() const { return waiting.getLinksFromElsewhere(); }

    /// Of its last round, in seconds. [any]
    double getStreamTime() const { return streamTime.load(std::memory_order_relaxed); }
    /// What its blocks sent that wasn't finite. Requires: no thread runs.
    const std::vector<FirstNonFinite>& getNonFinite() const { return finite.getFound(); }

    /// One pass of these blocks alone, please, once nothing moves any more: one of them is to send what it
    /// has held back. They outlive the pass. Requires: the gate is held. [any, guarded]
    void finish(const FollowerSet& stepped) { finishing = &stepped; }

    /// Starts its thread. Raises `RunException` when none can be made. [setup]
    void start();
    /// [setup]
    void join();
    /// Something outside has changed: another pass, please. [any]
    void lookAgain();
    /// Rounds so far. [any]
    std::uint64_t getRounds() const { return roundCount.get(); }

private:
    class Pass;
    using Clock = Core::Synchronizer::Clock;
    enum class Kind { None, Round, Other, Followers, Finish };
    /// What the thread does behind a pass, or a look that led to none: look at once, or what is done outside
    /// the gate.
    enum class Next { Look, Timeline, Rest };

    void run();
    void runUntilEnd();
    void cutForFailure(const std::exception& exception);
    double timeOfFailure(const Core::Filter* block);
    void takeUpClock();
    void turn();
    PassWish::Waker takeWaker();
    void applyTimeline();
    Kind choose(PassWish::Waker waker);
    Kind chooseKind();
    bool getIsRoundDue();
    bool getIsInTime();
    bool beginRound();
    bool getIsStepped(const Core::Filter& block, Kind kind) const;
    void step(Core::Filter& block, Kind kind);
    void endPass(Kind kind);
    void takeStock(Kind kind);
    /// Whether there are rounds to come, for which it wakes by itself.
    bool getIsExpecting() const { return !wish.getIsDraining() && !rounds.getHasEnded(); }

    const std::string id;
    Core::LayoutManager& layout;
    LiveDrive& drive;
    std::thread thread;
    std::atomic<bool> isLookWanted{false};
    Core::Tally roundCount;

    // The thread's own, changed by others under the gate.
    bool appliesTimeline = false;
    const FollowerSet* finishing = nullptr; ///< Whose pass is wished; null for nobody's.
    LivePace pace;
    RoundChooser rounds;
    PassWish wish;
    RoomSeat seat;
    RowHandOver handOver;
    std::vector<Sink*> sinks;
    WaitingSamples waiting;
    BurstPasses bursts;
    FiniteWatch finite;
    StepTimer timer;

    const Core::Filter* current = nullptr; ///< The block that is being stepped, for messages.
    std::atomic<double> streamTime{0.0};   ///< Seconds; of the last round. Others read it.
    Next next = Next::Look;
    Clock::time_point due; ///< Until when the layout may sleep.
    std::optional<std::size_t>
        awaited; ///< The layout that has to come as far as this one's next round first.
};

} // namespace Quillmere::Host
