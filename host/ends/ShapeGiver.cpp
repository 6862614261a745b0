// SPDX-License-Identifier: MIT
#include "host/ends/ShapeGiver.h"

#include "host/ends/MainInput.h"
#include "host/ends/Source.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace Quillmere::Host {

std::span<const char* const> getShapeKeepers() {
    static constexpr const char* keepers[]{
        "FilterGain",     "FilterDeadband", "FilterButterworth",        "FilterButterworth_v2",
        "FilterBandPass", "FilterIIR",      "FilterSaturationDetector", "FilterSmartSaturationDetector"};
    return keepers;
}

const Core::AbstractOutputPin* shapeGiverOf(const Core::AbstractInputPin& input) {
    std::set<const Core::AbstractOutputPin*> seen;
    const Core::AbstractOutputPin* output = input.getConnectedOutput();
    while (output != nullptr && seen.insert(output).second) {
        const auto* const block = dynamic_cast<const Core::Filter*>(output->getManager());
        if (block == nullptr || dynamic_cast<const Source*>(block) != nullptr)
            return block == nullptr ? nullptr : output;
        const auto keepers = getShapeKeepers();
        const bool keeps = std::any_of(keepers.begin(), keepers.end(), [&](const char* type) {
            return std::string_view(type) == block->getTypeName();
        });
        const Core::AbstractInputPin* const before = keeps ? mainInputOf(*block) : nullptr;
        output = before == nullptr ? nullptr : before->getConnectedOutput();
    }
    return nullptr;
}

} // namespace Quillmere::Host
