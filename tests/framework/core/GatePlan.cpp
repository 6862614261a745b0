// SPDX-License-Identifier: MIT
#include "tests/framework/core/GateModel.h"

#include <algorithm>
#include <random>

namespace GateModel {

namespace {

class Dice {
public:
    explicit Dice(unsigned seed) : random(seed) {}
    unsigned below(unsigned n) { return std::uniform_int_distribution<unsigned>(0, n - 1)(random); }
    bool coin() { return below(2) == 0; }

private:
    std::mt19937 random;
};

/// Two loops at one gate only where they sleep in their readers: `sleep` is for one loop.
bool takesAnotherLoop(const GatePlan& gate) {
    return gate.loops < (gate.sleepsBetweenPasses ? 1u : 2u);
}

std::vector<GatePlan> makeGates(const Family& family, unsigned loops, Dice& dice) {
    std::vector<GatePlan> gates(1 + dice.below(kGates));
    for (GatePlan& gate : gates) {
        gate.sleepsBetweenPasses = family.hasSleepingLoops && (!family.hasSleepingReaders || dice.coin());
        gate.hasDueTimes = dice.coin();
        gate.endsByShutDown = family.hasShutDown && dice.coin();
    }
    for (unsigned i = 0; i < loops; ++i) {
        GatePlan& gate = gates[dice.below(static_cast<unsigned>(gates.size()))];
        if (takesAnotherLoop(gate)) ++gate.loops;
    }
    return gates;
}

/// The deeds that fit the gate; those that come often stand there more than once.
std::vector<Deed> deedsFor(const GatePlan& gate, bool hasWanderer) {
    std::vector<Deed> deeds{Deed::Guard, Deed::Guard, Deed::Guard, Deed::Post,
                            Deed::Post,  Deed::News,  Deed::News,  Deed::PostInGuard};
    const bool hasLoop = gate.loops > 0;
    if (hasLoop) deeds.insert(deeds.end(), {Deed::PostAndSee, Deed::PostAndSee});
    if (hasLoop && gate.sleepsBetweenPasses)
        deeds.insert(deeds.end(), {Deed::CallAndSee, Deed::CallAndSee, Deed::Look, Deed::Look});
    if (gate.sleepsBetweenPasses)
        // A step that comes from elsewhere would wait for a reader that sleeps with the gate held.
        deeds.insert(deeds.end(), {Deed::Call, Deed::Stir, Deed::Step, Deed::Step});
    if (hasWanderer) deeds.insert(deeds.end(), {Deed::Move, Deed::Move, Deed::Touch, Deed::Touch});
    if (gate.endsByShutDown) deeds.push_back(Deed::ShutDown);
    return deeds;
}

/// What is posted, written and called is what the gate's loops wait for.
void count(const Task& task, GatePlan& gate) {
    switch (task.deed) {
    case Deed::Post:
    case Deed::PostAndSee:
        ++gate.letters[0];
        break;
    case Deed::PostInGuard:
        ++gate.letters[gate.sleepsBetweenPasses ? 1 : 0];
        break;
    case Deed::News:
        ++gate.news;
        break;
    case Deed::Call:
    case Deed::CallAndSee:
        ++gate.calls;
        break;
    default:
        break;
    }
}
std::vector<Task> makeTasks(Plan& plan, unsigned left, Dice& dice) {
    std::vector<Task> tasks;
    for (; left > 0; --left) {
        const unsigned index = dice.below(static_cast<unsigned>(plan.gates.size()));
        const std::vector<Deed> deeds = deedsFor(plan.gates[index], plan.hasWanderer);
        tasks.push_back({deeds[dice.below(static_cast<unsigned>(deeds.size()))], index});
        count(tasks.back(), plan.gates[index]);
    }
    return tasks;
}

Plan makeDuel(unsigned seed, Dice& dice) {
    constexpr std::array deeds{Deed::CallAndSee, Deed::CallAndSee, Deed::PostAndSee, Deed::Look};
    Plan plan{.seed = seed, .hasWanderer = false, .gates = {{}}, .writers = {}};
    plan.gates.front().loops = 1;
    plan.gates.front().sleepsBetweenPasses = true;
    plan.writers.resize(1 + dice.below(kThreads - 1));
    for (std::vector<Task>& tasks : plan.writers)
        for (unsigned left = 400; left > 0; --left) {
            tasks.push_back({deeds[dice.below(deeds.size())], 0});
            count(tasks.back(), plan.gates.front());
        }
    return plan;
}
} // namespace

Plan makePlan(const Family& family, unsigned seed) {
    Dice dice(seed);
    if (family.isDuel) return makeDuel(seed, dice);
    Plan plan{.seed = seed, .hasWanderer = family.hasWanderer, .gates = {}, .writers = {}};
    const unsigned threads = 2 + dice.below(kThreads - 1);
    const unsigned loops = 1 + dice.below(threads - 1);
    plan.gates = makeGates(family, loops, dice);
    unsigned placed = 0;
    for (const GatePlan& gate : plan.gates)
        placed += gate.loops;
    plan.writers.resize(threads - placed);
    for (std::vector<Task>& tasks : plan.writers)
        tasks = makeTasks(plan, 10 + dice.below(30), dice);
    for (unsigned index = 0; index < plan.gates.size(); ++index)
        if (plan.gates[index].endsByShutDown) plan.writers.front().push_back({Deed::ShutDown, index});
    return plan;
}

} // namespace GateModel
