// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Quillmere::Host {

/// Processes that run recordings, several in turn each, so that starting costs nothing that shows. A worker
/// gets a line through its standard input, a socket, and answers there with a line; what it prints besides
/// goes into a file in memory. A worker that ends instead is gone with the one recording that it had; the
/// next task gets a new one. Workers end with this object, however that ends.
class QUILLMERE_API WorkerPool {
public:
    struct Ended {
        std::size_t task = 0;
        std::string answer;  ///< Of a worker that is there still.
        std::string printed; ///< What the worker has said meanwhile, for people.
        std::string crash;   ///< How its process ended; empty for one that is there still.
        int signal = 0;      ///< What ended it, if one did.
    };

    /// `program` is what a worker runs; it is started with the first task that needs it.
    WorkerPool(std::vector<std::string> program, std::size_t mostWorkers);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    bool getHasRoom() const { return getBusy() < most; }
    std::size_t getBusy() const;

    /// Gives a task to a worker. Raises `std::system_error` where no process can be made. Requires: there is
    /// room; the line has no line's end.
    void start(std::size_t task, const std::string& line);
    /// What has ended; waits for that, as long as `time` at most.
    std::vector<Ended> wait(std::chrono::milliseconds time);
    /// From now on no more workers at once than so many.
    void goOnWith(std::size_t count) { most = std::max<std::size_t>(1, count); }
    /// Asks workers that have a task to end it in order.
    void interrupt() const;

private:
    struct Worker {
        pid_t process = -1;
        int socket = -1;
        int output = -1; ///< The file in memory.
        bool isBusy = false;
        std::size_t task = 0;
        std::string answer;
    };

    Worker& idleWorker();
    void spawn(Worker& worker) const;
    bool hear(Worker& worker, Ended& ended);
    static void bury(Worker& worker, Ended& ended);

    std::vector<std::string> program;
    std::size_t most;
    std::vector<Worker> workers;
};

} // namespace Quillmere::Host
