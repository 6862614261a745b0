// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <stop_token>

namespace Quillmere::Host {

/// Waits for the other end of a pipe, but not past a wish to stop.
class QUILLMERE_API PipeWait {
public:
    /// From then on a wait raises `InterruptedException` as soon as a stop is requested. [setup]
    void setStop(const std::stop_token& token) { stop = token; }

    /// Sleeps until `descriptor` can be read (`POLLIN`) or written (`POLLOUT`), or its other end is gone, and
    /// looks for the wish to stop ten times a second. False when it has only looked: nothing has come yet.
    bool wait(int descriptor, short events) const;
    /// Sleeps until the next look.
    void pause() const { wait(-1, 0); }

private:
    std::stop_token stop;
};

} // namespace Quillmere::Host
