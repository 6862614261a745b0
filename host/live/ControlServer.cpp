// SPDX-License-Identifier: MIT
#include "host/live/ControlServer.h"

#include "host/live/ControlConsole.h"
#include "host/live/ControlException.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <mutex>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kMostConnections = 32;
constexpr std::size_t kLongestRequest = std::size_t{1} << 16;
constexpr std::size_t kMostUnread = std::size_t{1} << 22;

void raiseEvent(int event) {
    const std::uint64_t one = 1;
    while (::write(event, &one, sizeof one) < 0 && errno == EINTR) {
    }
}
} // namespace

/// One who asks.
class ControlServer::Connection {
public:
    /// Owns `descriptor`; raises the event `wake` when there is something new to send.
    Connection(int ownDescriptor, int wakeEvent, LiveRun& run)
        : descriptor(ownDescriptor), wake(wakeEvent),
          console(run, [this](const std::string& line) { tell(line); }) {}
    ~Connection() { ::close(descriptor); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    int getDescriptor() const { return descriptor; }
    /// What to wait for, as `poll` has it.
    short getEvents() const {
        return static_cast<short>((asksNoMore ? 0 : POLLIN) | (unsent.empty() ? 0 : POLLOUT));
    }

    /// Reads what has come and answers each whole line; false when the other end is gone or asks too much. One that only
    /// asks no more gets the answers that are left.
    bool read() {
        char piece[4096];
        const ssize_t count = ::recv(descriptor, piece, sizeof piece, 0);
        if (count < 0 && errno != EAGAIN && errno != EINTR) return false;
        asksNoMore = asksNoMore || count == 0;
        if (count > 0) received.append(piece, static_cast<std::size_t>(count));
        for (std::size_t end = received.find('\n'); end != std::string::npos; end = received.find('\n')) {
            unsent += console.answer(std::string_view(received).substr(0, end));
            received.erase(0, end + 1);
        }
        return received.size() <= kLongestRequest;
    }
    /// Sends what there is, as far as the other end takes it; false when it is gone, has everything or reads too little.
    bool send() {
        {
            const std::lock_guard lock(telling);
            if (hasMissed) return false;
            unsent += told;
            told.clear();
        }
        while (!unsent.empty()) {
            const ssize_t count = ::send(descriptor, unsent.data(), unsent.size(), MSG_NOSIGNAL);
            if (count < 0) return errno == EAGAIN || errno == EINTR ? unsent.size() <= kMostUnread : false;
            unsent.erase(0, static_cast<std::size_t>(count));
        }
        return !asksNoMore;
    }

private:
    /// Called by who writes a watched setting, under its guard.
    void tell(const std::string& line) {
        const std::lock_guard lock(telling);
        // One that isn't told everything is cut off, or it would take what it knows for all there is.
        hasMissed = hasMissed || told.size() > kMostUnread;
        if (!hasMissed) told += " " + line + "\n";
        raiseEvent(wake);
    }

    const int descriptor;
    const int wake;
    std::string received; ///< A line that has not ended.
    std::string unsent;
    bool asksNoMore = false;
    std::mutex telling;
    std::string told;       ///< Under `telling`.
    bool hasMissed = false; ///< Under `telling`.
    ControlConsole console; ///< Goes first, and with it whoever tells.
};

ControlServer::ControlServer(const std::string& path)
    : socket(path), wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wake < 0) throw ControlException(path + ": cannot be listened at");
}

ControlServer::~ControlServer() {
    isEnding = true;
    raiseEvent(wake);
    if (thread.joinable()) thread.join();
    connections.clear();
    ::close(wake);
}

void ControlServer::serve(LiveRun& run) {
    thread = std::thread([this, &run] {
        while (!isEnding)
            answerAll(run);
    });
}

/// Sleeps until there is something to do, and does it.
void ControlServer::answerAll(LiveRun& run) {
    std::vector<pollfd> events{{wake, POLLIN, 0}, {socket.getDescriptor(), POLLIN, 0}};
    for (const auto& connection : connections)
        events.push_back({connection->getDescriptor(), connection->getEvents(), 0});
    if (::poll(events.data(), events.size(), -1) < 0) return;
    std::uint64_t count = 0;
    while (::read(wake, &count, sizeof count) < 0 && errno == EINTR) {
    }
    for (std::size_t i = connections.size(); i-- > 0;) {
        const bool isAsked = (events[i + 2].revents & (POLLIN | POLLHUP | POLLERR)) != 0;
        Connection& connection = *connections[i];
        if ((isAsked && !connection.read()) || !connection.send())
            connections.erase(connections.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if ((events[1].revents & POLLIN) != 0) accept(run);
}

void ControlServer::accept(LiveRun& run) {
    const int descriptor = ::accept4(socket.getDescriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor < 0) return;
    if (connections.size() < kMostConnections)
        connections.push_back(std::make_unique<Connection>(descriptor, wake, run));
    else
        ::close(descriptor);
}

} // namespace Quillmere::Host
