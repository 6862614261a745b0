// SPDX-License-Identifier: MIT
#include "python/extension/LiveHandle.h"

#include "python/extension/Errors.h"
#include "python/extension/Lock.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
using Milliseconds = std::chrono::milliseconds;
constexpr Milliseconds kBetweenLooks{50};
/// How long the end of the interpreter waits for a run to end in order.
constexpr Milliseconds kLongestEnd{10'000};

struct Entry {
    std::weak_ptr<LiveCore> core;
    pid_t process;
};
/// Under the interpreter's lock.
std::vector<Entry>& entries() {
    static auto& all = *new std::vector<Entry>;
    return all;
}
} // namespace

LiveCore::LiveCore(Job job, const LiveOptions& options, std::shared_ptr<RunEnds> runEnds)
    : ends(std::move(runEnds)), callbacks(std::make_shared<CallbackThread>()) {
    const Setup setup;
    run = std::make_unique<LiveRun>(std::move(job), options);
}

/// Without the interpreter's lock, since it waits for threads; it is the last that knows of the run.
LiveCore::~LiveCore() {
    closeAll();
    const Unlocked unlocked;
    callbacks->close();
    const std::lock_guard guard(getSetupMutex());
    run.reset();
}

void LiveCore::start() {
    const Unlocked unlocked;
    run->start();
}

std::shared_ptr<Subscription> LiveCore::observe(const std::string& pattern, py::object callback) {
    auto subscription = std::make_shared<Subscription>();
    subscription->callback = std::move(callback);
    callbacks->start();
    subscriptions.push_back(subscription);
    const Unlocked unlocked;
    const std::lock_guard guard(subscription->watching);
    // The watch outlives neither its subscription nor the thread that it tells.
    subscription->watch = run->getSettings().observe(
        pattern, [told = std::weak_ptr(subscription), thread = callbacks](const SettingState& state) {
            if (const auto alive = told.lock()) thread->tell(alive, state);
        });
    return subscription;
}

void LiveCore::close(Subscription& subscription) {
    const py::object callback = std::exchange(subscription.callback, py::object());
    {
        const Unlocked unlocked;
        {
            const std::lock_guard guard(subscription.watching);
            subscription.watch.reset();
        }
        callbacks->waitFor(subscription);
    }
    std::erase_if(subscriptions, [&](const auto& other) { return other.get() == &subscription; });
}

void LiveCore::closeAll() {
    while (!subscriptions.empty()) {
        const std::shared_ptr<Subscription> last = subscriptions.back();
        close(*last);
    }
}

void LiveCore::endFeeds() {
    for (const auto& [id, feed] : ends->getFeeds())
        feed->end();
}

/// Without the interpreter's lock; true when all that was fed is on its way, or the run has ended.
bool LiveCore::waitForFeeds(Milliseconds time) {
    const auto& feeds = ends->getFeeds();
    const auto until = std::chrono::steady_clock::now() + time;
    for (;;) {
        if (std::all_of(feeds.begin(), feeds.end(),
                        [](const auto& feed) { return feed.second->getIsDone(); }))
            return true;
        if (run->waitFor(Milliseconds(1))) return true;
        if (std::chrono::steady_clock::now() >= until) return false;
    }
}

void LiveCore::stop(std::optional<double> seconds) {
    const auto begin = std::chrono::steady_clock::now();
    for (bool isOnItsWay = false; !isOnItsWay;) {
        {
            const Unlocked unlocked;
            endFeeds();
            isOnItsWay = waitForFeeds(kBetweenLooks);
        }
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        const auto passed = std::chrono::steady_clock::now() - begin;
        if (seconds && std::chrono::duration<double>(passed).count() > *seconds) break;
    }
    const Unlocked unlocked;
    run->stop();
}

bool LiveCore::wait(std::optional<double> seconds) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (;;) {
        Milliseconds slice = kBetweenLooks;
        if (seconds) {
            const double left = *seconds - std::chrono::duration<double>(Clock::now() - begin).count();
            const double most = std::min(left, 1.0); // whatever a caller gives, also infinity
            slice = std::min(slice, Milliseconds(left > 0.0 ? static_cast<long>(most * 1e3) + 1 : 0L));
        }
        bool hasEnded = false;
        {
            const Unlocked unlocked;
            hasEnded = run->waitFor(slice);
        }
        if (hasEnded) return true;
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (slice.count() == 0) return false;
    }
}

void LiveCore::endForGood() {
    {
        const Unlocked unlocked;
        if (!run->waitFor(Milliseconds(0))) {
            endFeeds();
            (void)waitForFeeds(kLongestEnd);
            run->stop();
            if (!run->waitFor(kLongestEnd)) run->interrupt("the interpreter exits");
            run->waitFor(kLongestEnd);
        }
    }
    closeAll();
    const Unlocked unlocked;
    callbacks->close();
}

LiveHandle::LiveHandle(Job job, const LiveOptions& options, std::shared_ptr<RunEnds> ends)
    : core(std::make_shared<LiveCore>(std::move(job), options, std::move(ends))), process(::getpid()) {
    std::erase_if(entries(), [](const Entry& entry) { return entry.core.expired(); });
    entries().push_back({core, process});
    core->start();
}

LiveHandle::~LiveHandle() {
    // In another process there is nothing to end: its threads aren't there.
    // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): a process without sixteen bytes may end here
    if (::getpid() != process) (void)new std::shared_ptr<LiveCore>(std::move(core));
}

LiveCore& LiveHandle::get() const {
    if (::getpid() != process)
        refuse("a live run of the process " + std::to_string(process) + ", from which this one was forked",
               "one that was started in this process");
    return *core;
}

void endAllLiveRuns() {
    for (const Entry& entry : std::exchange(entries(), {}))
        if (const auto core = entry.core.lock(); core != nullptr) {
            if (entry.process == ::getpid())
                core->endForGood();
            else
                (void)new std::shared_ptr<LiveCore>(core);
        }
}

} // namespace Python
