// SPDX-License-Identifier: MIT
#include "host/plugins/KnownTypes.h"

#include "framework/core/Filter.h"

#include <algorithm>

namespace Quillmere::Host {

std::span<const KnownType> getKnownTypes() {
    static constexpr KnownType types[]{
        {.name = "Durations", .readsTimes = true},
        {.name = "FilterBandPass", .keepsShape = true},
        {.name = "FilterBessel", .wallClockOutputs = {"gain", "coeffs"}},
        {.name = "FilterBlackmanWindow", .isWindow = true},
        {.name = "FilterButterworth", .keepsShape = true},
        {.name = "FilterButterworth_v2", .keepsShape = true},
        {.name = "FilterButterworthV2", .wallClockOutputs = {"gain", "coeffs"}},
        {.name = "FilterChebyshev", .wallClockOutputs = {"gain", "coeffs"}},
        {.name = "FilterDeadband", .keepsShape = true},
        {.name = "FilterEdge", .wallClockOutputs = {"edge"}},
        {.name = "FilterEllipticV1", .wallClockOutputs = {"gain", "coeffs"}},
        {.name = "FilterFastFourierTransform", .isTransform = true},
        {.name = "FilterFFT", .isTransform = true},
        {.name = "FilterFlagStatic", .readsTimes = true, .trustsFirstStep = true},
        {.name = "FilterFrequency", .readsTimes = true},
        {.name = "FilterGain", .keepsShape = true},
        {.name = "FilterGaussianWhiteNoiseGenerator", .wallClockOutputs = {"out"}},
        {.name = "FilterHammingWindow", .isWindow = true},
        {.name = "FilterHanningWindow", .isWindow = true},
        {.name = "FilterIIR", .keepsShape = true},
        {.name = "FilterInvGain", .wallClockOutputs = {"output"}},
        {.name = "FilterPeriodCounter", .startedBy = "Reset"},
        {.name = "FilterSaturationDetector", .keepsShape = true},
        {.name = "FilterSmartSaturationDetector", .keepsShape = true},
        {.name = "FilterSphericalFiltering", .readsTimes = true},
        {.name = "Join", .readsTimes = true, .makesTimes = true},
        {.name = "MovingStatistics", .keepsShape = true},
        {.name = "Peaks", .readsTimes = true},
        {.name = "Resample", .readsTimes = true, .makesTimes = true},
        {.name = "Unframe", .makesTimes = true},
    };
    return types;
}

const KnownType& getKnownType(std::string_view name) {
    static constexpr KnownType unknown;
    const auto types = getKnownTypes();
    const auto found =
        std::find_if(types.begin(), types.end(), [&](const KnownType& type) { return type.name == name; });
    return found == types.end() ? unknown : *found;
}

bool getMakesTimes(const Core::AbstractOutputPin* output) {
    const auto* const block =
        output == nullptr ? nullptr : dynamic_cast<const Core::Filter*>(output->getManager());
    return block != nullptr && getKnownType(block->getTypeName()).makesTimes;
}

bool KnownType::getStampsWallClock(std::string_view output) const {
    return std::any_of(wallClockOutputs.begin(), wallClockOutputs.end(),
                       [&](const char* stamped) { return stamped != nullptr && stamped == output; });
}

} // namespace Quillmere::Host
