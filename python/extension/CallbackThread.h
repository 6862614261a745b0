// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/LiveSettings.h"

#include <pybind11/pybind11.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

namespace Python {

/// Somebody who wants to hear of settings. What Python owns of it is touched under the interpreter's lock.
struct Subscription {
    pybind11::object callback; ///< Null when it is closed.
    std::mutex watching;
    std::unique_ptr<Quillmere::Host::SettingWatch> watch; ///< Under `watching`.
    std::atomic<std::uint64_t> missed{0};
};

/// Tells Python of settings that have changed, in a thread of its own, so that no step ever waits for the
/// interpreter's lock, and no callback holds a gate.
class CallbackThread : public std::enable_shared_from_this<CallbackThread> {
public:
    CallbackThread() = default;
    /// Requires: closed.
    ~CallbackThread();
    CallbackThread(const CallbackThread&) = delete;
    CallbackThread& operator=(const CallbackThread&) = delete;

    /// Starts the thread if it isn't there yet; it keeps this alive until it ends. Raises
    /// `std::system_error`.
    void start();
    /// Puts a change into the queue; the oldest is lost when thousands wait. [any, guarded]
    void tell(const std::shared_ptr<Subscription>& subscription, const Quillmere::Host::SettingState& state);
    /// Returns when no callback of that subscription is under way, unless it is called by one. Requires: not
    /// the interpreter's lock.
    void waitFor(const Subscription& subscription);
    /// Ends the thread; what waits isn't told. Requires: not the interpreter's lock.
    void close();

private:
    struct Change {
        std::shared_ptr<Subscription> subscription;
        Quillmere::Host::SettingState state;
    };
    static constexpr std::size_t kMostWaiting = 4096;

    void run();

    std::mutex mutex;
    std::condition_variable hasChanged;
    std::deque<Change> changes;
    const Subscription* current = nullptr; ///< Whose callback is under way.
    bool isClosing = false;
    std::thread thread;
};

/// A setting, as the stub has it.
pybind11::dict settingOf(const Quillmere::Host::SettingState& state);

} // namespace Python
