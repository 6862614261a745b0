// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <fstream>
#include <string>
#include <thread>

#include <unistd.h>

namespace Support {

/// Lets one thread wait until another one stands where nothing but somebody else's doing gets it on: the
/// other calls `enter` right before it goes there.
class Standstill {
public:
    /// In the thread that will stand still.
    void enter() { thread = ::gettid(); }
    /// Returns when the thread that entered last sleeps in the kernel, and forgets it.
    void await() {
        while (thread == 0 || !getIsAsleep())
            std::this_thread::yield();
        thread = 0;
    }

private:
    bool getIsAsleep() const {
        std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::string text;
        std::getline(file, text);
        // of the name, which may hold anything; the state is behind it
        const std::size_t end = text.rfind(')');
        return end != std::string::npos && text.compare(end, 3, ") S") == 0;
    }

    std::atomic<pid_t> thread{0};
};

} // namespace Support
