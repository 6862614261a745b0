// SPDX-License-Identifier: MIT
#include "host/live/LiveLayout.h"

#include "host/ends/Onlooker.h"
#include "host/ends/RecordingException.h"
#include "host/live/RowGathering.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Quillmere::Host {

namespace {
std::vector<Core::Filter*> withoutOnlookers(const std::vector<Core::Filter*>& all) {
    std::vector<Core::Filter*> blocks;
    for (Core::Filter* const block : all)
        if (dynamic_cast<const Onlooker*>(block) == nullptr) blocks.push_back(block);
    return blocks;
}
} // namespace

class LiveLayout::Pass {
public:
    Pass(LiveLayout& owner, PassWish::Waker wokenBy) : self(owner), waker(wokenBy) {}
    bool begin() {
        kind = self.choose(waker);
        if (kind == Kind::None) return false;
        self.timer.beginPass();
        return true;
    }
    void step(Core::Filter& block) { self.step(block, kind); }
    void end() { self.endPass(kind); }

private:
    LiveLayout& self;
    const PassWish::Waker waker;
    Kind kind = Kind::None;
};

LiveLayout::LiveLayout(std::string layoutId, Core::LayoutManager& blocks, LiveDrive& liveDrive)
    : id(std::move(layoutId)), layout(blocks), drive(liveDrive), pace(liveDrive, getGate()), rounds(&pace),
      seat(liveDrive.room, getGate()), finite(liveDrive.nonFiniteSeen), timer(liveDrive.countsSteps) {
    drive.time.enter(getNumber(), getGate());
}

void LiveLayout::refresh(std::deque<RunSource>& runSources, const FollowerSet& followers) {
    const std::vector<Core::Filter*>& all = layout.getFilters();
    const std::vector<Core::Filter*> blocks = withoutOnlookers(all);
    std::vector<RunSource*> sources;
    for (RunSource& source : runSources)
        // what is held elsewhere is another thread's
        if (source.source->getManager() == &layout) sources.push_back(&source);
    rounds.setSources(std::move(sources));
    sinks.clear();
    for (Core::Filter* const block : all)
        if (auto* const sink = dynamic_cast<Sink*>(block)) sinks.push_back(sink);
    if (runSources.empty() && rounds.getClock() == nullptr) takeUpClock();
    waiting.watch(blocks);
    handOver.watch(blocks);
    finite.watch(blocks);
    wish.takeUp(waiting.getMostRounds());
    std::vector<Core::Filter*> ownFollowers;
    for (Core::Filter* const block : all)
        if (followers.contains(block)) ownFollowers.push_back(block);
    bursts.watch(std::move(ownFollowers));
    gatherRows(layout, sinks, rounds.getIsDriven(), followers);
}

void LiveLayout::takeUpClock() {
    const GeneratorClock clock(layout.getFilters());
    if (clock.getBlock() == nullptr) return;
    rounds.setClock(clock, drive.limit.getIsAny() ? std::optional(drive.limit) : std::nullopt);
    drive.addDriver();
}

void LiveLayout::start() {
    getGate().setSleepsBetweenPasses(true);
    isLookWanted = false;
    wish.start();
    try {
        thread = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        throw RunException(Complaint::sentence(
            {}, "no thread can be made for the layout '" + id + "': " + error.code().message(),
            "room for one more thread"));
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
        drive.cut(interruptionFor(exception.what())); // no block's fault
    } catch (const std::exception& exception) {
        cutForFailure(exception);
    } catch (...) {
        cutForFailure(std::runtime_error("something that is no std::exception"));
    }
}

void LiveLayout::cutForFailure(const std::exception& exception) {
    const Core::Filter* block = current;
    if (block == nullptr) block = handOver.getAsked();
    if (block == nullptr) block = rounds.getAsked();
    drive.cut(endingOf(block, timeOfFailure(block), exception));
}

/// The round's time; in a layout without rounds that of the sample which the block took last.
double LiveLayout::timeOfFailure(const Core::Filter* block) {
    if (block == nullptr || roundCount.get() > 0) return getStreamTime();
    double time = getStreamTime();
    for (const Core::AbstractInputPin* const pin : block->getInputPins()) {
        // The block may be in another layout by now.
        const Core::Synchronizer::SubjectLocker<const Core::Pin> guard(*pin);
        if (const auto* const input = dynamic_cast<const Core::InputPin<Core::MatrixXd>*>(pin))
            time = std::max(time, input->getTimeStamp());
    }
    return time;
}

void LiveLayout::turn() {
    Pass pass(*this, takeWaker());
    layout.runPass(pass);
    switch (next) {
    case Next::Look:
        return;
    case Next::Timeline:
        return applyTimeline();
    case Next::Rest:
        return seat.sleep(due);
    }
}

/// What woke the layout. Before the look at the blocks: what comes behind it keeps the layout from falling
/// asleep.
PassWish::Waker LiveLayout::takeWaker() {
    const unsigned reasons = getGate().takeReasons();
    if ((reasons & Core::Synchronizer::kStir) != 0 && isLookWanted.exchange(false))
        return PassWish::Waker::Somebody;
    return (reasons & Core::Synchronizer::kSignal) != 0 ? PassWish::Waker::Sample : PassWish::Waker::Nobody;
}

/// Outside the gate: it writes settings of blocks in other layouts.
void LiveLayout::applyTimeline() {
    const std::lock_guard lock(drive.timelineMutex);
    if (!appliesTimeline) return;
    drive.timeline.apply(rounds.getElapsed());
    const Core::Synchronizer::DisablerLocker guard(&getGate(), nullptr);
    // Before the blocks that get it; its own step comes behind theirs.
    if (const Core::Filter* const sender = drive.timeline.getSender()) finite.look(*sender, getStreamTime());
}

LiveLayout::Kind LiveLayout::choose(PassWish::Waker waker) {
    next = Next::Look;
    if (drive.getIsCut())
        return Kind::None; // a change that failed may have left sources that another layout holds
    next = Next::Rest;
    due = Clock::time_point::max();
    awaited.reset();
    seat.look();
    if (drive.getIsOver() && !wish.getIsDraining()) wish.beginDrain(drive.mostDrainRounds);
    wish.wake(waker, waiting.getMostRounds());
    const Kind kind = chooseKind();
    if (kind != Kind::None) return kind;
    if (next == Next::Rest) handOver.rest();
    seat.endLook(getIsExpecting(), awaited);
    return kind;
}

LiveLayout::Kind LiveLayout::chooseKind() {
    // What a block has sent in one step is gone before the next one adds to it.
    if (bursts.getIsWanted()) return seat.getHasRoom() ? Kind::Followers : Kind::None;
    if (finishing != nullptr) return seat.getHasRoom() ? Kind::Finish : Kind::None;
    if (!wish.getIsDraining() && getIsRoundDue() && getIsInTime())
        return beginRound() ? Kind::Round : Kind::None;
    if (!wish.getIsWanted(waiting) || !seat.getHasRoom()) return Kind::None;
    wish.take();
    return Kind::Other;
}

bool LiveLayout::getIsRoundDue() {
    const RoundChooser::Choice choice = rounds.choose(pace.getNow());
    due = choice.due;
    for (unsigned ended = rounds.takeEnded(); ended > 0; --ended)
        drive.endDriver();
    if (choice.answer == RoundChooser::Answer::End) drive.time.end(getNumber());
    return choice.answer == RoundChooser::Answer::Round;
}

/// Whether the layouts that it meets with have come as far as it has. What they send is taken meanwhile.
bool LiveLayout::getIsInTime() {
    if (rounds.getClock() != nullptr || drive.time.getMayBegin(getNumber(), rounds.getNextTime()))
        return true;
    awaited = drive.time.getAwaited(getNumber());
    return false;
}

/// False where there is no room for the round, or where the timeline has something to do first.
bool LiveLayout::beginRound() {
    if (!rounds.getHasBegun()) {
        if (!seat.getHasRoom()) return false;
        rounds.begin();
        streamTime.store(rounds.getStreamTime(), std::memory_order_relaxed);
        if (Core::Filter* const clock = rounds.getClock()) {
            timer.count(*clock);
            finite.look(*clock, getStreamTime());
        }
    }
    if (appliesTimeline && drive.timeline.getIsDue(rounds.getElapsed())) {
        next = Next::Timeline;
        return false;
    }
    for (Sink* const sink : sinks)
        sink->setStreamTime(getStreamTime());
    rounds.release();
    drive.time.countRound(getNumber());
    return true;
}

bool LiveLayout::getIsStepped(const Core::Filter& block, Kind kind) const {
    if (kind == Kind::Round) return &block != getClock();
    if (kind == Kind::Followers) return bursts.getIsFollower(block);
    if (kind == Kind::Finish) return finishing->contains(&block);
    return !block.getInputPins().empty();
}

void LiveLayout::step(Core::Filter& block, Kind kind) {
    if (!getIsStepped(block, kind)) return;
    current = &block;
    timer.step(block);
    const bool isTimeKnown = kind == Kind::Round || roundCount.get() > 0;
    finite.look(block, isTimeKnown ? getStreamTime() : std::numeric_limits<double>::quiet_NaN());
}

void LiveLayout::endPass(Kind kind) {
    current = nullptr;
    next = Next::Look; // there is the next round to look for
    if (kind == Kind::Round) roundCount.add(1);
    if (drive.getIsCut()) return; // links may have come to another layout, as in `choose`
    seat.endPass(getIsExpecting());
    takeStock(kind);
    if (next == Next::Rest)
        handOver.rest();
    else
        handOver.endPass(Clock::now);
}

/// What has moved is looked at when the blocks behind those that make times have taken theirs.
void LiveLayout::takeStock(Kind kind) {
    if (kind == Kind::Followers) {
        bursts.endPass();
    } else {
        bursts.beginPasses();
        if (kind == Kind::Finish)
            finishing = nullptr;
        else
            wish.settle();
    }
    if (bursts.getIsWanted()) return;
    wish.look(waiting, rounds.getIsDriven());
    if (wish.getMayRest() && !rounds.getIsDriven()) next = Next::Rest;
}

} // namespace Quillmere::Host
