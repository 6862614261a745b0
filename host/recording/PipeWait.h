// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <atomic>

namespace Quillmere::Host {

/// Waits for the other end of a pipe, but not past a wish to stop.
class QUILLMERE_API PipeWait {
public:
    /// From then on a wait raises `InterruptedException` as soon as `flag` is true. `flag` isn't owned and outlives the
    /// waits. [setup]
    void setStop(const std::atomic<bool>& flag) { stop = &flag; }

    /// Sleeps until `descriptor` can be read (`POLLIN`) or written (`POLLOUT`), or its other end is gone, and looks for the
    /// wish to stop ten times a second. False when it has only looked: nothing has come yet.
    bool wait(int descriptor, short events) const;
    /// Sleeps until the next look.
    void pause() const { wait(-1, 0); }

private:
    const std::atomic<bool>* stop = nullptr;
};

} // namespace Quillmere::Host
