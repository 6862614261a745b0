// SPDX-License-Identifier: MIT
#pragma once

#include <stop_token>
#include <thread>

namespace Cli {

/// Turns the signals that end a program into the wish to stop a run. A second one ends the program at once.
/// One at a time.
class StopSignals {
public:
    /// From now on the signals are caught. Raises `std::system_error` when the system has no thread or
    /// descriptor left.
    StopSignals();
    /// From then on a first signal does nothing: what is left is to tell how the run went.
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Stops when the first signal has come.
    std::stop_token getToken() const { return source.get_token(); }

private:
    void watch();

    std::stop_source source;
    std::thread watcher; ///< Requests the stop, which a handler mustn't.
};

} // namespace Cli
