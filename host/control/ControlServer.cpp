// SPDX-License-Identifier: MIT
#include "host/control/ControlServer.h"

#include "host/control/ControlConsole.h"
#include "host/live/ControlException.h"
#include "host/text/Complaint.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <new>
#include <string_view>
#include <system_error>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kMostConnections = 32;
constexpr std::size_t kLongestRequest = std::size_t{1} << 16;
constexpr std::size_t kMostUnread = std::size_t{1} << 22;
/// Before another try where memory or descriptors have run out, in milliseconds.
constexpr int kPause = 200;
constexpr int kForEver = -1;

const std::string kFull =
    "error: " +
    Complaint{{}, std::to_string(kMostConnections) + " others who watch or ask", "fewer, try again later"}
        .getText() +
    "\n";
const std::string kMadeRoom = "error: found others who ask; who is silent longest is hung up on\n";

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
    /// Whether it has asked, been answered and waits for nothing.
    bool getIsIdle() const { return received.empty() && unsent.empty() && !console.getIsWatching(); }
    /// The number of its last question, or of its coming.
    std::uint64_t getLastQuestion() const { return lastQuestion; }
    void setLastQuestion(std::uint64_t number) { lastQuestion = number; }
    /// A last word, as far as it goes out at once.
    void dismiss(std::string_view word) const {
        ::send(descriptor, word.data(), word.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }
    /// What to wait for, as `poll` has it.
    short getEvents() const {
        return static_cast<short>((asksNoMore ? 0 : POLLIN) | (unsent.empty() ? 0 : POLLOUT));
    }

    /// Reads what has come and answers each whole line; false when the other end is gone or asks too much.
    /// One that only asks no more gets the answers that are left.
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
    /// Sends what there is, as far as the other end takes it; false when it is gone, has everything or reads
    /// too little.
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
        try {
            if (!hasMissed) told += " " + line + "\n";
        } catch (const std::bad_alloc&) {
            hasMissed = true; // the write that is told of has been done, and must not fail
        }
        raiseEvent(wake);
    }

    const int descriptor;
    const int wake;
    std::string received; ///< A line that has not ended.
    std::string unsent;
    bool asksNoMore = false;
    std::uint64_t lastQuestion = 0;
    std::mutex telling;
    std::string told;       ///< Under `telling`.
    bool hasMissed = false; ///< Under `telling`.
    ControlConsole console; ///< Goes first, and with it whoever tells.
};

ControlServer::ControlServer(const std::string& path)
    : socket(path), wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (wake < 0)
        throw ControlException(
            Complaint::sentence({path}, "cannot be listened at", "room for one more descriptor"));
}

ControlServer::~ControlServer() {
    isEnding = true;
    raiseEvent(wake);
    if (thread.joinable()) thread.join();
    connections.clear();
    ::close(wake);
}

void ControlServer::serve(LiveRun& run) {
    try {
        thread = std::thread([this, &run] { serveUntilEnd(run); });
    } catch (const std::system_error& error) {
        throw ControlException(Complaint::sentence(
            {socket.getPath()}, "cannot be listened at: no thread can be made: " + error.code().message(),
            "room for one more thread"));
    }
}

void ControlServer::serveUntilEnd(LiveRun& run) {
    while (!isEnding) {
        try {
            answerAll(run);
        } catch (const std::exception&) {
            // No memory to look at all who ask: they are left alone for a moment, and the run with them.
            pollfd event{wake, POLLIN, 0};
            ::poll(&event, 1, kPause);
        }
    }
}

/// Sleeps until there is something to do, and does it.
void ControlServer::answerAll(LiveRun& run) {
    // Who can't be let in stays at the door, and would keep us from sleeping.
    const short newcomers = isPausing ? 0 : POLLIN;
    std::vector<pollfd> events{{wake, POLLIN, 0}, {socket.getDescriptor(), newcomers, 0}};
    for (const auto& connection : connections)
        events.push_back({connection->getDescriptor(), connection->getEvents(), 0});
    const int count = ::poll(events.data(), events.size(), isPausing ? kPause : kForEver);
    if (count < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category());
    isPausing = false;
    if (count < 0) return;
    std::uint64_t raised = 0;
    while (::read(wake, &raised, sizeof raised) < 0 && errno == EINTR) {
    }
    for (std::size_t i = connections.size(); i-- > 0;)
        answer(i, (events[i + 2].revents & (POLLIN | POLLHUP | POLLERR)) != 0);
    if ((events[1].revents & POLLIN) != 0) accept(run);
}

void ControlServer::answer(std::size_t index, bool isAsked) {
    Connection& connection = *connections[index];
    bool isOpen = false;
    try {
        if (isAsked) connection.setLastQuestion(++questions);
        isOpen = (!isAsked || connection.read()) && connection.send();
    } catch (const std::exception&) {
        connection.dismiss("error: out of memory\n");
    }
    if (!isOpen) connections.erase(connections.begin() + static_cast<std::ptrdiff_t>(index));
}

void ControlServer::accept(LiveRun& run) {
    const int descriptor = ::accept4(socket.getDescriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor < 0) {
        isPausing = errno != EAGAIN && errno != EINTR && errno != ECONNABORTED;
        return;
    }
    std::unique_ptr<Connection> newcomer;
    try {
        newcomer = std::make_unique<Connection>(descriptor, wake, run);
    } catch (const std::bad_alloc&) {
        ::close(descriptor);
        throw;
    }
    newcomer->setLastQuestion(++questions);
    if (connections.size() < kMostConnections || makeRoom())
        connections.push_back(std::move(newcomer));
    else
        newcomer->dismiss(kFull);
}

/// Hangs up on the one that has been silent longest; false when all of them wait for something.
bool ControlServer::makeRoom() {
    const auto isEarlier = [](const auto& a, const auto& b) {
        if (a->getIsIdle() != b->getIsIdle()) return a->getIsIdle();
        return a->getLastQuestion() < b->getLastQuestion();
    };
    const auto first = std::min_element(connections.begin(), connections.end(), isEarlier);
    if (!(*first)->getIsIdle()) return false;
    (*first)->dismiss(kMadeRoom);
    connections.erase(first);
    return true;
}

} // namespace Quillmere::Host
