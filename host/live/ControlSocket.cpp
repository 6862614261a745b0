// SPDX-License-Identifier: MIT
#include "host/live/ControlSocket.h"

#include "host/live/ControlException.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Quillmere::Host {

namespace {
constexpr int kWaitingConnections = 8;
constexpr mode_t kOwnersOnly = 0600;

[[noreturn]] void fail(const std::string& path, const std::string& what) {
    throw ControlException(path + ": " + what + ": " + std::strerror(errno));
}

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        throw ControlException("'" + path + "': found a name of " + std::to_string(path.size()) +
                               " bytes for a socket; expected 1 to " +
                               std::to_string(sizeof address.sun_path - 1));
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
        if (isLocked) ::unlink(lockPath.c_str());
        close();
        throw;
    }
}

ControlSocket::~ControlSocket() {
    ::unlink(path.c_str());
    ::unlink(lockPath.c_str());
    close();
}

void ControlSocket::lock() {
    lockFile = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kOwnersOnly);
    if (lockFile < 0) fail(path, "cannot be listened at");
    if (::flock(lockFile, LOCK_EX | LOCK_NB) != 0)
        throw ControlException(path + ": another run is controlled there; expected a name of its own");
    // Who held the lock may have removed its name in between: then the lock isn't one that others see.
    struct stat held {};
    struct stat named {};
    if (::fstat(lockFile, &held) != 0 || ::stat(lockPath.c_str(), &named) != 0 || held.st_ino != named.st_ino)
        throw ControlException(path + ": another run has just ended there; try again");
    isLocked = true;
}

void ControlSocket::listen() {
    struct stat facts {};
    if (::lstat(path.c_str(), &facts) == 0) {
        if (!S_ISSOCK(facts.st_mode))
            throw ControlException(path +
                                   ": found something that is no socket; expected a name that is free");
        ::unlink(path.c_str()); // nobody holds the lock, so nobody listens
    }
    listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener < 0) fail(path, "cannot be listened at");
    // Before the name is there, so that nobody else ever gets in.
    if (::fchmod(listener, kOwnersOnly) != 0) fail(path, "cannot be made the owner's only");
    const sockaddr_un address = addressOf(path);
    if (::bind(listener, asGeneral(address), sizeof address) != 0 ||
        ::chmod(path.c_str(), kOwnersOnly) != 0 || ::listen(listener, kWaitingConnections) != 0)
        fail(path, "cannot be listened at");
}

void ControlSocket::close() {
    for (int* const descriptor : {&listener, &lockFile}) {
        if (*descriptor >= 0) ::close(*descriptor);
        *descriptor = -1;
    }
}

int ControlSocket::connectTo(const std::string& path) {
    const sockaddr_un address = addressOf(path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) fail(path, "cannot be reached");
    if (::connect(descriptor, asGeneral(address), sizeof address) == 0) return descriptor;
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
    if (reason == ENOENT || reason == ECONNREFUSED)
        throw ControlException(path + ": found no run there; expected the --control of one that runs");
    fail(path, "cannot be reached");
}

} // namespace Quillmere::Host
