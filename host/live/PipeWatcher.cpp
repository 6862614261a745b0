// SPDX-License-Identifier: MIT
#include "host/live/PipeWatcher.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace Quillmere::Host {

namespace {
[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}
} // namespace

PipeWatcher::~PipeWatcher() {
    stop();
}

void PipeWatcher::start() {
    waiting = ::epoll_create1(EPOLL_CLOEXEC);
    stopping = ::eventfd(0, EFD_CLOEXEC);
    if (waiting < 0 || stopping < 0) fail("pipes cannot be watched");
    epoll_event event{EPOLLIN, {.ptr = nullptr}};
    if (::epoll_ctl(waiting, EPOLL_CTL_ADD, stopping, &event) != 0) fail("pipes cannot be watched");
    thread = std::thread([this] { run(); });
}

void PipeWatcher::watch(int descriptor, Core::Synchronizer& gate) {
    epoll_event event{EPOLLIN | EPOLLONESHOT, {.ptr = &gate}};
    if (::epoll_ctl(waiting, EPOLL_CTL_MOD, descriptor, &event) == 0) return;
    if (errno != ENOENT || ::epoll_ctl(waiting, EPOLL_CTL_ADD, descriptor, &event) != 0)
        fail("a pipe cannot be watched");
}

/// Nothing of what it calls raises.
void PipeWatcher::run() const noexcept {
    for (;;) {
        epoll_event event{};
        if (::epoll_wait(waiting, &event, 1, -1) <= 0) continue;
        if (event.data.ptr == nullptr) return;
        static_cast<Core::Synchronizer*>(event.data.ptr)->stir();
    }
}

void PipeWatcher::stop() {
    if (thread.joinable()) {
        const std::uint64_t one = 1;
        while (::write(stopping, &one, sizeof one) < 0 && errno == EINTR) {
        }
        thread.join();
    }
    for (int* const descriptor : {&waiting, &stopping}) {
        if (*descriptor >= 0) ::close(*descriptor);
        *descriptor = -1;
    }
}

} // namespace Quillmere::Host
