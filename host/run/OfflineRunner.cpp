// SPDX-License-Identifier: MIT
#include "host/run/OfflineRunner.h"

#include "framework/Quillmere.h"
#include "host/plugins/BlockDescription.h"

#include <Poco/Exception.h>
#include <Poco/Timestamp.h>

#include <algorithm>

namespace Quillmere::Host {

namespace {
constexpr std::uint64_t kRoundsBetweenReports = 4096;
/// So often in a row a clock may show the same time: the wall clock is coarser than a round.
constexpr std::uint64_t kMostRoundsOfOneTime = 1000000;

/// Seconds, as blocks stamp it.
double wallClock() {
    return static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7;
}

std::string messageOf(const std::exception& exception) {
    const auto* const poco = dynamic_cast<const Poco::Exception*>(&exception);
    return poco == nullptr ? exception.what() : poco->displayText();
}
} // namespace

OfflineRunner::OfflineRunner(Graph& target) : graph(target), running(target.getSources()) {
    for (const Graph::Node* const node : graph.getRunOrder())
        steps.push_back(node->block.get());
}

void OfflineRunner::run(const std::atomic<bool>& stop) {
    try {
        runRounds(stop);
    } catch (const std::exception& exception) {
        const std::string where = whereItStands();
        endSinks(false);
        throw RunException(where + messageOf(exception));
    }
    endSinks(true);
}

void OfflineRunner::runRounds(const std::atomic<bool>& stop) {
    if (graph.getSources().empty())
        runGenerators(stop);
    else
        runRecordings(stop);
    drain(stop);
    if (onProgress) onProgress(getProgress());
}

void OfflineRunner::runRecordings(const std::atomic<bool>& stop) {
    while (Source* const source = earliestSource()) {
        current = nullptr;
        if (stop.load(std::memory_order_relaxed)) throw RunException("interrupted");
        streamTime = source->getNextTimeStamp();
        graph.getTimeline().apply(streamTime);
        source->release();
        runRound();
        countRound();
    }
}

void OfflineRunner::runGenerators(const std::atomic<bool>& stop) {
    takeClock();
    const double startOfRun = wallClock();
    std::uint64_t roundsOfOneTime = 0;
    while (!isLimitReached(startOfRun)) {
        if (stop.load(std::memory_order_relaxed)) throw RunException("interrupted");
        const double before = streamTime;
        runClockedRound(startOfRun);
        countRound();
        roundsOfOneTime = streamTime > before ? 0 : roundsOfOneTime + 1;
        if (limit.seconds && roundsOfOneTime > kMostRoundsOfOneTime)
            throw RunException("the time of '" + clock->getName() +
                               "' stands still, so no duration ends the run");
    }
}

/// Takes the first generator that has an output out of the steps.
void OfflineRunner::takeClock() {
    for (auto step = steps.begin(); step != steps.end() && clockPin == nullptr; ++step) {
        if (!(*step)->getInputPins().empty() || (*step)->getOutputPins().empty()) continue;
        clockPin = dynamic_cast<const Core::OutputPin<Core::MatrixXd>*>((*step)->getOutputPins().front());
        clock = clockPin == nullptr ? nullptr : *step;
    }
    std::erase(steps, clock);
}

void OfflineRunner::runClockedRound(double startOfRun) {
    if (clock != nullptr) {
        const Core::Synchronizer::StepLocker gate(graph.getLayout().getSynchronizer());
        current = clock;
        clock->process();
        streamTime = clockPin->data.timeStamp;
        current = nullptr;
    }
    graph.getTimeline().apply(streamTime - beginOfTime(startOfRun));
    runRound();
}

bool OfflineRunner::isLimitReached(double startOfRun) const {
    if (limit.rounds) return rounds >= *limit.rounds;
    return !limit.seconds || (rounds > 0 && streamTime - beginOfTime(startOfRun) >= *limit.seconds);
}

/// A clock with a time of its own begins at 0; one that stamps the wall clock began with the run.
double OfflineRunner::beginOfTime(double startOfRun) const {
    return streamTime >= startOfRun ? startOfRun : 0.0;
}

void OfflineRunner::countRound() {
    if (++rounds % kRoundsBetweenReports == 0 && onProgress) onProgress(getProgress());
}

/// The source with the earliest sample, of equals the first; null when all have ended.
Source* OfflineRunner::earliestSource() {
    Source* earliest = nullptr;
    for (auto source = running.begin(); source != running.end();) {
        current = *source;
        if (!(*source)->prepare()) {
            source = running.erase(source);
            continue;
        }
        if (earliest == nullptr || (*source)->getNextTimeStamp() < earliest->getNextTimeStamp())
            earliest = *source;
        ++source;
    }
    return earliest;
}

void OfflineRunner::runRound() {
    for (Sink* const sink : graph.getSinks())
        sink->setStreamTime(streamTime);
    Core::Synchronizer::StepLocker gate(graph.getLayout().getSynchronizer());
    for (Core::Filter* const step : steps) {
        current = step;
        step->process();
        gate.giveWayIfWanted();
    }
    current = nullptr;
}

/// Rounds without sources, as long as they change what waits in the links. What goes round in a loop at a steady pace, or
/// for longer than anything that was buffered could take, would go round for ever.
void OfflineRunner::drain(const std::atomic<bool>& stop) {
    current = nullptr;
    std::erase_if(steps, [](const Core::Filter* step) { return step->getInputPins().empty(); });
    std::vector<std::uint32_t> waiting = queueLengths();
    const std::uint64_t most = mostDrainRounds();
    for (std::uint64_t round = 0; round < most; ++round) {
        if (std::all_of(waiting.begin(), waiting.end(), [](std::uint32_t length) { return length == 0; }))
            return;
        if (stop.load(std::memory_order_relaxed)) throw RunException("interrupted");
        runRound();
        std::vector<std::uint32_t> after = queueLengths();
        if (after == waiting) return;
        waiting = std::move(after);
    }
}

std::vector<std::uint32_t> OfflineRunner::queueLengths() const {
    std::vector<std::uint32_t> lengths;
    for (const Core::Filter* const step : steps)
        for (const Core::AbstractInputPin* const pin : step->getInputPins())
            if (const auto* const input = dynamic_cast<const Core::InputPin<Core::MatrixXd>*>(pin))
                lengths.push_back(input->getQueueLength());
    return lengths;
}

/// More rounds than the links' samples can need to leave a graph without loops, one step a round.
std::uint64_t OfflineRunner::mostDrainRounds() const {
    std::uint64_t most = steps.size();
    for (const Core::Filter* const step : steps)
        for (const Core::AbstractInputPin* const pin : step->getInputPins())
            most += pin->getBufferCapacity();
    return most;
}

RunProgress OfflineRunner::getProgress() const {
    RunProgress progress;
    progress.rounds = rounds;
    progress.streamTime = streamTime;
    for (const Source* const source : graph.getSources()) {
        progress.rows += source->getRows();
        progress.bytesRead += source->getBytesRead();
        progress.bytes += source->getSize();
    }
    return progress;
}

/// `block 'smooth' (FilterButterworth) at 12.5 s: `, or the time alone between two steps.
std::string OfflineRunner::whereItStands() const {
    std::string time = "at " + shortestText(streamTime) + " s: ";
    if (current == nullptr) return time;
    return "block '" + current->getName() + "' (" + current->getTypeName() + ") " + time;
}

/// Ends every result. A failure of one must not keep the others from being ended, and makes none of them look whole.
void OfflineRunner::endSinks(bool isWhole) {
    std::string failure;
    for (Sink* const sink : graph.getSinks()) {
        try {
            if (isWhole && failure.empty())
                sink->complete();
            else
                sink->abandon();
        } catch (const std::exception& exception) {
            if (failure.empty()) failure = exception.what();
        }
    }
    if (isWhole && !failure.empty()) throw RunException(failure);
}

} // namespace Quillmere::Host
