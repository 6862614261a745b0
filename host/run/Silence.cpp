// SPDX-License-Identifier: MIT
#include "host/run/Silence.h"

#include "framework/Quillmere.h"
#include "host/text/Counted.h"
#include "host/ends/Source.h"
#include "host/ends/MainInput.h"

#include <set>

namespace Quillmere::Host {

namespace {
/// A block that wasn't sent anything is silent because of those before it; one that was is silent by itself.
std::string reasonOf(const Core::Filter& block, const Core::AbstractOutputPin& output) {
    const std::string name = "'" + block.getName() + "' (" + block.getTypeName() + ")";
    const std::string none =
        block.getOutputPins().size() == 1 ? "none" : "none from '" + output.getName() + "'";
    if (const auto* const source = dynamic_cast<const Source*>(&block))
        return name + " read " + counted(source->getRows(), "row") + " and sent " + none;
    Core::AbstractInputPin* const input = mainInputOf(block);
    const std::uint64_t received = input == nullptr ? 0 : input->getCounts().received;
    if (received == 0) return name + " received nothing and sent " + none;
    return name + " received " + counted(received, "sample") + " and sent " + none;
}
} // namespace

std::string reasonOfSilence(const Core::AbstractInputPin& input) {
    std::set<const Core::PinManager*> seen;
    const Core::AbstractOutputPin* output = input.getConnectedOutput();
    for (;;) {
        const auto& block = dynamic_cast<const Core::Filter&>(*output->getManager());
        if (!seen.insert(&block).second) return "'" + block.getName() + "' waits for what it sends itself";
        Core::AbstractInputPin* const before = mainInputOf(block);
        const bool isFed = before != nullptr && before->getConnectedOutput() != nullptr;
        if (!isFed || before->getCounts().received > 0) return reasonOf(block, *output);
        output = before->getConnectedOutput();
    }
}

} // namespace Quillmere::Host
