// SPDX-License-Identifier: MIT
#include "host/live/LiveLayout.h"

#include "host/ends/RecordingException.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace {
/// Passes from one whose steps are timed to the next: so many that looking at the clock costs less than a hundredth of a
/// step; a prime, so that no steady pattern of passes falls in with it.
constexpr std::uint64_t kPassesBetweenMeasurements = 499;
/// Early, since short runs have times too, but not at first, when everything is slow.
constexpr std::uint64_t kFirstMeasurement = 10;
/// Between two rounds of a clock whose time stamps can't tell when the next is due.
constexpr std::chrono::milliseconds kPaceOfTimelessClock{10};
} // namespace

class LiveLayout::Pass {
public:
    explicit Pass(LiveLayout& owner) : self(owner) {}
    bool begin() {
        kind = self.choose();
        if (kind == Kind::None) return false;
        self.isMeasuring =
            self.drive.countsSteps && ++self.passes % kPassesBetweenMeasurements == kFirstMeasurement;
        return true;
    }
    void step(Core::Filter& block) { self.step(block, kind); }
    void end() { self.endPass(kind); }

    Kind kind = Kind::None;

private:
    LiveLayout& self;
};

LiveLayout::LiveLayout(std::string layoutId, Core::LayoutManager& blocks, LiveDrive& liveDrive)
    : id(std::move(layoutId)), layout(blocks), drive(liveDrive), number(liveDrive.room.enter(getGate())),
      finite(liveDrive.nonFiniteSeen) {}

void LiveLayout::refresh(std::deque<LiveSource>& runSources) {
    const std::vector<Core::Filter*>& blocks = layout.getFilters();
    sources.clear();
    for (LiveSource& source : runSources)
        // the layout first: what is held elsewhere is another thread's
        if (source.source->getManager() == &layout && !source.hasEnded) sources.push_back(&source);
    sinks.clear();
    for (Core::Filter* const block : blocks)
        if (auto* const sink = dynamic_cast<Sink*>(block)) sinks.push_back(sink);
    if (runSources.empty() && clock == nullptr) {
        clock = std::make_unique<GeneratorClock>(blocks);
        if (clock->getBlock() == nullptr)
            clock = nullptr;
        else
            drive.addDriver();
    }
    waiting.watch(blocks);
    finite.watch(blocks);
    hasWakingLinks = waiting.getHasWakingLinks();
    if (!isDraining) passesLeft = waiting.getMostRounds();
    isRefreshed = true;
    gatherRows();
}

/// Where a round of this layout is all that a sink's row can come from, the round makes the row; else the time stamp does.
void LiveLayout::gatherRows() {
    const bool isDriven = clock != nullptr || !sources.empty();
    for (Sink* const sink : sinks) {
        std::set<const Core::PinManager*> seen{sink};
        sink->setGathersByTime(!isDriven || getIsFedFromElsewhere(*sink, seen));
    }
}

/// Whether what a block waits for comes from another layout, directly or through other blocks. Control inputs don't count:
/// what comes over them makes no sample.
bool LiveLayout::getIsFedFromElsewhere(const Core::PinManager& block,
                                       std::set<const Core::PinManager*>& seen) const {
    for (const Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        if (sender == nullptr || !pin->getIsBlocking()) continue;
        if (Core::layoutOf(*sender) != &layout) return true;
        const Core::PinManager* const owner = sender->getManager();
        if (seen.insert(owner).second && getIsFedFromElsewhere(*owner, seen)) return true;
    }
    return false;
}

void LiveLayout::start() {
    getGate().setSleepsBetweenPasses(true);
    // What was set before the start is no reason for a pass; what another layout sends already is.
    isLookWanted = isRefreshed = false;
    wish = Wish::PassIfAnyWaits;
    try {
        thread = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        throw RunException("no thread can be made for the layout '" + id + "': " + error.code().message());
    }
}

void LiveLayout::join() {
    if (thread.joinable()) thread.join();
}

void LiveLayout::lookAgain() {
    isLookWanted = true;
    getGate().stir();
}

void LiveLayout::run() {
    try {
        runUntilEnd();
    } catch (...) {
        drive.cut("out of memory"); // for the message even
    }
}

void LiveLayout::runUntilEnd() {
    try {
        while (!drive.getIsCut() && !getGate().getIsShutDown())
            turn();
    } catch (const InterruptedException& exception) {
        drive.cut(exception.what()); // no block's fault
    } catch (const std::exception& exception) {
        drive.cut(failureText(current, timeOfFailure(), exception));
    } catch (...) {
        drive.cut(
            failureText(current, timeOfFailure(), std::runtime_error("something that is no std::exception")));
    }
}

/// The round's time; in a layout without rounds that of the sample which the block took last.
double LiveLayout::timeOfFailure() {
    if (current == nullptr || rounds.get() > 0) return streamTime;
    double time = streamTime;
    for (const Core::AbstractInputPin* const pin : current->getInputPins()) {
        // The block may be in another layout by now.
        const Core::Synchronizer::SubjectLocker<const Core::Pin> guard(*pin);
        if (const auto* const input = dynamic_cast<const Core::InputPin<Core::MatrixXd>*>(pin))
            time = std::max(time, input->getTimeStamp());
    }
    return time;
}

void LiveLayout::turn() {
    // Before the look at the blocks: what comes behind it keeps the layout from falling asleep.
    const unsigned reasons = getGate().takeReasons();
    isLooking = (reasons & Core::Synchronizer::kStir) != 0 && isLookWanted.exchange(false);
    isSignalled = (reasons & Core::Synchronizer::kSignal) != 0;
    Pass pass(*this);
    layout.runPass(pass);
    if (isTimelineDue)
        applyTimeline();
    else if (mayRest)
        rest();
}

void LiveLayout::rest() {
    // Where nobody waits for anybody, nobody asks who sleeps.
    if (!drive.room.getIsActive()) return getGate().sleep(due);
    if (drive.room.settle(number, isExpecting, generation)) getGate().sleep(due);
    mayOverflow = drive.room.wake(number);
}

/// Outside the gate: it writes settings of blocks in other layouts.
void LiveLayout::applyTimeline() {
    isTimelineDue = false;
    const std::lock_guard lock(drive.timelineMutex);
    if (!appliesTimeline) return;
    drive.timeline.apply(timelineTime);
    const Core::Synchronizer::DisablerLocker guard(&getGate(), nullptr);
    // Before the blocks that get it; its own step comes behind theirs.
    if (const Core::Filter* const sender = drive.timeline.getSender()) finite.look(*sender, streamTime);
}

LiveLayout::Kind LiveLayout::choose() {
    due = Clock::time_point::max();
    isHeldUp = false;
    mayRest = !drive.getIsCut();
    if (!mayRest) return Kind::None; // a change that failed may have left sources that another layout holds
    generation = drive.room.getGeneration();
    if (drive.getIsOver() && !isDraining) beginDrain();
    takeWishes();
    const Kind kind = chooseKind();
    mayOverflow = false;
    if (kind != Kind::None) return kind;
    isExpecting = !isDraining && (!sources.empty() || (clock != nullptr && !isClockDone));
    drive.room.tellRoom(number, true);
    return Kind::None;
}

LiveLayout::Kind LiveLayout::chooseKind() {
    if (!isDraining && (clock != nullptr ? chooseClock() : chooseSource())) return Kind::Round;
    if (isTimelineDue || isHeldUp || passesLeft == 0 || !getIsPassWanted() || !getHasRoom())
        return Kind::None;
    --passesLeft;
    return Kind::Other;
}

/// Whether a round may begin, for all that the links to other layouts have to take; if not, the board knows of it.
bool LiveLayout::getHasRoom() {
    if (!sendRoom.getIsAny() || mayOverflow) return true;
    const SendRoom::Link* announced = nullptr;
    for (;;) {
        const SendRoom::Link* const full = sendRoom.findFull();
        if (full == nullptr) break;
        isHeldUp = full == announced; // at the second look: what the reader takes from now on is told
        if (isHeldUp) return false;
        announced = full;
        const std::uint32_t capacity = full->input->getBufferCapacity();
        drive.room.announce(number, {.input = full->input,
                                     .reader = full->reader,
                                     .needed = full->getNeeded(),
                                     .wanted = std::max(full->getNeeded(), capacity / 2)});
    }
    if (announced != nullptr) drive.room.wake(number);
    return true;
}

/// What woke the layout asks for a pass.
void LiveLayout::takeWishes() {
    if (!isLooking && !isSignalled) return;
    if (wish == Wish::None) wish = Wish::PassIfAnyWaits;
    if (isDraining) return;
    if (isLooking) wish = Wish::Pass;
    passesLeft = std::max<std::uint64_t>(waiting.getMostRounds(), 1);
}

bool LiveLayout::getIsPassWanted() {
    if (wish == Wish::PassIfAnyWaits) {
        waiting.count();
        wish = waiting.getIsAny() ? Wish::Pass : Wish::None;
    }
    return wish == Wish::Pass;
}

/// Whether one of the sources begins a round: of those whose next sample is due the one with the earliest.
bool LiveLayout::chooseSource() {
    if (sources.empty()) return false;
    const Clock::time_point now = drive.clock.getIsUnpaced() ? Clock::time_point::min() : Clock::now();
    Source* next = nullptr;
    for (std::size_t i = 0; i < sources.size();) {
        LiveSource& candidate = *sources[i];
        const bool isReady = getIsReady(candidate);
        if (candidate.hasEnded) {
            sources.erase(sources.begin() + static_cast<std::ptrdiff_t>(i));
            drive.endDriver();
            continue;
        }
        ++i;
        if (!isReady) continue;
        Source& source = *candidate.source;
        const Clock::time_point dueTime = getComesByItself(candidate.waking)
                                              ? Clock::time_point::min()
                                              : drive.clock.dueOf(source.getNextTimeStamp());
        if (dueTime > now)
            due = std::min(due, dueTime);
        else if (next == nullptr || source.getNextTimeStamp() < next->getNextTimeStamp())
            next = &source;
    }
    current = nullptr;
    if (next == nullptr) return false;
    if (!getHasRoom()) return false;
    streamTime = next->getNextTimeStamp();
    if (!beginRound(streamTime)) return false;
    next->release();
    return true;
}

/// Whether the source has a sample; notes its end. One that waits for who writes its pipe will wake the layout.
bool LiveLayout::getIsReady(LiveSource& source) {
    current = source.source;
    if (getComesByItself(source.waking) && !source.source->getIsPrepared()) {
        drive.pipes.watch(source.waking->getDescriptor(), getGate());
        return false;
    }
    source.hasEnded = !source.source->prepare();
    return !source.hasEnded;
}

bool LiveLayout::chooseClock() {
    if (isClockDone) return false;
    if (!hasClockStepped) {
        if (drive.limit.getIsAny() && clock->getIsReached(drive.limit, rounds.get())) {
            isClockDone = true;
            drive.endDriver();
            return false;
        }
        if (clockDue > Clock::now()) {
            due = clockDue;
            return false;
        }
        if (!getHasRoom()) return false;
        stepClock();
    }
    if (!beginRound(clock->getElapsed())) return false;
    hasClockStepped = false;
    return true;
}

void LiveLayout::stepClock() {
    const double before = clock->getTime();
    current = clock->getBlock();
    clock->step();
    if (drive.countsSteps) clock->getBlock()->stepTally.steps.add(1);
    current = nullptr;
    hasClockStepped = true;
    streamTime = clock->getTime();
    finite.look(*clock->getBlock(), streamTime);
    const bool tellsTime = !clock->getIsWallClock() && streamTime > before;
    if (!drive.clock.getIsUnpaced())
        clockDue = tellsTime ? drive.clock.dueOf(clock->getElapsed()) : Clock::now() + kPaceOfTimelessClock;
}

/// False when the timeline has something to do first.
bool LiveLayout::beginRound(double time) {
    if (appliesTimeline && drive.timeline.getIsDue(time)) {
        isTimelineDue = true;
        timelineTime = time;
        return false;
    }
    for (Sink* const sink : sinks)
        sink->setStreamTime(streamTime);
    return true;
}

void LiveLayout::step(Core::Filter& block, Kind kind) {
    const bool rests = kind == Kind::Round ? &block == getClock() : block.getInputPins().empty();
    if (rests) return;
    current = &block;
    if (isMeasuring)
        stepMeasured(block);
    else
        block.process();
    if (drive.countsSteps) block.stepTally.steps.add(1);
    const bool isTimeKnown = kind == Kind::Round || rounds.get() > 0;
    finite.look(block, isTimeKnown ? streamTime : std::numeric_limits<double>::quiet_NaN());
}

void LiveLayout::stepMeasured(Core::Filter& block) {
    const Clock::time_point begin = Clock::now();
    block.process();
    const auto spent = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - begin);
    block.stepTally.measuredSteps.add(1);
    block.stepTally.nanoseconds.add(static_cast<std::uint64_t>(spent.count()));
}

void LiveLayout::endPass(Kind kind) {
    const bool hasDriver = clock != nullptr || !sources.empty();
    current = nullptr;
    mayRest = false; // there is the next round to look for
    if (kind == Kind::Round) rounds.add(1);
    if (drive.getIsCut()) return; // links may have come to another layout, as in `choose`
    sendRoom.countRound();
    drive.room.tellRoom(number, false);
    // Links that were taken up within the pass are counted from there on.
    wish = std::exchange(isRefreshed, false) ? Wish::PassIfAnyWaits : Wish::None;
    if (kind == Kind::Round && !hasWakingLinks) return;
    const bool hasMoved = waiting.count();
    const bool isLeft = hasDriver && !isDraining ? waiting.getIsAnyWaking() : waiting.getIsAny();
    if (isLeft && hasMoved) wish = Wish::Pass;
    mayRest = wish == Wish::None && !hasDriver;
}

/// Nothing new comes: from now on only what is in the links moves.
void LiveLayout::beginDrain() {
    isDraining = true;
    passesLeft = drive.mostDrainRounds;
    wish = Wish::PassIfAnyWaits;
}

} // namespace Quillmere::Host
