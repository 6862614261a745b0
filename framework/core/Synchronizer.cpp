// SPDX-License-Identifier: MIT
#include "framework/core/Synchronizer.h"

#include <functional>

#include <Poco/ScopedUnlock.h>

namespace Quillmere::Core {

namespace Private {
constinit thread_local char threadMark = 0;
} // namespace Private

void Synchronizer::wait(Poco::FastMutex& mutex, Poco::Event& event) {
    if (sleepsBetweenPasses.load(std::memory_order_relaxed)) return;
    Sleeper self{event};
    {
        const std::lock_guard lock(state);
        if (isShutDown || guards > 0) return;
        // Who set it last meant a sleeper that is gone.
        event.reset();
        enlist(self);
    }
    {
        const Poco::ScopedUnlock<Poco::FastMutex> unlocked(mutex);
        event.wait();
    }
    const std::lock_guard lock(state);
    strike(self);
}

void Synchronizer::enlist(Sleeper& sleeper) {
    sleeper.next = sleepers;
    if (sleepers != nullptr) sleepers->before = &sleeper;
    sleepers = &sleeper;
    ++sleeperCount;
}

void Synchronizer::strike(const Sleeper& sleeper) {
    (sleeper.before != nullptr ? sleeper.before->next : sleepers) = sleeper.next;
    if (sleeper.next != nullptr) sleeper.next->before = sleeper.before;
    --sleeperCount;
}

void Synchronizer::signal(Poco::Event& event) {
    if (sleepsBetweenPasses.load(std::memory_order_relaxed)) giveSignal();
    // A sleeper on this event has registered under the mutex that the caller holds, so a zero here is no
    // race.
    if (sleeperCount.load(std::memory_order_relaxed) == 0) return;
    const std::lock_guard lock(state);
    for (const Sleeper* sleeper = sleepers; sleeper != nullptr; sleeper = sleeper->next)
        if (&sleeper->event == &event) event.set();
}

void Synchronizer::shutDown() {
    const std::lock_guard lock(state);
    isShutDown = true;
    for (const Sleeper* sleeper = sleepers; sleeper != nullptr; sleeper = sleeper->next)
        sleeper->event.set();
    loopMayWake.notify_all();
}

void Synchronizer::sleep(Clock::time_point due) {
    std::unique_lock lock(state);
    // Counted before it shows, or who looks twice could take this sleep for the one before.
    ++sleeps;
    // First asleep, then the last look at the reasons; who gives a reason does it the other way round.
    isAsleep = true;
    const auto hasReason = [this] { return reasons.load() != 0 || isShutDown; };
    if (due == Clock::time_point::max())
        loopMayWake.wait(lock, hasReason);
    else
        loopMayWake.wait_until(lock, due, hasReason);
    isAsleep = false;
}

void Synchronizer::giveReason(Reason reason) {
    reasons.fetch_or(reason);
    if (!isAsleep.load()) return;
    { const std::lock_guard lock(state); } // whoever is about to sleep has looked, or is inside the wait
    loopMayWake.notify_one();
}

void Synchronizer::announceGuard() {
    const std::lock_guard lock(state);
    // In this order: a step that sees that the gate is wanted can't take it back before it has opened it to
    // the guard.
    bits |= kQueued;
    ++guards;
    for (const Sleeper* sleeper = sleepers; sleeper != nullptr; sleeper = sleeper->next)
        sleeper->event.set();
}

void Synchronizer::enterAsGuard() {
    std::unique_lock lock(state);
    guardsMayEnter.wait(lock, [this] { return (bits & kHeld) == 0 && !isStepsTurn; });
    bits |= kHeld;
    take();
    isHeldByGuard = true;
}

void Synchronizer::enterAsStep() {
    unsigned expected = kFree;
    if (!bits.compare_exchange_strong(expected, kHeld)) return queueAsStep();
    take();
}

void Synchronizer::queueAsStep() {
    std::unique_lock lock(state);
    if (stepsWaiting++ == 0) guardsBeforeStep = guards;
    bits |= kQueued;
    stepsMayEnter.wait(lock, [this] { return (bits & kHeld) == 0 && (guards == 0 || isStepsTurn); });
    bits |= kHeld;
    take();
    isStepsTurn = false;
    if (--stepsWaiting > 0) guardsBeforeStep = guards;
    if (stepsWaiting == 0 && guards == 0) bits = kHeld;
}

void Synchronizer::take() {
    owner.store(&Private::threadMark, std::memory_order_relaxed);
    depth = 1;
}

void Synchronizer::open() {
    owner.store(nullptr, std::memory_order_relaxed);
    unsigned expected = kHeld;
    if (!bits.compare_exchange_strong(expected, kFree)) openToOthers();
}

void Synchronizer::openToOthers() {
    const std::lock_guard lock(state);
    if (isHeldByGuard) {
        isHeldByGuard = false;
        --guards;
        if (stepsWaiting > 0 && (guardsBeforeStep == 0 || --guardsBeforeStep == 0)) isStepsTurn = true;
    }
    bits = stepsWaiting > 0 || guards > 0 ? kQueued : kFree;
    if (isStepsTurn || guards == 0) {
        if (stepsWaiting > 0) stepsMayEnter.notify_one();
    } else {
        guardsMayEnter.notify_all();
    }
}

void Synchronizer::giveWay() {
    // Inside a guard of this thread, or inside another step, the gate is not this step's to give.
    if (depth > 1) return;
    open();
    enterAsStep();
}

void Synchronizer::DisablerLocker::enter() {
    Synchronizer* const low = std::less<>()(b, a) ? b : a;
    Synchronizer* const high = low == a ? b : a;
    const bool entersLow = low != nullptr && !low->passAgain();
    const bool entersHigh = high != nullptr && high != low && !high->passAgain();
    if (entersLow) low->announceGuard();
    if (entersHigh) high->announceGuard();
    if (entersLow) low->enterAsGuard();
    if (entersHigh) high->enterAsGuard();
    if (high == low) high->passAgain();
}

} // namespace Quillmere::Core
