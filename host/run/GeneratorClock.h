// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/run/RunLimit.h"

#include <cstdint>
#include <vector>

namespace Quillmere::Host {

/// The generator that tells the time where there are no sources: the first of some blocks that has an output
/// and no input. It steps before the others, and its time stamp is the round's time.
class QUILLMERE_API GeneratorClock {
public:
    /// `blocks` in the order in which they run; none of them is owned. There may be no generator among them.
    explicit GeneratorClock(const std::vector<Core::Filter*>& blocks);

    /// Null when there is none.
    Core::Filter* getBlock() const { return block; }
    /// Steps the generator, if there is one, and reads its time. Requires: its layout's gate is held. [run]
    void step();

    /// Seconds, of the last step.
    double getTime() const { return time; }
    /// Whether the time is that of the wall clock, which began with the run, and not one of the generator's
    /// own, from 0.
    bool getIsWallClock() const { return time >= startOfRun; }
    /// Seconds since the begin of its time.
    double getElapsed() const { return getIsWallClock() ? time - startOfRun : time; }
    /// Whether so many rounds have come to the limit. A limit without anything in it is reached at once.
    /// Raises `RunException` when only a time ends the run and the clock's stands still.
    bool getIsReached(const RunLimit& limit, std::uint64_t rounds) const;

private:
    Core::Filter* block = nullptr;
    const Core::OutputPin<Core::MatrixXd>* output = nullptr; ///< What it stamps.
    double startOfRun;                                       ///< Seconds, as blocks stamp the wall clock.
    double time = 0.0;
    std::uint64_t stepsOfOneTime = 0;
};

} // namespace Quillmere::Host
