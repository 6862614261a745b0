// SPDX-License-Identifier: MIT
#include "host/run/RoundChooser.h"

#include <algorithm>
#include <chrono>

namespace Quillmere::Host {

namespace {
/// Between two rounds of a clock whose time stamps can't tell when the next is due.
constexpr std::chrono::milliseconds kPaceOfTimelessClock{10};
} // namespace

void RoundChooser::setSources(std::vector<RunSource*> newSources) {
    sources = std::move(newSources);
    std::erase_if(sources, [](const RunSource* source) { return source->hasEnded; });
    next = nullptr;
}

void RoundChooser::setClock(const GeneratorClock& newClock, const std::optional<RunLimit>& newLimit) {
    clock = newClock;
    limit = newLimit;
}

RoundChooser::Choice RoundChooser::chooseSource(Clock::time_point now) {
    const bool isPaced = getIsPaced();
    Clock::time_point due = Clock::time_point::max();
    next = nullptr;
    for (auto candidate = sources.begin(); candidate != sources.end();) {
        Source& source = *(*candidate)->source;
        asked = &source;
        if (getIsWaitedFor(**candidate)) {
            ++candidate;
            continue;
        }
        if (!source.prepare()) {
            (*candidate)->hasEnded = true;
            ++ended;
            candidate = sources.erase(candidate);
            continue;
        }
        const Clock::time_point dueTime = isPaced ? dueOf(**candidate) : now;
        ++candidate;
        if (dueTime > now)
            due = std::min(due, dueTime);
        else if (next == nullptr || source.getNextTimeStamp() < next->getNextTimeStamp())
            next = &source;
    }
    asked = nullptr;
    if (next != nullptr) return {Answer::Round, due};
    return {sources.empty() ? Answer::End : Answer::NotYet, due};
}

/// Whether it has nothing for now, and will wake who chooses.
bool RoundChooser::getIsWaitedFor(const RunSource& candidate) const {
    if (pace == nullptr || !getComesByItself(candidate.waking) || candidate.source->getIsPrepared())
        return false;
    pace->watch(*candidate.waking);
    return true;
}

RoundChooser::Clock::time_point RoundChooser::dueOf(const RunSource& candidate) const {
    if (getComesByItself(candidate.waking)) return Clock::time_point::min();
    return pace->dueOf(candidate.source->getNextTimeStamp());
}

RoundChooser::Choice RoundChooser::chooseClock(Clock::time_point now) {
    chosenAt = now;
    if (isClockDone) return {Answer::End};
    if (hasClockStepped) return {Answer::Round};
    if (limit && clock->getIsReached(*limit, rounds)) {
        isClockDone = true;
        ++ended;
        return {Answer::End};
    }
    if (getIsPaced() && clockDue > now) return {Answer::NotYet, clockDue};
    return {Answer::Round};
}

void RoundChooser::stepClock() {
    if (hasClockStepped) return;
    const double before = clock->getTime();
    asked = clock->getBlock();
    clock->step();
    asked = nullptr;
    hasClockStepped = true;
    streamTime = clock->getTime();
    elapsed = clock->getElapsed();
    if (!getIsPaced()) return;
    const bool tellsTime = !clock->getIsWallClock() && streamTime > before;
    clockDue = tellsTime ? pace->dueOf(elapsed) : chosenAt + kPaceOfTimelessClock;
}

} // namespace Quillmere::Host
