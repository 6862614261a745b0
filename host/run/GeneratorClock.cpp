// SPDX-License-Identifier: MIT
#include "host/run/GeneratorClock.h"

#include "host/run/RunOutcome.h"
#include "host/text/Complaint.h"

#include <Poco/Timestamp.h>

namespace Quillmere::Host {

namespace {
/// So often in a row a clock may show the same time: the wall clock is coarser than a round.
constexpr std::uint64_t kMostStepsOfOneTime = 1000000;
} // namespace

GeneratorClock::GeneratorClock(const std::vector<Core::Filter*>& blocks)
    : startOfRun(static_cast<double>(Poco::Timestamp().utcTime()) * 1e-7) {
    for (Core::Filter* const candidate : blocks) {
        if (!candidate->getInputPins().empty() || candidate->getOutputPins().empty()) continue;
        output = dynamic_cast<const Core::OutputPin<Core::MatrixXd>*>(candidate->getOutputPins().front());
        if (output == nullptr) continue;
        block = candidate;
        return;
    }
}

void GeneratorClock::step() {
    const double before = time;
    if (block != nullptr) {
        block->process();
        time = output->data.timeStamp;
    }
    stepsOfOneTime = time > before ? 0 : stepsOfOneTime + 1;
}

bool GeneratorClock::getIsReached(const RunLimit& limit, std::uint64_t rounds) const {
    if (limit.rounds) return rounds >= *limit.rounds;
    if (!limit.seconds) return true;
    if (stepsOfOneTime > kMostStepsOfOneTime)
        throw RunException(Complaint::sentence(
            {},
            "the time of " + (block == nullptr ? std::string("the graph") : "'" + block->getName() + "'") +
                " stands still, so no duration ends the run",
            "one that goes on, or a number of rounds"));
    return rounds > 0 && getElapsed() >= *limit.seconds;
}

} // namespace Quillmere::Host
