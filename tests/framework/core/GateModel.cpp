// SPDX-License-Identifier: MIT
#include "tests/framework/core/GateModel.h"

#include <algorithm>
#include <barrier>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <mutex>
#include <random>
#include <thread>

#include <Poco/Event.h>
#include <Poco/Mutex.h>

using namespace Quillmere::Core;

namespace GateModel {

namespace {
using Guard = Synchronizer::DisablerLocker;
using Step = Synchronizer::StepLocker;
using Clock = Synchronizer::Clock;

/// A round takes milliseconds; one that takes this long hangs.
constexpr std::chrono::seconds kPatience{20};

// The referee's own state is read and written in relaxed order only. It must not order anything between two
// threads: what the gate fails to order is for the thread sanitizer to see, on the plain members.
constexpr auto kRelaxed = std::memory_order_relaxed;

/// Something that threads do in a span of time, counted at both ends. A span may have been open between two
/// looks if more had begun at the second than were over at the first.
struct Spans {
    std::atomic<long> begun{0};
    std::atomic<long> over{0};

    long getOver() const { return over.load(kRelaxed); }
    bool mayHaveBeenOpenSince(long overThen) const { return begun.load(kRelaxed) > overThen; }
};

class Span {
public:
    explicit Span(Spans& someSpans) : spans(someSpans) { spans.begun.fetch_add(1, kRelaxed); }
    ~Span() { spans.over.fetch_add(1, kRelaxed); }
    Span(const Span&) = delete;
    Span& operator=(const Span&) = delete;

private:
    Spans& spans;
};

/// What a buffer strategy is to the gate.
struct Box {
    Poco::FastMutex mutex;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    int letters = 0; ///< under `mutex`, as the next
    long posts = 0;
};

/// Something that a loop is to see, though no lock says that it is there. Each number has one writer, whose
/// plain store orders nothing.
struct Call {
    std::atomic<int> made{0};
    std::atomic<int> seen{0};
};

struct ModelGate {
    explicit ModelGate(const GatePlan& itsPlan) : plan(itsPlan) {
        gate.setSleepsBetweenPasses(plan.sleepsBetweenPasses);
    }

    const GatePlan& plan;
    Synchronizer gate;
    std::array<Box, 2> boxes;

    // No atomics: the gate is their lock.
    long version = 0; ///< raised by whoever holds the gate
    long visits = 0;  ///< of guards
    int news = 0;
    std::array<int, 2> received{};

    std::atomic<unsigned> holder{0};          ///< the actor that has the gate, 0 for none
    std::array<Call, kThreads> calls;         ///< one for each actor
    std::array<std::atomic<long>, 2> taken{}; ///< letters
    std::atomic<long> passes{0};
    std::atomic<bool> isShutDownBegun{false};
    Spans guards;
    Spans stirs;
    Spans signals;
};

/// A block that is moved from layout to layout.
struct Wanderer {
    Synchronizer* getSynchronizer() const { return gate.load(kRelaxed); }

    std::atomic<Synchronizer*> gate{nullptr};
    unsigned where = 0; ///< index of its gate; under that gate, as the next
    long value = 0;
    std::atomic<bool> isInProcess{false};
};

struct World {
    explicit World(const Plan& itsPlan) : plan(itsPlan) {
        for (const GatePlan& gate : plan.gates)
            gates.emplace_back(gate);
        wanderer.gate = &gates.front().gate;
    }

    const Plan& plan;
    std::deque<ModelGate> gates;
    Wanderer wanderer;
    std::mutex complaintMutex;
    std::string complaint; ///< the first
};

/// One thread of the play: what it holds, and what it finds wrong.
class Actor {
public:
    Actor(World& itsWorld, unsigned number)
        : world(itsWorld), me(number), random(world.plan.seed * 8 + number) {}
    virtual ~Actor() = default;
    virtual void act() = 0;

    const std::string& getName() const { return name; }
    /// What this thread is about, for a round that hangs.
    const char* getDoing() const { return doing.load(kRelaxed); }
    void say(const char* what) { doing.store(what, kRelaxed); }

protected:
    /// This thread's word that it has the gate. Made behind the locker and gone before it.
    class Presence {
    public:
        Presence(Actor& itsActor, unsigned itsIndex) : actor(itsActor), index(itsIndex) {
            actor.arrive(index);
        }
        ~Presence() { actor.depart(index); }
        Presence(const Presence&) = delete;
        Presence& operator=(const Presence&) = delete;

    private:
        Actor& actor;
        const unsigned index;
    };

    void check(bool isKept, const char* promise);
    unsigned below(unsigned n) { return std::uniform_int_distribution<unsigned>(0, n - 1)(random); }
    bool coin() { return below(2) == 0; }
    ModelGate& gateAt(unsigned index) { return world.gates[index]; }
    bool has(unsigned index) const { return depth[index] > 0; }

    void arrive(unsigned index);
    void depart(unsigned index);
    void loiter();
    void dwell(unsigned index);
    void stepAgain(unsigned index);
    void giveWay(Step& step, unsigned index);
    bool waitIfEmpty(unsigned index, Box& box);

    World& world;
    const unsigned me; ///< from 1 on
    std::string name;

private:
    std::mt19937 random;
    std::array<unsigned, kGates> depth{}; ///< how often this thread has each gate
    std::atomic<const char*> doing{"nothing yet"};
};

void Actor::check(bool isKept, const char* promise) {
    if (isKept) return;
    const std::lock_guard lock(world.complaintMutex);
    if (world.complaint.empty()) world.complaint = name + ", at " + getDoing() + ": " + promise;
}

void Actor::arrive(unsigned index) {
    if (depth[index]++ > 0)
        return check(gateAt(index).holder.load(kRelaxed) == me, "what was passed again wasn't held");
    check(gateAt(index).holder.exchange(me, kRelaxed) == 0, "two threads are past the same gate");
}

void Actor::depart(unsigned index) {
    check(gateAt(index).holder.load(kRelaxed) == me, "another thread came past a gate that was held");
    if (--depth[index] == 0) gateAt(index).holder.store(0, kRelaxed);
}

/// Lets the others run now and then, so that one seed meets many interleavings.
void Actor::loiter() {
    switch (below(8)) {
    case 0:
        std::this_thread::yield();
        break;
    case 1:
        for (std::atomic<unsigned> left{below(400)}; left > 0; --left) {
        }
        break;
    default:
        break;
    }
}

/// Stays a while inside the gate, where nothing may change but by this thread.
void Actor::dwell(unsigned index) {
    ModelGate& gate = gateAt(index);
    const long before = ++gate.version;
    loiter();
    check(gate.holder.load(kRelaxed) == me, "another thread came past a gate that was held");
    check(gate.version == before, "something changed inside a gate that was held");
}

/// A step by a thread that has the gate already, which is not this step's to give.
void Actor::stepAgain(unsigned index) {
    Step step(gateAt(index).gate);
    const Presence presence(*this, index);
    const long before = gateAt(index).version;
    step.giveWayIfWanted();
    check(gateAt(index).version == before, "an inner step gave an outer holder's gate away");
    dwell(index);
}

void Actor::giveWay(Step& step, unsigned index) {
    ModelGate& gate = gateAt(index);
    const bool isWanted = gate.gate.getIsWanted();
    const long visits = gate.visits;
    depart(index);
    step.giveWayIfWanted();
    arrive(index);
    // A guard that follows a wanderer may find that it has left, and go without a visit.
    if (isWanted && !world.plan.hasWanderer)
        check(gate.visits > visits, "a guard that wanted the gate got no turn at the safe point");
}

/// The first half of a strategy's `read`: whether a letter is there, after a `wait` if there was none.
/// Requires: the box's mutex is locked.
bool Actor::waitIfEmpty(unsigned index, Box& box) {
    if (box.letters > 0) return true;
    ModelGate& gate = gateAt(index);
    const long posts = box.posts;
    const long guardsOver = gate.guards.getOver();
    const long version = gate.version;
    gate.gate.wait(box.mutex, box.event);
    check(!box.mutex.tryLock(), "wait returned without the mutex");
    check(gate.version == version && gate.holder.load(kRelaxed) == me, "a step that slept lost its gate");
    check(gate.plan.sleepsBetweenPasses || box.posts != posts ||
              gate.guards.mayHaveBeenOpenSince(guardsOver) || gate.isShutDownBegun.load(kRelaxed),
          "wait returned without a signal, a guard or the shut-down");
    return box.letters > 0;
}

/// The run loop of a layout.
class Loop final : public Actor {
public:
    Loop(World& itsWorld, unsigned number, unsigned gateIndex)
        : Actor(itsWorld, number), index(gateIndex), own(world.gates[index]) {
        name = "loop of gate " + std::to_string(index);
    }
    void act() override;

private:
    bool makePass();
    void fetch(unsigned box);
    void guardOwn();
    void processWanderer();
    void lookForCalls();
    bool getHasAll() const;
    void takeReasons(bool hasSlept, Clock::time_point due);

    const unsigned index;
    ModelGate& own;
    bool hasMoved = false; ///< something was found in this pass
    int newsSeen = 0;
    int callsSeen = 0;
    long stirsOver = 0; ///< when reasons were taken last, as the next
    long signalsOver = 0;
};

void Loop::act() {
    bool hasSlept = false;
    Clock::time_point due = Clock::time_point::max();
    for (;;) {
        if (own.plan.sleepsBetweenPasses) takeReasons(hasSlept, due);
        own.passes.fetch_add(1, kRelaxed);
        if (makePass()) return;
        loiter();
        hasSlept = own.plan.sleepsBetweenPasses && !hasMoved;
        if (!hasSlept) continue;
        say("sleep");
        due = own.plan.hasDueTimes && coin() ? Clock::now() + std::chrono::microseconds(below(300))
                                             : Clock::time_point::max();
        own.gate.sleep(due);
    }
}

void Loop::takeReasons(bool hasSlept, Clock::time_point due) {
    say("takeReasons");
    const bool isDue = Clock::now() >= due;
    const long stirsOverNow = own.stirs.getOver();
    const long signalsOverNow = own.signals.getOver();
    const unsigned reasons = own.gate.takeReasons();
    check(!hasSlept || isDue || reasons != 0 || own.isShutDownBegun.load(kRelaxed),
          "sleep ended without a reason");
    check((reasons & Synchronizer::kStir) == 0 || own.stirs.mayHaveBeenOpenSince(stirsOver),
          "a stir was told that nobody made");
    check((reasons & Synchronizer::kSignal) == 0 || own.signals.mayHaveBeenOpenSince(signalsOver),
          "a signal was told that nobody made");
    stirsOver = stirsOverNow;
    signalsOver = signalsOverNow;
}

/// One pass over two blocks; whether everything that was to come has come.
bool Loop::makePass() {
    say("enter a step");
    Step step(own.gate);
    const Presence presence(*this, index);
    hasMoved = own.news != newsSeen;
    newsSeen = own.news;
    lookForCalls();
    const bool hasTwoBoxes = own.plan.sleepsBetweenPasses;
    for (unsigned block = 0; block < 2; ++block) {
        say("be inside a step");
        dwell(index);
        if (coin()) guardOwn();
        if (below(4) == 0) stepAgain(index);
        if (world.plan.hasWanderer) processWanderer();
        if (getHasAll()) return true;
        if (block == 0 || hasTwoBoxes) fetch(block);
        if (own.gate.getIsShutDown()) return true;
        dwell(index);
        say("give way");
        giveWay(step, index);
    }
    return false;
}

void Loop::lookForCalls() {
    for (Call& call : own.calls) {
        const int made = call.made.load(kRelaxed);
        const int fresh = made - call.seen.load(kRelaxed);
        if (fresh == 0) continue;
        call.seen.store(made, kRelaxed);
        callsSeen += fresh;
        hasMoved = true;
    }
}

bool Loop::getHasAll() const {
    return !own.plan.endsByShutDown && own.received == own.plan.letters && own.news == own.plan.news &&
           callsSeen == own.plan.calls;
}

void Loop::fetch(unsigned box) {
    say("wait for a letter");
    const Poco::FastMutex::ScopedLock lock(own.boxes[box].mutex);
    if (!waitIfEmpty(index, own.boxes[box])) return;
    --own.boxes[box].letters;
    ++own.received[box];
    own.taken[box].fetch_add(1, kRelaxed);
    hasMoved = true;
}

/// What a step does to read a setting of its own block.
void Loop::guardOwn() {
    const bool isFirst = coin();
    Synchronizer* const other = coin() ? &own.gate : nullptr;
    const Guard guard(isFirst ? &own.gate : other, isFirst ? other : &own.gate);
    const Presence presence(*this, index);
    dwell(index);
}

void Loop::processWanderer() {
    Wanderer& wanderer = world.wanderer;
    if (wanderer.getSynchronizer() != &own.gate) return;
    check(!wanderer.isInProcess.exchange(true, kRelaxed), "the step of a block was entered twice");
    {
        const Synchronizer::SubjectLocker<Wanderer> guard(wanderer);
        ++wanderer.value;
        dwell(index);
    }
    check(wanderer.where == index, "a block was moved in the middle of its step");
    wanderer.isInProcess.store(false, kRelaxed);
}

/// A thread from outside the layouts.
class Writer final : public Actor {
public:
    Writer(World& itsWorld, unsigned number, const std::vector<Task>& itsTasks)
        : Actor(itsWorld, number), tasks(itsTasks) {
        name = "writer " + std::to_string(number);
    }
    void act() override;

private:
    void perform(const Task& task);
    template <class Inside>
    void guard(int first, int second, Inside inside);
    void guardAtRandom(int level);
    void insideGuard(int level);
    long post(unsigned index, unsigned box);
    template <class Condition>
    void seeThat(unsigned index, Condition isMet);
    void stir(unsigned index);
    int call(unsigned index);
    void move(unsigned index);
    void touch();
    void step(unsigned index);
    void look(unsigned index);

    static constexpr int kNone = -1;
    int someGate(bool isHeld);
    int someOtherGate(unsigned index) {
        return static_cast<int>((index + 1 + below(2)) % static_cast<unsigned>(world.gates.size()));
    }

    const std::vector<Task>& tasks;
};

void Writer::act() {
    for (const Task& task : tasks) {
        perform(task);
        loiter();
    }
}

void Writer::perform(const Task& task) {
    ModelGate& gate = gateAt(task.gate);
    const int index = static_cast<int>(task.gate);
    switch (task.deed) {
    case Deed::Guard:
        return guardAtRandom(0);
    case Deed::Post:
        post(task.gate, 0);
        return;
    case Deed::PostAndSee: {
        const long number = post(task.gate, 0);
        return seeThat(task.gate, [&] { return gate.taken[0].load(kRelaxed) >= number; });
    }
    case Deed::PostInGuard:
        return guard(someOtherGate(task.gate), index,
                     [&] { post(task.gate, gate.plan.sleepsBetweenPasses ? 1 : 0); });
    case Deed::News:
        guard(index, kNone, [&] { ++gate.news; });
        return stir(task.gate);
    case Deed::Call:
        call(task.gate);
        return;
    case Deed::CallAndSee: {
        const int number = call(task.gate);
        return seeThat(task.gate, [&] { return gate.calls[me - 1].seen.load(kRelaxed) == number; });
    }
    case Deed::Stir:
        return stir(task.gate);
    case Deed::Move:
        return move(task.gate);
    case Deed::Touch:
        return touch();
    case Deed::Step:
        return step(task.gate);
    case Deed::Look:
        return look(task.gate);
    case Deed::ShutDown:
        say("shut down");
        gate.isShutDownBegun.store(true, kRelaxed);
        gate.gate.shutDown();
        return check(gate.gate.getIsShutDown(), "a gate that is shut down says it isn't");
    }
}

template <class Inside>
void Writer::guard(int first, int second, Inside inside) {
    const auto gateOf = [&](int i) { return i == kNone ? nullptr : &gateAt(static_cast<unsigned>(i)); };
    const auto lockOf = [&](int i) { return i == kNone ? nullptr : &gateOf(i)->gate; };
    std::deque<Span> spans;
    for (const int i : {first, second})
        if (i != kNone) spans.emplace_back(gateOf(i)->guards);
    say("enter a guard");
    const Guard held(lockOf(first), lockOf(second));
    say("be inside a guard");
    std::deque<Presence> presences;
    for (const int i : {first, second}) {
        if (i == kNone) continue;
        presences.emplace_back(*this, static_cast<unsigned>(i));
        ++gateOf(i)->visits;
        dwell(static_cast<unsigned>(i));
    }
    inside();
    presences.clear();
}

int Writer::someGate(bool isHeld) {
    const int index = static_cast<int>(below(static_cast<unsigned>(world.gates.size()) + 1)) - 1;
    return index != kNone && isHeld && !has(static_cast<unsigned>(index)) ? kNone : index;
}

/// Who has a gate takes no further one, but may take what it has once more.
void Writer::guardAtRandom(int level) {
    const int first = someGate(level > 0);
    const int second = someGate(level > 0);
    guard(first, second, [&] { insideGuard(level); });
}

void Writer::insideGuard(int level) {
    for (unsigned index = 0; index < world.gates.size(); ++index) {
        if (!has(index)) continue;
        dwell(index);
        if (below(3) == 0) stepAgain(index);
        if (below(3) == 0) {
            say("wait inside a guard of its own");
            Box& box = gateAt(index).boxes[0];
            const Poco::FastMutex::ScopedLock lock(box.mutex);
            waitIfEmpty(index, box);
        }
    }
    if (level < 2 && coin()) guardAtRandom(level + 1);
}

/// Nothing but what this thread has done may be what the loop needs in order to wake.
template <class Condition>
void Writer::seeThat(unsigned index, Condition isMet) {
    say("see what the loop does");
    while (!isMet() && !gateAt(index).isShutDownBegun.load(kRelaxed))
        std::this_thread::yield();
}

/// Returns the letter's number.
long Writer::post(unsigned index, unsigned box) {
    say("post a letter");
    ModelGate& gate = gateAt(index);
    const Span span(gate.signals);
    const Poco::FastMutex::ScopedLock lock(gate.boxes[box].mutex);
    ++gate.boxes[box].letters;
    ++gate.boxes[box].posts;
    gate.gate.signal(gate.boxes[box].event);
    return gate.boxes[box].posts;
}

void Writer::stir(unsigned index) {
    say("stir");
    const Span span(gateAt(index).stirs);
    gateAt(index).gate.stir();
}

/// Returns the call's number.
int Writer::call(unsigned index) {
    Call& mine = gateAt(index).calls[me - 1];
    const int number = mine.made.load(kRelaxed) + 1;
    const Span span(gateAt(index).stirs);
    mine.made.store(number, kRelaxed);
    say("stir behind a call");
    gateAt(index).gate.stir();
    return number;
}

void Writer::move(unsigned index) {
    const int other = someOtherGate(index);
    guard(static_cast<int>(index), other, [&] {
        Wanderer& wanderer = world.wanderer;
        const unsigned destination = static_cast<unsigned>(other);
        if (wanderer.getSynchronizer() != &gateAt(index).gate) return;
        check(!wanderer.isInProcess.load(kRelaxed), "a step was under way while a guard was held");
        wanderer.where = destination;
        wanderer.gate.store(&gateAt(destination).gate, kRelaxed);
    });
}

void Writer::touch() {
    std::deque<Span> spans; // it may pass through any gate on the wanderer's track
    for (ModelGate& gate : world.gates)
        spans.emplace_back(gate.guards);
    Wanderer& wanderer = world.wanderer;
    say("follow the wanderer");
    const Synchronizer::SubjectLocker<Wanderer> held(wanderer);
    say("touch the wanderer");
    const unsigned index = wanderer.where;
    const Presence presence(*this, index);
    check(wanderer.getSynchronizer() == &gateAt(index).gate, "the wanderer is guarded where it isn't");
    check(!wanderer.isInProcess.load(kRelaxed), "a step was under way while a guard was held");
    ++wanderer.value;
    ++gateAt(index).visits;
    dwell(index);
}

void Writer::step(unsigned index) {
    say("enter a step from elsewhere");
    Step held(gateAt(index).gate);
    const Presence presence(*this, index);
    dwell(index);
    giveWay(held, index);
    dwell(index);
}

/// Two looks that find the same sleep prove that the loop slept all the time between them. The second look is
/// repeated until the loop is in another sleep, since its way there is the moment at which a look could be
/// misled.
void Writer::look(unsigned index) {
    say("look at a loop");
    ModelGate& gate = gateAt(index);
    const bool wasAsleep = gate.gate.getIsAsleep();
    const auto sleeps = gate.gate.getSleeps();
    const long passes = gate.passes.load(kRelaxed);
    if (!wasAsleep) return;
    for (unsigned left = 2000; left > 0 && gate.gate.getSleeps() == sleeps; --left) {
        const long passesNow = gate.passes.load(kRelaxed);
        if (gate.gate.getIsAsleep() && gate.gate.getSleeps() == sleeps)
            check(passes == passesNow, "a loop made a pass in one and the same sleep");
    }
}

/// Ends the program when a round doesn't end: its threads can't be called back.
class Watch {
public:
    Watch(World& itsWorld, const std::deque<std::unique_ptr<Actor>>& itsActors)
        : world(itsWorld), actors(itsActors), thread([this] { stand(); }) {}
    ~Watch() {
        {
            const std::lock_guard lock(mutex);
            isOver = true;
        }
        mayEnd.notify_one();
        thread.join();
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

private:
    void stand() {
        std::unique_lock lock(mutex);
        if (mayEnd.wait_for(lock, kPatience, [this] { return isOver; })) return;
        std::cerr << "The round with seed " << world.plan.seed << " hangs:\n";
        for (const auto& actor : actors)
            std::cerr << "  " << actor->getName() << ", at: " << actor->getDoing() << '\n';
        const std::lock_guard complaintLock(world.complaintMutex);
        std::cerr << "First complaint: " << (world.complaint.empty() ? "none" : world.complaint) << '\n';
        std::abort();
    }

    World& world;
    const std::deque<std::unique_ptr<Actor>>& actors;
    std::mutex mutex;
    std::condition_variable mayEnd;
    bool isOver = false;
    std::thread thread;
};

std::deque<std::unique_ptr<Actor>> castFor(World& world) {
    std::deque<std::unique_ptr<Actor>> actors;
    const auto number = [&] { return static_cast<unsigned>(actors.size()) + 1; };
    for (unsigned index = 0; index < world.gates.size(); ++index)
        for (unsigned loop = 0; loop < world.plan.gates[index].loops; ++loop)
            actors.push_back(std::make_unique<Loop>(world, number(), index));
    for (const std::vector<Task>& tasks : world.plan.writers)
        actors.push_back(std::make_unique<Writer>(world, number(), tasks));
    return actors;
}
} // namespace

std::string play(const Plan& plan) {
    World world(plan);
    const std::deque<std::unique_ptr<Actor>> actors = castFor(world);
    std::barrier start(static_cast<std::ptrdiff_t>(actors.size()));
    std::deque<std::thread> threads;
    const Watch watch(world, actors);
    for (const auto& actor : actors)
        threads.emplace_back([&] {
            start.arrive_and_wait();
            actor->act();
            actor->say("its end");
        });
    for (std::thread& thread : threads)
        thread.join();
    for (ModelGate& gate : world.gates)
        if (gate.gate.getIsWanted() || gate.holder.load(kRelaxed) != 0)
            return "a gate is held or wanted when all are gone";
    return world.complaint;
}

} // namespace GateModel
