// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"

#include <cstdint>

namespace Quillmere::Host {

/// Steps the blocks of a layout, counts their steps, and takes the time of those of few passes. Requires of
/// every operation: the layout's gate is held.
class QUILLMERE_API StepTimer {
public:
    /// Passes from one whose steps are timed to the next: so many that looking at the clock costs less than a
    /// hundredth of a step; a prime, so that no steady pattern of passes falls in with it.
    static constexpr std::uint64_t kPassesBetweenMeasurements = 499;
    /// Early, since short runs have times too, but not at first, when everything is slow.
    static constexpr std::uint64_t kFirstMeasurement = 10;

    /// With false nothing is counted.
    explicit StepTimer(bool counts) : account(counts ? Account::Steps : Account::Nothing) {}

    /// [run]
    void beginPass() {
        if (account == Account::Nothing) return;
        const bool isMeasured = ++passes % kPassesBetweenMeasurements == kFirstMeasurement;
        account = isMeasured ? Account::StepsAndTimes : Account::Steps;
    }
    /// [run]
    void step(Core::Filter& block) {
        if (account == Account::StepsAndTimes)
            stepMeasured(block);
        else
            block.process();
        count(block);
    }
    /// Counts a step that somebody else has done. [run]
    void count(Core::Filter& block) const {
        if (account != Account::Nothing) block.stepTally.steps.add(1);
    }

private:
    /// What is taken down of the steps of a pass.
    enum class Account { Nothing, Steps, StepsAndTimes };

    static void stepMeasured(Core::Filter& block);

    Account account;
    std::uint64_t passes = 0;
};

} // namespace Quillmere::Host
