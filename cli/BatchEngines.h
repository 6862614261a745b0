// SPDX-License-Identifier: MIT
#pragma once

#include "cli/GraphArguments.h"
#include "host/batch/BatchPlan.h"

#include <cstddef>
#include <string>
#include <vector>

namespace CLI {
class App;
} // namespace CLI

namespace Cli {

/// Who runs a batch, where it isn't this machine alone.
struct EngineArguments {
    std::string engine; ///< Empty for processes of our own.
    bool ships = false; ///< Recordings to workers of Dask, and results back.
    std::size_t perTask = 50;
    std::string slurm; ///< Options of `sbatch` without dashes, blanks between them.
    bool prints = false;

    void enter(CLI::App& command);
    /// Raises `UsageError` for what doesn't go together. `hasLines` is whether a part of a plan is asked for.
    void check(bool hasGraph, const std::string& plan, bool hasLines) const;
    bool getIsDask() const;
    bool getIsSlurm() const;
    /// As Dask has it; empty for workers of our own.
    std::string getScheduler() const;
};

/// The options of a call as its words have them.
GraphArguments argumentsOf(const Quillmere::Host::BatchPlan::Entry& entry);

/// The script of an array over a plan of so many lines; what Slurm prints for its tasks comes into the folder
/// of the plan.
std::string slurmText(const EngineArguments& arguments, const std::string& plan, std::size_t lines);

/// Leaves a script to `sbatch`, which tells its number. Raises `UsageError` where it doesn't take it.
void submitToSlurm(const std::string& script);

} // namespace Cli
