// SPDX-License-Identifier: MIT
#include "host/run/OfflineRunner.h"

#include "framework/Quillmere.h"
#include "host/ends/RecordingException.h"
#include "host/graph/Finishers.h"
#include "host/graph/Followers.h"
#include "host/run/RunReview.h"
#include "host/text/Complaint.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
constexpr std::uint64_t kRoundsBetweenReports = 4096;
} // namespace

OfflineRunner::OfflineRunner(Graph& target, const RunLimit& runLimit, bool takesWarningsForErrors,
                             RunObserver* runObserver)
    : graph(target), limit(runLimit), isStrict(takesWarningsForErrors), observer(runObserver),
      stamps(target.getDescription().clock == GraphDescription::Clock::Stream ? &streamTime : nullptr) {
    for (const Graph::Node* const node : graph.getRunOrder())
        steps.push_back(node->block.get());
    std::vector<Core::Filter*> watched = steps;
    if (Core::Filter* const sender = graph.getTimeline().getSender()) watched.push_back(sender);
    finite.watch(watched);
    findFollowers();
}

RunOutcome OfflineRunner::run(const std::stop_token& stop,
                              std::function<void(const RunProgress&)> progressHandler) {
    graph.setStop(stop);
    onProgress = std::move(progressHandler);
    RunEnding ending;
    try {
        ending = runToEnd(stop);
        if (isStrict && ending.getIsWhole()) ending = endingOf(gatherOutcome({}).warnings);
    } catch (...) { // no memory to say why
        endSinks(graph.getSinks(), false, streamTime);
        throw;
    }
    RunEnding ofResults = endSinks(graph.getSinks(), ending.getIsWhole(), streamTime);
    return gatherOutcome(ending.getIsWhole() ? ofResults : ending);
}

/// Runs as far as it goes, and gives back why it came no further: nothing when it came to its end.
RunEnding OfflineRunner::runToEnd(const std::stop_token& stop) {
    try {
        runRounds(stop);
    } catch (const InterruptedException& exception) {
        return endingOf(nullptr, streamTime, exception); // no block's fault
    } catch (const std::exception& exception) {
        return endingOf(getBlockAtWork(), streamTime, exception);
    } catch (...) {
        return endingOf(getBlockAtWork(), streamTime,
                        std::runtime_error("something that is no std::exception"));
    }
    return {};
}

RunOutcome OfflineRunner::gatherOutcome(const RunEnding& ending) const {
    std::vector<Core::Filter*> blocks;
    for (const Graph::Node& node : graph.getNodes())
        blocks.push_back(node.block.get());
    return outcomeOf(graph, blocks, finite.getFound(), getProgress(), ending);
}

void OfflineRunner::runRounds(const std::stop_token& stop) {
    takeUpRounds();
    const bool hasClock = rounds.getClock() != nullptr;
    // Nothing is paced: that no round is due yet doesn't happen.
    while (rounds.choose(RoundChooser::Clock::time_point::min()).answer == RoundChooser::Answer::Round) {
        requireGoesOn(stop);
        if (hasClock)
            beginClockedRound();
        else
            rounds.begin();
        streamTime = rounds.getStreamTime();
        applyTimeline(rounds.getElapsed());
        rounds.release();
        runRound();
        runFollowers(stop);
        countRound();
    }
    drain(stop);
    finishBlocks(stop);
    if (onProgress) onProgress(getProgress());
}

/// Sources or, where there are none, the clock, which steps by itself before the others.
void OfflineRunner::takeUpRounds() {
    std::vector<RunSource*> taken;
    for (Source* const source : graph.getSources())
        taken.push_back(&sources.emplace_back(RunSource{source}));
    rounds.setSources(std::move(taken));
    if (!sources.empty()) return;
    rounds.setClock(GeneratorClock(steps), limit);
    std::erase(steps, rounds.getClock());
}

void OfflineRunner::beginClockedRound() {
    const Core::Synchronizer::StepLocker gate(graph.getLayout().getSynchronizer());
    rounds.begin();
    current = rounds.getClock();
    requireStreamTime();
    finite.look(*current, rounds.getStreamTime());
    current = nullptr;
}

void OfflineRunner::requireGoesOn(const std::stop_token& stop) {
    if (stop.stop_requested()) throw InterruptedException();
}

/// `time` is what the timeline counts, which in a graph without sources isn't the stream's.
void OfflineRunner::applyTimeline(double time) {
    Timeline& timeline = graph.getTimeline();
    if (!timeline.getIsDue(time)) return;
    timeline.apply(time);
    const Core::Synchronizer::StepLocker gate(graph.getLayout().getSynchronizer());
    if (const Core::Filter* const sender = timeline.getSender()) finite.look(*sender, streamTime);
}

void OfflineRunner::requireStreamTime() const {
    if (stamps == nullptr || !rounds.getIsWallClock()) return;
    throw RunException({{},
                        "a wall clock's time where the block tells that of the run",
                        "a generator with a time of its own in front of it, or 'clock: wall'"});
}

void OfflineRunner::countRound() {
    if (++roundCount % kRoundsBetweenReports == 0 && onProgress) onProgress(getProgress());
}

void OfflineRunner::runRound() {
    for (Sink* const sink : graph.getSinks())
        sink->setStreamTime(streamTime);
    runPass(steps);
}

void OfflineRunner::runPass(const std::vector<Core::Filter*>& blocks) {
    const Core::StampClock::Lent lent(stamps);
    Core::Synchronizer::StepLocker gate(graph.getLayout().getSynchronizer());
    for (Core::Filter* const step : blocks) {
        current = step;
        step->process();
        finite.look(*step, streamTime);
        gate.giveWayIfWanted();
    }
    current = nullptr;
    if (observer != nullptr) observer->look(streamTime);
}

void OfflineRunner::findFollowers() {
    std::vector<Core::Filter*> followers = followersOf(steps);
    for (Core::Filter* const follower : followers)
        if (auto* const sink = dynamic_cast<Sink*>(follower)) sink->setGathersByTime(true);
    bursts.watch(std::move(followers));
}

void OfflineRunner::runFollowers(const std::stop_token& stop) {
    for (bursts.beginPasses(); bursts.getIsWanted(); bursts.endPass()) {
        requireGoesOn(stop);
        runPass(bursts.getFollowers());
    }
}

/// Rounds without sources, as long as they change what waits in the links. What goes round in a loop at a
/// steady pace, or for longer than anything that was buffered could take, would go round for ever.
void OfflineRunner::drain(const std::stop_token& stop) {
    current = nullptr;
    std::erase_if(steps, [](const Core::Filter* step) { return step->getInputPins().empty(); });
    WaitingSamples waiting;
    waiting.watch(steps);
    letOut(waiting, waiting.getIsAny(), stop);
}

/// What blocks hold back as long as more may come, of senders first.
void OfflineRunner::finishBlocks(const std::stop_token& stop) {
    WaitingSamples waiting;
    waiting.watch(steps);
    for (const Finisher& finisher : finishersAmong(steps)) {
        requireGoesOn(stop);
        finisher.command->fire();
        std::vector<Core::Filter*> stepped;
        for (Core::Filter* const step : steps)
            if (finisher.stepped.contains(step)) stepped.push_back(step);
        runPass(stepped);
        runFollowers(stop);
        letOut(waiting, waiting.countPass(), stop);
    }
}

void OfflineRunner::letOut(WaitingSamples& waiting, bool hasPoint, const std::stop_token& stop) {
    for (std::uint64_t left = waiting.getMostRounds(); hasPoint && left > 0; --left) {
        requireGoesOn(stop);
        runRound();
        runFollowers(stop);
        hasPoint = waiting.countPass();
    }
}

RunProgress OfflineRunner::getProgress() const {
    RunProgress progress;
    progress.rounds = roundCount;
    progress.streamTime = streamTime;
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.source != nullptr) progress.rows += node.source->getRows();
        if (node.recorded == nullptr) continue;
        progress.bytesRead += node.recorded->getBytesRead();
        progress.bytes += node.recorded->getSize();
    }
    return progress;
}

} // namespace Quillmere::Host
