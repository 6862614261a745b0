// SPDX-License-Identifier: MIT
#include "host/batch/SlurmScript.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace Quillmere::Host;

TEST(SlurmScript, EachTaskTakesItsLines) {
    EXPECT_EQ(slurmScript({.plan = "my plan.txt",
                           .lines = 101,
                           .perTask = 50,
                           .name = "tremor",
                           .program = "/opt/my bin",
                           .options = {"time=01:00:00", "mem=2G"}}),
              "#!/bin/bash\n"
              "#SBATCH --array=1-3\n"
              "#SBATCH --job-name=tremor\n"
              "#SBATCH --output=slurm-%A_%a.out\n"
              "#SBATCH --time=01:00:00\n"
              "#SBATCH --mem=2G\n"
              "PATH=\"$PATH:\"'/opt/my bin'\n"
              "last=$((SLURM_ARRAY_TASK_ID * 50))\n"
              "exec quillmere batch --plan 'my plan.txt' --lines \"$((last - 49))-$last\" --jobs "
              "\"${SLURM_CPUS_PER_TASK:-1}\" --resume\n");
}

TEST(SlurmScript, WhatTasksPrintLiesBesideThePlan) {
    EXPECT_NE(slurmScript({.plan = "all 100%/plan.txt", .lines = 1})
                  .find("#SBATCH --output=\"all 100%%/slurm-%A_%a.out\"\n"),
              std::string::npos);
}

TEST(SlurmScript, AFullTaskIsNoReasonForAnother) {
    EXPECT_NE(slurmScript({.plan = "p", .lines = 100, .perTask = 50}).find("--array=1-2\n"),
              std::string::npos);
    EXPECT_NE(slurmScript({.plan = "p", .lines = 1, .perTask = 50}).find("--array=1-1\n"), std::string::npos);
}

} // namespace
