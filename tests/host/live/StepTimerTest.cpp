// SPDX-License-Identifier: MIT
#include "host/live/StepTimer.h"

#include <gtest/gtest.h>

namespace {

using Quillmere::Core::Filter;
using Quillmere::Host::StepTimer;

class Block final : public Filter {
public:
    Block() : Filter("block", true) {}
    void process() override { ++steps; }
    const char* getTypeName() const override { return "Block"; }

    std::uint64_t steps = 0;
};

TEST(StepTimer, CountsEachStepAndTakesTheTimeOfAllThoseOfFewPasses) {
    StepTimer timer(true);
    Block first;
    Block second;
    constexpr std::uint64_t kPasses = 3 * StepTimer::kPassesBetweenMeasurements;
    for (std::uint64_t pass = 1; pass <= kPasses; ++pass) {
        timer.beginPass();
        timer.step(first);
        timer.step(second);
        const std::uint64_t reached =
            pass + StepTimer::kPassesBetweenMeasurements - StepTimer::kFirstMeasurement;
        ASSERT_EQ(first.stepTally.measuredSteps.get(), reached / StepTimer::kPassesBetweenMeasurements)
            << pass;
    }
    for (const Block* const block : {&first, &second}) {
        EXPECT_EQ(block->steps, kPasses);
        EXPECT_EQ(block->stepTally.steps.get(), kPasses);
        EXPECT_EQ(block->stepTally.measuredSteps.get(), 3u);
    }
}

TEST(StepTimer, CountsWhatSomebodyElseHasStepped) {
    StepTimer timer(true);
    Block block;
    timer.count(block);
    EXPECT_EQ(block.steps, 0u);
    EXPECT_EQ(block.stepTally.steps.get(), 1u);
}

TEST(StepTimer, OneThatIsNotToCountOnlySteps) {
    StepTimer timer(false);
    Block block;
    for (int pass = 0; pass < 20; ++pass) {
        timer.beginPass();
        timer.step(block);
    }
    timer.count(block);
    EXPECT_EQ(block.steps, 20u);
    EXPECT_EQ(block.stepTally.steps.get(), 0u);
    EXPECT_EQ(block.stepTally.measuredSteps.get(), 0u);
}

} // namespace
