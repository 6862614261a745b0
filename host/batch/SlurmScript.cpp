// SPDX-License-Identifier: MIT
#include "host/batch/SlurmScript.h"

#include "host/batch/ShellWords.h"

namespace Quillmere::Host {

std::string slurmScript(const SlurmWishes& wishes) {
    const std::size_t tasks = (wishes.lines + wishes.perTask - 1) / wishes.perTask;
    std::string script = "#!/bin/bash\n#SBATCH --array=1-";
    script += std::to_string(tasks) + "\n";
    if (!wishes.name.empty()) script.append("#SBATCH --job-name=").append(wishes.name).append("\n");
    for (const std::string& option : wishes.options)
        script.append("#SBATCH --").append(option).append("\n");
    const std::string many = std::to_string(wishes.perTask);
    script.append("last=$((SLURM_ARRAY_TASK_ID * ").append(many).append("))\n");
    script.append("exec quillmere batch --plan ").append(shellWord(wishes.plan));
    script.append(" --lines \"$((last - ").append(std::to_string(wishes.perTask - 1)).append("))-$last\"");
    script.append(" --jobs \"${SLURM_CPUS_PER_TASK:-1}\" --resume\n");
    return script;
}

} // namespace Quillmere::Host
