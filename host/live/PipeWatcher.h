// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Synchronizer.h"

#include <thread>

namespace Quillmere::Host {

/// Wakes layouts whose sources wait for who writes a pipe: one thread that sleeps until any of the pipes has
/// something.
class QUILLMERE_API PipeWatcher {
public:
    PipeWatcher() = default;
    ~PipeWatcher();
    PipeWatcher(const PipeWatcher&) = delete;
    PipeWatcher& operator=(const PipeWatcher&) = delete;

    /// Starts the thread. Raises `std::system_error`. [setup]
    void start();
    /// Stirs `gate` once when `descriptor` has something to read or its writer is gone; at once if that is so
    /// already. Of several gates that wait for one descriptor the last is stirred. `gate` is not owned and
    /// outlives the watcher's thread. Raises `std::system_error`. [any]
    void watch(int descriptor, Core::Synchronizer& gate);
    /// Ends the thread. [setup]
    void stop();

private:
    void run() const noexcept;

    int waiting = -1;  ///< The epoll instance.
    int stopping = -1; ///< An event that ends the thread.
    std::thread thread;
};

} // namespace Quillmere::Host
