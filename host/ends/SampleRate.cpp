// SPDX-License-Identifier: MIT
#include "host/ends/SampleRate.h"

#include "host/ends/StepRate.h"

#include <cstddef>

namespace Quillmere::Host {

std::optional<SampleRate> RateMeter::measure() const {
    std::vector<StepGroup> steps;
    for (std::size_t i = 1; i < times.size(); ++i)
        steps.push_back({1, times[i] - times[i - 1]});
    return rateOfSteps({steps});
}

} // namespace Quillmere::Host
