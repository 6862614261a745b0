// SPDX-License-Identifier: MIT
#pragma once

#include "cli/BatchEngines.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchRun.h"
#include "host/batch/BatchTally.h"

#include <cstddef>
#include <stop_token>
#include <string>
#include <vector>

namespace Cli {

/// What is asked of workers of Dask.
struct DaskWishes {
    std::string scheduler;  ///< Empty for workers on this machine.
    std::size_t jobs = 0;   ///< At most so many at once; 0 for as many as there are workers.
    std::string arrivals{}; ///< A folder for what comes back from workers; empty where they share ours.
    bool isQuiet = false;
};

/// Has the package `velmarind` run `recordings` of a plan at Dask, and gives back its exit code; 2 when it
/// has refused to. Raises `UsageError` where there is no Python with what that takes.
int runAtDask(const Quillmere::Host::BatchPlan& plan, const std::vector<std::size_t>& recordings,
              const Quillmere::Host::BatchOptions& calls, const DaskWishes& wishes,
              Quillmere::Host::BatchTally& tally, const std::stop_token& stop,
              const Quillmere::Host::BatchProgressHandler& onProgress);

} // namespace Cli
