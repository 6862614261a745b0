// SPDX-License-Identifier: MIT
#include "host/recording/PipeWait.h"

#include "host/ends/RecordingException.h"

#include <poll.h>

#include <cerrno>

namespace Quillmere::Host {

namespace {
/// Milliseconds. A signal ends the sleep at once when it comes to the thread that waits; another thread's, or
/// one that came just before, is seen at the next look.
constexpr int kBetweenLooks = 100;
} // namespace

bool PipeWait::wait(int descriptor, short events) const {
    pollfd look{descriptor, events, 0};
    const int ready = ::poll(&look, 1, kBetweenLooks);
    if (ready > 0) return true;
    if (stop.stop_requested()) throw InterruptedException();
    return ready < 0 && errno != EINTR; // whoever reads or writes next will be told why
}

} // namespace Quillmere::Host
