// SPDX-License-Identifier: MIT
#include "python/extension/Interruptible.h"

#include "python/extension/Lock.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <set>
#include <thread>
#include <utility>

namespace py = pybind11;

namespace Python {

namespace {
constexpr std::chrono::milliseconds kBetweenLooks{50};
/// How long the end of the interpreter waits for work that is to stop.
constexpr std::chrono::seconds kLongestEnd{10};

struct Work {
    std::stop_source stop;
    std::mutex state;
    std::condition_variable hasEnded;
    bool isDone = false;
    std::exception_ptr raised;

    void run(const std::function<void(const std::stop_token&)>& action) {
        std::exception_ptr caught;
        try {
            action(stop.get_token());
        } catch (...) {
            caught = std::current_exception();
        }
        const std::lock_guard lock(state);
        raised = std::move(caught);
        isDone = true;
        hasEnded.notify_all();
    }
    bool waitSo(std::chrono::milliseconds time) {
        std::unique_lock lock(state);
        return hasEnded.wait_for(lock, time, [&] { return isDone; });
    }
};

/// All that is under way.
struct Everything {
    std::mutex mutex;
    std::condition_variable isLess;
    std::set<Work*> works;
};

Everything& everything() {
    static auto& all = *new Everything;
    return all;
}

struct Entry {
    explicit Entry(Work& entered) : work(entered) {
        const std::lock_guard lock(everything().mutex);
        everything().works.insert(&work);
    }
    ~Entry() {
        const std::lock_guard lock(everything().mutex);
        everything().works.erase(&work);
        everything().isLess.notify_all();
    }
    Work& work;
};

/// What the caller's side has to say; nothing while all is well.
std::exception_ptr listen(const std::function<void()>& look) {
    try {
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        if (look) look();
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}
} // namespace

void doInterruptibly(const std::function<void(const std::stop_token& stop)>& work,
                     const std::function<void()>& look) {
    Work own;
    std::exception_ptr objection;
    {
        std::thread thread;
        bool isDone = false;
        {
            const Unlocked unlocked;
            const Entry entry(own);
            thread = std::thread([&] { own.run(work); });
            isDone = own.waitSo(kBetweenLooks);
            if (isDone) thread.join();
        }
        while (!isDone) {
            if (objection == nullptr && (objection = listen(look)) != nullptr) own.stop.request_stop();
            const Unlocked unlocked;
            const Entry entry(own);
            isDone = own.waitSo(kBetweenLooks);
            if (isDone) thread.join();
        }
    }
    if (objection != nullptr) std::rethrow_exception(objection);
    if (own.raised != nullptr) std::rethrow_exception(own.raised);
}

void forgetAllWork() {
    new (&everything()) Everything;
}

void stopAllWork() {
    std::unique_lock lock(everything().mutex);
    for (Work* const work : everything().works)
        work->stop.request_stop();
    everything().isLess.wait_for(lock, kLongestEnd, [] { return everything().works.empty(); });
}

} // namespace Python
