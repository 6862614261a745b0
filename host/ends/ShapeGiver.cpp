// SPDX-License-Identifier: MIT
#include "host/ends/ShapeGiver.h"

#include "host/ends/MainInput.h"
#include "host/ends/Source.h"
#include "host/plugins/KnownTypes.h"

#include <set>

namespace Quillmere::Host {

const Core::AbstractOutputPin* shapeGiverOf(const Core::AbstractInputPin& input) {
    std::set<const Core::AbstractOutputPin*> seen;
    const Core::AbstractOutputPin* output = input.getConnectedOutput();
    while (output != nullptr && seen.insert(output).second) {
        const auto* const block = dynamic_cast<const Core::Filter*>(output->getManager());
        if (block == nullptr || dynamic_cast<const Source*>(block) != nullptr)
            return block == nullptr ? nullptr : output;
        const bool keeps = getKnownType(block->getTypeName()).keepsShape;
        const Core::AbstractInputPin* const before = keeps ? mainInputOf(*block) : nullptr;
        output = before == nullptr ? nullptr : before->getConnectedOutput();
    }
    return nullptr;
}

} // namespace Quillmere::Host
