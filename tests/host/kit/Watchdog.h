// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace Support {

/// Ends the program when something takes longer than it lives: out of a dead lock there is no other way.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds limit) : thread([this, limit] { watch(limit); }) {}
    ~Watchdog() {
        {
            const std::lock_guard lock(mutex);
            isDone = true;
        }
        done.notify_all();
        thread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void watch(std::chrono::seconds limit) {
        std::unique_lock lock(mutex);
        if (done.wait_for(lock, limit, [this] { return isDone; })) return;
        std::fprintf(stderr, "this has not ended after %lld s\n", static_cast<long long>(limit.count()));
        std::abort();
    }

    std::mutex mutex;
    std::condition_variable done;
    bool isDone = false;
    std::thread thread;
};

} // namespace Support
