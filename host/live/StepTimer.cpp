// SPDX-License-Identifier: MIT
#include "host/live/StepTimer.h"

#include <chrono>

namespace Quillmere::Host {

void StepTimer::stepMeasured(Core::Filter& block) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    block.process();
    const auto spent = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - begin);
    block.stepTally.measuredSteps.add(1);
    block.stepTally.nanoseconds.add(static_cast<std::uint64_t>(spent.count()));
}

} // namespace Quillmere::Host
