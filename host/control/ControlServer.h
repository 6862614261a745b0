// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/control/ControlSocket.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Quillmere::Host {

class LiveRun;

/// Answers those who control a run over a Unix socket: one thread for all of them, asleep until somebody asks
/// or a setting that somebody watches has changed. Who doesn't read what he asked for is cut off, so that he
/// holds nobody up; where too many are connected, the one that has been silent longest makes room for who
/// comes, and is told so.
class QUILLMERE_API ControlServer {
public:
    /// Listens at `path`; raises what `ControlSocket` raises.
    explicit ControlServer(const std::string& path);
    /// Ends the thread and all connections, and removes the socket.
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    /// Starts to answer. `run` is not owned and outlives the server. Raises `ControlException` when no thread
    /// can be made. Requires: not called before.
    void serve(LiveRun& run);

private:
    class Connection;

    void serveUntilEnd(LiveRun& run);
    void answerAll(LiveRun& run);
    void answer(std::size_t index, bool isAsked);
    void accept(LiveRun& run);
    bool makeRoom();

    ControlSocket socket;
    int wake = -1; ///< An event: a watched setting has changed, or the server ends.
    std::atomic<bool> isEnding{false};
    std::vector<std::unique_ptr<Connection>> connections; ///< The thread's own.
    std::uint64_t questions = 0;                          ///< So far, of all; the thread's own.
    bool isPausing = false; ///< Nobody is let in for a moment, since nobody can be. The thread's own.
    std::thread thread;
};

} // namespace Quillmere::Host
