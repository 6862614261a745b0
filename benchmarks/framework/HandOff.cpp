// SPDX-License-Identifier: MIT
// What it costs to hand a 1-by-3 sample from one thread to another that sleeps, and one back: through a
// locked link alone, and through two layouts with a block in each; beside a mutex and an event that hand over
// the same bytes. One thread a core, and both sides of each pair do the same in the same order.
#include "benchmarks/support/Pair.h"
#include "framework/Quillmere.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>

#include <Poco/Event.h>
#include <Poco/Mutex.h>

using namespace Quillmere::Core;

namespace {

/// Keeps the calling thread on one core, and gives it back its others at the end.
class OnCore {
public:
    explicit OnCore(unsigned number) {
        pthread_getaffinity_np(pthread_self(), sizeof former, &former);
        const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(number % cores, &one);
        pthread_setaffinity_np(pthread_self(), sizeof one, &one);
    }
    ~OnCore() { pthread_setaffinity_np(pthread_self(), sizeof former, &former); }
    OnCore(const OnCore&) = delete;
    OnCore& operator=(const OnCore&) = delete;

private:
    cpu_set_t former{};
};

/// Payload and time stamp; a negative stamp ends the other thread.
struct Bytes {
    std::array<double, 3> value{};
    double timeStamp = 0.0;
};

/// One way of a bare hand-off: a ring that drops its oldest when it is full, a mutex around it, an event.
class BareWay {
public:
    explicit BareWay(std::size_t capacity) : ring(capacity) {}

    void send(const Bytes& bytes) {
        {
            const Poco::FastMutex::ScopedLock lock(mutex);
            if (count == ring.size()) {
                first = next(first, 1);
                --count;
            }
            ring[next(first, count)] = bytes;
            ++count;
        }
        event.set();
    }
    void receive(Bytes& bytes) {
        while (!take(bytes))
            event.wait();
    }

private:
    std::size_t next(std::size_t from, std::size_t by) const {
        return from + by < ring.size() ? from + by : from + by - ring.size();
    }
    bool take(Bytes& bytes) {
        const Poco::FastMutex::ScopedLock lock(mutex);
        if (count == 0) return false;
        bytes = ring[first];
        first = next(first, 1);
        --count;
        return true;
    }

    Poco::FastMutex mutex;
    Poco::Event event{Poco::Event::EVENT_AUTORESET};
    std::vector<Bytes> ring;
    std::size_t first = 0;
    std::size_t count = 0;
};

/// The same over a locked link.
template <template <class> class Buffer>
class LinkWay {
public:
    explicit LinkWay(std::size_t capacity) : link(static_cast<std::uint32_t>(capacity), &readersGate) {
        sample.value = MatrixXd::Zero(1, 3);
    }

    void send(const Bytes& bytes) {
        std::memcpy(sample.value.data(), bytes.value.data(), sizeof bytes.value);
        sample.timeStamp = bytes.timeStamp;
        link.write(sample);
    }
    void receive(Bytes& bytes) {
        Sample* found = nullptr;
        while (!link.read(found)) {
        }
        std::memcpy(bytes.value.data(), found->value.data(), sizeof bytes.value);
        bytes.timeStamp = found->timeStamp;
    }

private:
    Sample sample;
    Synchronizer readersGate;
    SynchronizedBufferStrategy<Sample, Buffer> link;
};

/// Sent and received by one thread, so that nobody sleeps: what is left when no core has to be woken.
template <class Way>
void awake(benchmark::State& run) {
    Way way(1);
    Bytes bytes{{1.0, 2.0, 3.0}, 0.0};
    double sent = 0.0;
    for (auto _ : run) {
        bytes.timeStamp = ++sent;
        way.send(bytes);
        way.receive(bytes);
    }
    if (bytes.timeStamp != sent) run.SkipWithError("another sample was received than was sent");
}

/// `burst` samples there, and when all have arrived one back.
template <class Way>
void thereAndBack(benchmark::State& run, std::size_t burst) {
    const OnCore core(0);
    Way there(burst);
    Way back(1);
    std::thread echo([&] {
        const OnCore other(1);
        for (Bytes bytes;;) {
            for (std::size_t i = 0; i < burst; ++i)
                there.receive(bytes);
            if (bytes.timeStamp < 0.0) return;
            back.send(bytes);
        }
    });
    Bytes bytes{{1.0, 2.0, 3.0}, 0.0};
    double sent = 0.0;
    for (auto _ : run) {
        for (std::size_t i = 0; i < burst; ++i) {
            bytes.timeStamp = ++sent;
            there.send(bytes);
        }
        back.receive(bytes);
    }
    if (bytes.timeStamp != sent) run.SkipWithError("another sample came back than was sent");
    bytes.timeStamp = -1.0;
    for (std::size_t i = 0; i < burst; ++i)
        there.send(bytes);
    echo.join();
}

/// Sends on what comes in.
class Echo final : public Filter {
public:
    explicit Echo(const std::string& name) : Filter(name, true), in("in", this), out("out", this) {
        out.data.value = MatrixXd::Zero(1, 3);
    }
    void process() override {
        if (!in.hasData()) return;
        copySample(out.data.value, in.take());
        ++taken;
        if (isSendingOn) out.send(in.getTimeStamp());
    }
    const char* getTypeName() const override { return "Echo"; }

    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    bool isSendingOn = true;
    double taken = 0.0;
};

/// One pass, and if nothing came, a sleep until something does: in the pass itself where readers sleep.
void turn(LayoutManager& layout, const Echo& block, bool sleepsBetweenPasses) {
    Synchronizer& gate = layout.getSynchronizer();
    const double before = block.taken;
    if (sleepsBetweenPasses) gate.takeReasons();
    layout.runStep();
    if (sleepsBetweenPasses && block.taken == before) gate.sleep(Synchronizer::Clock::time_point::max());
}

void betweenLayouts(benchmark::State& run, bool sleepsBetweenPasses) {
    const OnCore core(0);
    LayoutManager left("left");
    LayoutManager right("right");
    Echo here("here");
    Echo there("there");
    here.isSendingOn = false;
    left.add(here);
    right.add(there);
    here.out.attach(there.in, false);
    there.out.attach(here.in, false);
    for (LayoutManager* const layout : {&left, &right})
        layout->getSynchronizer().setSleepsBetweenPasses(sleepsBetweenPasses);
    std::thread loop([&] {
        const OnCore other(1);
        while (!right.getSynchronizer().getIsShutDown())
            turn(right, there, sleepsBetweenPasses);
    });
    double sent = 0.0;
    for (auto _ : run) {
        here.out.send(++sent);
        while (here.taken < sent)
            turn(left, here, sleepsBetweenPasses);
    }
    if (here.in.getTimeStamp() != sent) run.SkipWithError("another sample came back than was sent");
    right.getSynchronizer().shutDown();
    loop.join();
}

void bareOne(benchmark::State& run) {
    thereAndBack<BareWay>(run, 1);
}

const Bench::Suite suite([] {
    constexpr std::size_t kBurst = 16;
    const auto enter = [](const char* name, Bench::Body bare, Bench::Body ours, double goal) {
        Bench::enter({name, std::move(bare), std::move(ours), goal, Bench::Time::OfWall});
    };
    Bench::enter({.name = "locked link, nobody asleep",
                  .bare = awake<BareWay>,
                  .ours = awake<LinkWay<SingleValueBuffer>>,
                  .goal = 1.3});
    enter(
        "locked link, one slot", bareOne,
        [](benchmark::State& run) { thereAndBack<LinkWay<SingleValueBuffer>>(run, 1); }, 1.3);
    enter(
        "locked link, 16 in a row", [](benchmark::State& run) { thereAndBack<BareWay>(run, kBurst); },
        [](benchmark::State& run) { thereAndBack<LinkWay<FifoBuffer>>(run, kBurst); }, 1.3);
    enter(
        "layouts that sleep in readers", bareOne, [](benchmark::State& run) { betweenLayouts(run, false); },
        1.3);
    enter(
        "layouts that sleep between passes", bareOne,
        [](benchmark::State& run) { betweenLayouts(run, true); }, 2.0);
});

} // namespace
