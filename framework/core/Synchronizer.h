// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include <Poco/Event.h>
#include <Poco/Mutex.h>

namespace Quillmere::Core {

namespace Private {
/// Its address tells the threads apart. Initial-exec, so that taking the address costs one instruction.
extern QUILLMERE_API constinit thread_local char threadMark __attribute__((tls_model("initial-exec")));
} // namespace Private

/// The gate between a layout's run thread and all other threads.
///
/// Two kinds of holders take turns. The run loop holds the gate over one pass of its layout (`StepLocker`)
/// and gives way between two blocks. Everybody else who touches a block's settings or links holds it as a
/// guard (`DisablerLocker`): guards that are announced go before a step that comes, and guards that come
/// after a waiting step let it do one block first, so neither side starves.
///
/// A thread that holds the gate passes it again at the cost of a compare and at most a count, whichever way
/// it took it; a step that is alone takes and opens the gate by one exchange each. Requires: a thread that
/// has a gate, by a step or a guard, takes no other behind it, since somebody who has that one might want
/// this one; several are taken by one guard, or in the order of their addresses.
class QUILLMERE_API Synchronizer {
public:
    class DisablerLocker;
    class StepLocker;
    template <class Subject>
    class SubjectLocker;

    Synchronizer() = default;
    /// Requires: nobody holds the gate, wants it or sleeps in it.
    ~Synchronizer() = default;
    Synchronizer(const Synchronizer&) = delete;
    Synchronizer& operator=(const Synchronizer&) = delete;

    /// Sleeps until `event` is signalled; `mutex` is released meanwhile. Returns at once when a guard holds
    /// or wants the gate or the gate is shut down, and is woken by either. Always returns with `mutex`
    /// locked, and may return with nothing new: the caller tests again. A step that sleeps keeps the gate:
    /// who wants it wakes the step, and gets the gate when the step has ended. Requires: `mutex` is locked by
    /// this thread. [run]
    void wait(Poco::FastMutex& mutex, Poco::Event& event);

    /// Wakes who sleeps on `event`; nothing is kept for those who come later.
    /// Requires: the mutex that goes with `event` is locked by this thread. [any]
    void signal(Poco::Event& event);

    /// Wakes all sleepers, for good: from now on `wait` and `sleep` return at once. Steps and guards work as
    /// before. [any]
    void shutDown();

    /// [any]
    bool getIsShutDown() const { return isShutDown.load(std::memory_order_relaxed); }

    /// Whether this thread has the gate, by a step or by a guard. [any]
    bool getIsOwn() const { return owner.load(std::memory_order_relaxed) == &Private::threadMark; }

    /// Whether a guard holds the gate or wants it: the run loop's question between two blocks. [any]
    bool getIsWanted() const { return guards.load(std::memory_order_acquire) != 0; }

    /// Why a loop that sleeps between its passes is woken.
    enum Reason : unsigned {
        kSignal = 1, ///< a sample came over a link on which readers may sleep
        kStir = 2,   ///< `stir` was called
    };
    using Clock = std::chrono::steady_clock;

    /// With true, no reader sleeps in `wait` any more, which returns at once: the loop sleeps itself, in
    /// `sleep`, when a pass found nothing to do. This is for a layout that several things may wake: asleep in
    /// one block's input, it would miss the others. Requires: nobody sleeps in `wait`. [setup]
    void setSleepsBetweenPasses(bool flag) { sleepsBetweenPasses.store(flag, std::memory_order_relaxed); }

    /// Wakes the loop that sleeps between passes, or keeps it from falling asleep: its next look finds what
    /// the caller did before, whether under a lock or not. [any]
    void stir() { giveReason(kStir); }

    /// What has come since the last call, as `Reason`s. The loop asks before each look at its blocks: what
    /// comes behind that look is kept for `sleep`. [run]
    unsigned takeReasons() {
        if (reasons.load(std::memory_order_relaxed) == 0) return 0;
        return reasons.exchange(0);
    }

    /// Whether something has come that the loop has not asked for yet, and that keeps it from sleeping. [any]
    bool getHasReasons() const { return reasons.load() != 0; }

    /// Sleeps until there is a reason, until `due`, or until the gate is shut down; returns at once if there
    /// is a reason already. Guards don't wake the sleeper, since it doesn't hold the gate. Requires: not
    /// inside a step. [run]
    void sleep(Clock::time_point due);

    /// Whether the loop is in `sleep` without a reason to wake; `getSleeps` counts how often it fell asleep.
    /// Who looks at several gates twice, and finds each in the same sleep at both looks, knows that all of
    /// them slept at one time in between. [any]
    bool getIsAsleep() const { return isAsleep.load() && reasons.load() == 0; }
    std::uint64_t getSleeps() const { return sleeps.load(); }

private:
    /// Takes the gate once more if this thread has it.
    bool passAgain() {
        if (!getIsOwn()) return false;
        ++depth;
        return true;
    }
    /// Gives back what `passAgain`, `enterAsGuard` or `enterAsStep` took.
    void leave() {
        if (--depth == 0) open();
    }
    void giveSignal() {
        // A reason that is there already was put there behind the loop's last look, or the look is still to
        // come: the caller and the look hold the link's mutex one after the other. This spares a busy link a
        // locked instruction.
        if ((reasons.load(std::memory_order_relaxed) & kSignal) == 0) giveReason(kSignal);
    }
    void giveReason(Reason reason);
    void enterAsStep();
    void open();
    void take();
    void announceGuard();
    void enterAsGuard();
    void queueAsStep();
    void openToOthers();
    void giveWay();

    /// Stands in the call of `wait` and in the list of all that sleep there; a list through them needs no
    /// memory.
    struct Sleeper {
        Poco::Event& event;
        Sleeper* before = nullptr;
        Sleeper* next = nullptr;
    };
    void enlist(Sleeper& sleeper);
    void strike(const Sleeper& sleeper);

    // What `bits` holds. While `kQueued` is set, they change under `state` only; so a step that is alone
    // takes and opens the gate by one exchange each, and whoever queues sees either before it happened or
    // after.
    static constexpr unsigned kFree = 0;
    static constexpr unsigned kHeld = 1;
    static constexpr unsigned kQueued = 2; ///< guards hold or want the gate, or steps wait for it

    std::atomic<unsigned> bits{kFree};
    std::atomic<const char*> owner{nullptr}; ///< thread mark of the holder; written by the holder
    unsigned depth = 0;                      ///< how often the holder holds it; the holder's own
    bool isHeldByGuard = false;              ///< the holder's own
    std::atomic<unsigned> guards{0};         ///< guards that hold or want the gate; written under `state`
    std::atomic<unsigned> sleeperCount{0};   ///< how many `sleepers`; written under `state`
    std::atomic<bool> isShutDown{false};     ///< written under `state`
    std::atomic<bool> sleepsBetweenPasses{false};
    std::atomic<unsigned> reasons{0}; ///< to wake the loop that sleeps between passes
    std::atomic<bool> isAsleep{false};
    std::atomic<std::uint64_t> sleeps{0};

    std::mutex state; ///< innermost lock: nothing else is taken under it but an event's own
    std::condition_variable stepsMayEnter;
    std::condition_variable guardsMayEnter;
    std::condition_variable loopMayWake;
    unsigned stepsWaiting = 0;
    unsigned guardsBeforeStep = 0; ///< guards that were there when the waiting step came and haven't gone yet
    bool isStepsTurn = false;      ///< the waiting step goes next, whatever guards came meanwhile
    Sleeper* sleepers = nullptr;   ///< the one that came last
};

/// Holds one gate or two as a guard for its lifetime: no step of their layouts is under way, and a reader
/// that slept in `wait` has been woken and has ended its step. Null gates are passed over. Guards of one
/// thread nest. [any]
class QUILLMERE_API Synchronizer::DisablerLocker {
public:
    /// Announces itself on both gates, then takes them in the order of their addresses.
    DisablerLocker(Synchronizer* const first, Synchronizer* const second) : a(first), b(second) {
        if (b == nullptr && (a == nullptr || a->passAgain())) return;
        enter();
    }
    ~DisablerLocker() {
        if (a != nullptr) a->leave();
        if (b != nullptr) b->leave();
    }
    DisablerLocker(const DisablerLocker&) = delete;
    DisablerLocker& operator=(const DisablerLocker&) = delete;

private:
    void enter();

    Synchronizer* const a;
    Synchronizer* const b;
};

/// Holds the gate over one pass of a layout. [run]
class QUILLMERE_API Synchronizer::StepLocker {
public:
    explicit StepLocker(Synchronizer& synchronizer) : gate(synchronizer) {
        if (!gate.passAgain()) gate.enterAsStep();
    }
    ~StepLocker() { gate.leave(); }
    StepLocker(const StepLocker&) = delete;
    StepLocker& operator=(const StepLocker&) = delete;

    /// The safe point between two blocks: lets the guards through that want the gate.
    void giveWayIfWanted() {
        if (gate.getIsWanted()) gate.giveWay();
    }

private:
    Synchronizer& gate;
};

/// A `DisablerLocker` over the gate of a subject (a setting, a pin) that another thread may move to another
/// layout meanwhile: the gate that is held in the end is the one that the subject has. [any]
template <class Subject>
class Synchronizer::SubjectLocker {
public:
    explicit SubjectLocker(Subject& subject) : gate(subject.getSynchronizer()) {
        if (gate == nullptr) return;
        // A thread that has the gate keeps it for longer than this lasts, and the subject can't move away,
        // since moving it takes the gate: there is nothing to count, to hold or to give back.
        if (gate->getIsOwn())
            gate = nullptr;
        else
            enter(subject);
    }
    ~SubjectLocker() {
        if (gate != nullptr) gate->leave();
    }
    SubjectLocker(const SubjectLocker&) = delete;
    SubjectLocker& operator=(const SubjectLocker&) = delete;

private:
    [[gnu::noinline]] void enter(Subject& subject) {
        for (;;) {
            gate->announceGuard();
            gate->enterAsGuard();
            Synchronizer* const current = subject.getSynchronizer();
            if (current == gate) return;
            gate->leave();
            gate = current;
            if (gate == nullptr || gate->passAgain()) return;
        }
    }

    Synchronizer* gate;
};

} // namespace Quillmere::Core
