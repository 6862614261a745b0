// SPDX-License-Identifier: MIT
#include "host/control/ControlSocket.h"

#include "host/live/ControlException.h"
#include "host/text/Complaint.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Quillmere::Host {

namespace {
constexpr int kWaitingConnections = 8;
constexpr mode_t kOwnersOnly = 0600;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
    throw ControlException(Complaint::sentence({path}, what + ": " + std::strerror(errno),
                                               "a --control PATH that one may use and a run listens at"));
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        throw ControlException({{"'" + path + "'"},
                                "a name of " + std::to_string(path.size()) + " bytes for a socket",
                                "1 to " + std::to_string(sizeof address.sun_path - 1)});
    path.copy(address.sun_path, path.size());
    return address;
}

const sockaddr* asGeneral(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address); // how the socket calls want it
}
} // namespace

ControlSocket::ControlSocket(const std::string& name) : path(name), lockPath(name + ".lock") {
    static_cast<void>(addressOf(path)); // a name that is too long, before a lock has its own
    try {
        lock();
        listen();
    } catch (...) {
        removeNames();
        close();
        throw;
    }
}

ControlSocket::~ControlSocket() {
    removeNames();
    close();
}

void ControlSocket::lock() {
    // Something that isn't a plain file is looked at, never waited for.
    lockFile = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kOwnersOnly);
    if (lockFile < 0) fail(path, "cannot be listened at");
    requireOwnLock();
    if (::flock(lockFile, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK) fail(lockPath, "cannot be locked");
        throw ControlException(Complaint::sentence({path}, "another run is controlled there",
                                                   "a name of its own", Complaint::Form::SentenceAndWanted));
    }
    // Who held the lock may have removed its name in between: then the lock isn't one that others see.
    struct stat held {};
    if (::fstat(lockFile, &held) != 0 || !getIs(lockPath, {held.st_dev, held.st_ino}))
        throw ControlException(Complaint::sentence({path}, "another run has just ended there; try again",
                                                   "a name that no other run gives up at that moment"));
    lockIdentity = {held.st_dev, held.st_ino};
}

/// A run's lock is an empty file that only its owner may read; anything else is somebody's work.
void ControlSocket::requireOwnLock() const {
    struct stat facts {};
    if (::fstat(lockFile, &facts) != 0) fail(lockPath, "cannot be looked at");
    const bool isOwn = S_ISREG(facts.st_mode) && facts.st_size == 0 && facts.st_uid == ::geteuid() &&
                       facts.st_nlink <= 1 && (facts.st_mode & 07777U & ~kOwnersOnly) == 0;
    if (!isOwn)
        throw ControlException(
            {{lockPath}, "a file that is no run's lock", "a --control PATH whose PATH.lock is free"});
}

void ControlSocket::listen() {
    replaceLeftBehind();
    listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener < 0) fail(path, "cannot be listened at");
    // Before the name is there, so that nobody else ever gets in.
    if (::fchmod(listener, kOwnersOnly) != 0) fail(path, "cannot be made the owner's only");
    const sockaddr_un address = addressOf(path);
    if (::bind(listener, asGeneral(address), sizeof address) != 0) fail(path, "cannot be listened at");
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) != 0) fail(path, "cannot be listened at");
    socketIdentity = {facts.st_dev, facts.st_ino};
    if (::chmod(path.c_str(), kOwnersOnly) != 0 || ::listen(listener, kWaitingConnections) != 0)
        fail(path, "cannot be listened at");
}

/// Makes way for the socket: a name at which nobody listens is what a killed run left. The lock says that no
/// other run listens, and says nothing of other programs.
void ControlSocket::replaceLeftBehind() const {
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) != 0) return; // free, or `bind` tells why not
    if (!S_ISSOCK(facts.st_mode))
        throw ControlException({{path}, "something that is no socket", "a name that is free"});
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (probe < 0) fail(path, "cannot be listened at");
    const sockaddr_un address = addressOf(path);
    const bool isRefused = ::connect(probe, asGeneral(address), sizeof address) != 0 && errno == ECONNREFUSED;
    ::close(probe);
    if (!isRefused) throw ControlException({{path}, "another program's socket", "a name that is free"});
    if (getIs(path, {facts.st_dev, facts.st_ino})) ::unlink(path.c_str());
}

/// By now the names may stand for what somebody else has put there.
void ControlSocket::removeNames() const {
    if (getIs(path, socketIdentity)) ::unlink(path.c_str());
    if (getIs(lockPath, lockIdentity)) ::unlink(lockPath.c_str());
}

/// An identity that was never taken is nobody's.
bool ControlSocket::getIs(const std::string& name, const Identity& identity) {
    struct stat facts {};
    return identity.file != 0 && ::lstat(name.c_str(), &facts) == 0 && facts.st_dev == identity.device &&
           facts.st_ino == identity.file;
}

void ControlSocket::close() {
    for (int* const descriptor : {&listener, &lockFile}) {
        if (*descriptor >= 0) ::close(*descriptor);
        *descriptor = -1;
    }
}

int ControlSocket::connectTo(const std::string& path, std::chrono::seconds patience) {
    const sockaddr_un address = addressOf(path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) fail(path, "cannot be reached");
    const timeval longest{.tv_sec = patience.count(), .tv_usec = 0};
    ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &longest, sizeof longest); // that of `connect` too
    if (::connect(descriptor, asGeneral(address), sizeof address) == 0) return descriptor;
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
    if (reason == ENOENT || reason == ECONNREFUSED)
        throw ControlException({{path}, "no run there", "the --control of one that runs"});
    if (reason == EAGAIN)
        throw ControlException({{path},
                                "no answer within " + std::to_string(patience.count()) + " s",
                                "the --control of a run"});
    fail(path, "cannot be reached");
}

} // namespace Quillmere::Host
