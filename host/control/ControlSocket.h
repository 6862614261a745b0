// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <chrono>
#include <string>

#include <sys/types.h>

namespace Quillmere::Host {

/// A Unix socket by which others control a run: a name in the file system that only its owner may use, taken
/// by one run at a time, and gone with it. A name that a run left behind when it was killed is taken over;
/// what another program made, a socket, a lock or a file, is neither taken nor removed.
class QUILLMERE_API ControlSocket {
public:
    /// Listens at `path`. Raises `ControlException` when somebody listens there already, when something that
    /// is no socket has that name or something that is no run's lock the name of the lock, and when it can't
    /// be had at all.
    explicit ControlSocket(const std::string& path);
    /// Removes the name, if it still is this socket's.
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    const std::string& getPath() const { return path; }
    int getDescriptor() const { return listener; }

    /// The other end: connects to the run that listens at `path` and returns the descriptor, which is the
    /// caller's. Waits no longer than `patience` (0: for ever) for a run that doesn't look. Raises
    /// `ControlException`.
    static int connectTo(const std::string& path, std::chrono::seconds patience = {});

private:
    /// What a name stands for, whoever has it by now.
    struct Identity {
        dev_t device = 0;
        ino_t file = 0;
    };
    void lock();
    void requireOwnLock() const;
    void listen();
    void replaceLeftBehind() const;
    void removeNames() const;
    void close();
    static bool getIs(const std::string& name, const Identity& identity);

    const std::string path;
    /// Held for as long as the run lives, so that two can't both take a name over.
    const std::string lockPath;
    int lockFile = -1;
    int listener = -1;
    Identity lockIdentity;   ///< Once it is held.
    Identity socketIdentity; ///< Once it is bound.
};

} // namespace Quillmere::Host
