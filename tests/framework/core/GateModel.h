// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Synchronizer.h"

#include <array>
#include <string>
#include <vector>

/// Random play against the gate: up to four threads, each with a list of deeds that its seed decides, and a
/// referee in every thread that knows what the gate promises. A promise that something ends is refereed by a
/// round that doesn't.
namespace GateModel {

// At most:
constexpr unsigned kThreads = 4;
constexpr unsigned kGates = 3;

/// What one of the threads does that come from outside a layout.
enum class Deed {
    Guard, ///< guards over no, one or two gates, in any order, with guards, steps and waits nested inside
    Post,  ///< a letter into a box of a gate, with a signal
    PostAndSee,  ///< the same, and nothing else until a loop has taken the letter
    PostInGuard, ///< the same inside a guard over two gates
    News,        ///< something written under a guard, then a stir
    Call,        ///< something written under no lock at all, then a stir; for loops that sleep between passes
    CallAndSee,  ///< the same, and nothing else until the loop has seen it
    Stir,        ///< a stir without a cause
    Move,        ///< the block that wanders goes from one gate to another
    Touch,       ///< a guard over whatever gate the block that wanders has
    Step,        ///< a step of a layout whose loop runs as well
    Look,        ///< two looks at a loop that sleeps
    ShutDown,
};

struct Task {
    Deed deed = Deed::Guard;
    unsigned gate = 0;
};

/// How many threads play which part at one gate, and what its loops wait for before they end.
struct GatePlan {
    unsigned loops = 0;
    bool sleepsBetweenPasses = false;
    bool hasDueTimes = false;    ///< of the sleep between passes
    bool endsByShutDown = false; ///< and by nothing else
    std::array<int, 2> letters{};
    int news = 0;
    int calls = 0;
};

/// What all rounds of a test have in common.
struct Family {
    bool hasSleepingReaders = false;
    bool hasSleepingLoops = false;
    bool hasWanderer = false;
    bool hasShutDown = false;
    /// one loop that sleeps between passes, and writers who mean to meet it as it falls asleep
    bool isDuel = false;
};

struct Plan {
    unsigned seed = 0;
    bool hasWanderer = false;
    std::vector<GatePlan> gates;
    std::vector<std::vector<Task>> writers; ///< one list a thread
};

Plan makePlan(const Family& family, unsigned seed);

/// Plays the plan to its end and returns the first promise that was broken, or nothing. A round that doesn't
/// end within its time ends the program, with a word on where each thread stands.
std::string play(const Plan& plan);

} // namespace GateModel
