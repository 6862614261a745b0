// SPDX-License-Identifier: MIT
#include "host/recording/WorkThread.h"

#include <utility>

namespace Quillmere::Host {

WorkThread::WorkThread() {
    thread = std::thread([this] { run(); });
}

WorkThread::~WorkThread() {
    {
        const std::lock_guard guard(state);
        isEnding = true;
    }
    changed.notify_one();
    thread.join();
}

void WorkThread::post(std::function<void()> work) {
    {
        const std::lock_guard guard(state);
        waiting.push_back(std::move(work));
    }
    changed.notify_one();
}

void WorkThread::run() {
    std::unique_lock lock(state);
    while (true) {
        changed.wait(lock, [this] { return isEnding || !waiting.empty(); });
        if (waiting.empty()) return;
        const std::function<void()> work = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace Quillmere::Host
