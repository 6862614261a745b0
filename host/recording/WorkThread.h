// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace Quillmere::Host {

/// A thread that does what it is handed, one after the other. Many may hand over.
class QUILLMERE_API WorkThread {
public:
    WorkThread();
    /// Does everything first that it has been handed.
    ~WorkThread();
    WorkThread(const WorkThread&) = delete;
    WorkThread& operator=(const WorkThread&) = delete;

    /// Requires: `work` raises nothing. [any]
    void post(std::function<void()> work);

private:
    void run();

    std::mutex state;
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    bool isEnding = false;
    std::thread thread;
};

} // namespace Quillmere::Host
