// SPDX-License-Identifier: MIT
#include "host/batch/SlurmScript.h"

#include "host/batch/ShellWords.h"

namespace Quillmere::Host {

namespace {

/// Slurm takes `%` for its own letters; a name with blanks stands in quotes.
std::string outputOf(const std::string& plan) {
    const std::size_t end = plan.rfind('/');
    std::string name;
    for (const char letter : plan.substr(0, end == std::string::npos ? 0 : end + 1))
        name += letter == '%' ? std::string("%%") : std::string(1, letter);
    name += "slurm-%A_%a.out";
    return name.find(' ') == std::string::npos ? name : '"' + name + '"';
}

} // namespace

std::string slurmScript(const SlurmWishes& wishes) {
    const std::size_t tasks = (wishes.lines + wishes.perTask - 1) / wishes.perTask;
    std::string script = "#!/bin/bash\n#SBATCH --array=1-";
    script += std::to_string(tasks) + "\n";
    if (!wishes.name.empty()) script.append("#SBATCH --job-name=").append(wishes.name).append("\n");
    // What a task prints lies beside the plan, not wherever somebody has submitted it.
    script.append("#SBATCH --output=").append(outputOf(wishes.plan)).append("\n");
    for (const std::string& option : wishes.options)
        script.append("#SBATCH --").append(option).append("\n");
    if (!wishes.program.empty())
        script.append("PATH=\"$PATH:\"").append(shellWord(wishes.program)).append("\n");
    const std::string many = std::to_string(wishes.perTask);
    script.append("last=$((SLURM_ARRAY_TASK_ID * ").append(many).append("))\n");
    script.append("exec quillmere batch --plan ").append(shellWord(wishes.plan));
    script.append(" --lines \"$((last - ").append(std::to_string(wishes.perTask - 1)).append("))-$last\"");
    script.append(" --jobs \"${SLURM_CPUS_PER_TASK:-1}\" --resume\n");
    return script;
}

} // namespace Quillmere::Host
