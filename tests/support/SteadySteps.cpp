// SPDX-License-Identifier: MIT
#include "tests/support/SteadySteps.h"

#include "framework/Quillmere.h"
#include "tests/support/Allocations.h"

#include <memory>
#include <vector>

namespace Support {

using namespace Quillmere::Core;

std::uint64_t allocationsOfAHundredSteps(Filter& block, const std::string& inputPin, const MatrixXd& sample) {
    OutputPin<MatrixXd> sender("sender", nullptr);
    sender.attach(block.getInputPin(inputPin), false);
    std::vector<std::unique_ptr<InputPin<MatrixXd>>> receivers;
    for (AbstractOutputPin* const output : block.getOutputPins()) {
        receivers.push_back(std::make_unique<InputPin<MatrixXd>>("receiver", nullptr));
        output->attach(*receivers.back(), false);
    }
    copySample(sender.data.value, sample);
    double time = 0.0;
    const auto step = [&] {
        sender.send(time += 0.01);
        block.process();
        for (const auto& receiver : receivers)
            if (receiver->hasData()) receiver->take();
    };
    step();
    step();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        step();
    return counter.count();
}

} // namespace Support
