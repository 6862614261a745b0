// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchRun.h"
#include "host/batch/BatchTally.h"

#include <cstddef>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

#include <sys/types.h>

namespace Quillmere::Host {

/// How an engine answers: a word, the number of the line, counted from 0, and for a failure a blank and why,
/// with `kLineEnd` for the end of a line. `kRunning` is followed by how many run just now.
namespace EngineAnswer {
inline constexpr const char* kDone = "done";
inline constexpr const char* kFailed = "failed";
inline constexpr const char* kCrashed = "crashed"; ///< Its process is gone, and has written no status.
inline constexpr const char* kInterrupted = "interrupted";
inline constexpr const char* kRunning = "running";
inline constexpr char kLineEnd = '\x1e';
} // namespace EngineAnswer

struct EngineOptions {
    std::vector<std::string> program;                 ///< And its words.
    std::map<std::string, std::string> environment{}; ///< Besides that of this process.
    std::string settings{};                           ///< What it reads first, in one line.
    /// Where it lays, into a folder called as the number of the line, what was made elsewhere, before it
    /// answers; empty where runs write into their folders themselves.
    std::string arrivals{};
};

/// Gives recordings to an engine, a program that has them run on other machines. It reads its settings and
/// then a line for each recording, and answers what became of each. SIGTERM asks it to end in order, which
/// is what it gets when this process is gone, too.
class QUILLMERE_API EngineRun {
public:
    /// `recordings` are those of the plan that are to be run; `calls` says how. Plan and tally must outlive
    /// it.
    EngineRun(const BatchPlan& plan, std::vector<std::size_t> recordings, BatchOptions calls,
              EngineOptions options, BatchTally& tally);

    /// To the end of the engine; gives back its exit code, above 128 that of a signal. Raises
    /// `std::system_error` where it can't be started. [run]
    int run(const std::stop_token& stop, const BatchProgressHandler& onProgress);

private:
    pid_t start(int input, int output) const;
    int writeCalls() const;
    void hear(const std::string& line);
    void findUntold();
    /// What has arrived takes its place; the reason why it can't.
    std::string takeIn(std::size_t number) const;

    const BatchPlan& plan;
    std::vector<std::size_t> recordings;
    BatchOptions calls;
    EngineOptions options;
    BatchTally& tally;
    std::string began;
};

} // namespace Quillmere::Host
