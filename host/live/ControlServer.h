// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/live/ControlSocket.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Quillmere::Host {

class LiveRun;

/// Answers those who control a run over a Unix socket: one thread for all of them, asleep until somebody asks or a setting
/// that somebody watches has changed. Who doesn't read what he asked for is cut off, so that he holds nobody up.
class QUILLMERE_API ControlServer {
public:
    /// Listens at `path`; raises what `ControlSocket` raises.
    explicit ControlServer(const std::string& path);
    /// Ends the thread and all connections, and removes the socket.
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    /// Starts to answer. `run` is not owned and outlives the server. Requires: not called before.
    void serve(LiveRun& run);

private:
    class Connection;

    void answerAll(LiveRun& run);
    void accept(LiveRun& run);

    ControlSocket socket;
    int wake = -1; ///< An event: a watched setting has changed, or the server ends.
    std::atomic<bool> isEnding{false};
    std::vector<std::unique_ptr<Connection>> connections; ///< The thread's own.
    std::thread thread;
};

} // namespace Quillmere::Host
