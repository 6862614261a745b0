// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>

namespace Quillmere::Host {

/// A Unix socket by which others control a run: a name in the file system that only its owner may use, taken by one run at
/// a time, and gone with it. A name that a run left behind when it was killed is taken over.
class QUILLMERE_API ControlSocket {
public:
    /// Listens at `path`. Raises `ControlException` when a run listens there already, when something that is no socket has
    /// that name, and when it can't be had at all.
    explicit ControlSocket(const std::string& path);
    /// Removes the name.
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    const std::string& getPath() const { return path; }
    int getDescriptor() const { return listener; }

    /// The other end: connects to the run that listens at `path` and returns the descriptor, which is the caller's. Raises
    /// `ControlException`.
    static int connectTo(const std::string& path);

private:
    void lock();
    void listen();
    void close();

    const std::string path;
    const std::string
        lockPath; ///< Held for as long as the run lives, so that two can't both take a name over.
    int lockFile = -1;
    bool isLocked = false;
    int listener = -1;
};

} // namespace Quillmere::Host
