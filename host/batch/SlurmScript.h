// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What an array of Slurm jobs is told.
struct SlurmWishes {
    std::string plan;         ///< The file.
    std::size_t lines = 0;    ///< That the plan has.
    std::size_t perTask = 1;  ///< Recordings that a task takes, since sites limit how many tasks wait.
    std::string name = {};    ///< Of the job.
    std::string program = {}; ///< The folder of the command, for nodes whose PATH doesn't find it.
    std::vector<std::string> options = {}; ///< `time=01:00:00`: those of `sbatch` without their dashes.
};

/// A script for `sbatch`: each task of the array runs its lines of the plan, as many at once as it has
/// processors, and leaves out what is done. Requires: there are lines. [any]
QUILLMERE_API std::string slurmScript(const SlurmWishes& wishes);

} // namespace Quillmere::Host
