// SPDX-License-Identifier: MIT
#include "host/batch/PeakMemory.h"

#include <sys/resource.h>

#include <fstream>
#include <string>

namespace Quillmere::Host {

namespace {
constexpr std::uint64_t kKilobyte = 1024;
}

void restartPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << "5"; // proc(5): the peak, and nothing else
}

/// `getrusage` has a peak too, which never begins anew.
std::uint64_t getPeakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stoull(line.substr(6)) * kKilobyte;
    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * kKilobyte;
}

} // namespace Quillmere::Host
