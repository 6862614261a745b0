// SPDX-License-Identifier: MIT
#include "cli/StopSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>

namespace Cli {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> hasCome{false}; ///< A signal; else the watcher is woken since the run is over.
std::atomic<int> bell{-1};        ///< What the watcher waits on.
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free,
              "a signal handler may touch only what needs no lock");

void ring() {
    constexpr std::uint64_t kOnce = 1;
    // A bell that has rung more often than it can count has been heard.
    [[maybe_unused]] const ssize_t written = ::write(bell, &kOnce, sizeof kOnce);
}

void onSignal(int) {
    const int before = errno;
    hasCome = true;
    ring();
    errno = before;
}

void catchSignals() {
    struct sigaction action {};
    action.sa_handler = onSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND); // a macro without a sign
    for (const int signal : kSignals)
        ::sigaction(signal, &action, nullptr);
}

/// Keeps the signals from threads that begin meanwhile: one that waits for a pipe shall be woken by them.
class Unheard {
public:
    Unheard() {
        sigset_t signals;
        ::sigemptyset(&signals);
        for (const int signal : kSignals)
            ::sigaddset(&signals, signal);
        ::pthread_sigmask(SIG_BLOCK, &signals, &before);
    }
    ~Unheard() { ::pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    Unheard(const Unheard&) = delete;
    Unheard& operator=(const Unheard&) = delete;

private:
    sigset_t before{};
};

} // namespace

StopSignals::StopSignals() {
    bell = ::eventfd(0, EFD_CLOEXEC);
    if (bell < 0) throw std::system_error(errno, std::generic_category(), "no descriptor for signals");
    {
        const Unheard unheard;
        watcher = std::thread([this] { watch(); });
    }
    catchSignals();
}

StopSignals::~StopSignals() {
    ring();
    watcher.join();
    ::close(bell.exchange(-1));
}

void StopSignals::watch() {
    std::uint64_t rings = 0;
    while (::read(bell, &rings, sizeof rings) < 0 && errno == EINTR) {
    }
    if (hasCome) source.request_stop();
}

} // namespace Cli
