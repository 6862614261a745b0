// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/run/WaitingSamples.h"

#include <cstdint>

namespace Quillmere::Host {

/// Whether a layout has a reason for a pass that is no round, and how many such passes it may make before
/// what goes round in a loop is left alone.
///
/// A sample that woke the layout may have gone into the pass before; there is no other for it then, since
/// some blocks send in each of their steps, whether anything came or not. Somebody who wants a look gets one.
/// Requires of every operation: the layout's gate is held, or no thread runs.
class QUILLMERE_API PassWish {
public:
    /// What woke the layout.
    enum class Waker { Nobody, Sample, Somebody };

    /// Before the layout's thread starts: what was set until then is no reason for a pass; what waits in a
    /// link is.
    void start();
    /// Links have been taken up, whose samples are worth so many passes. Behind the pass that is under way
    /// they are looked at.
    void takeUp(std::uint64_t mostPasses);
    /// Takes note of what woke the layout.
    void wake(Waker waker, std::uint64_t mostPasses);
    /// Nothing new comes: from now on only what is in the links moves, so many passes long.
    void beginDrain(std::uint64_t mostPasses);
    bool getIsDraining() const { return phase == Phase::Draining; }

    /// Whether a pass is wanted and may be; looks at the links where nobody knows.
    bool getIsWanted(WaitingSamples& waiting);
    /// The pass that is wanted begins.
    void take() { --passesLeft; }
    /// Behind a pass of all blocks or a round: nobody who wished one before it has a wish any more.
    void settle();
    /// Whether what that has moved, and what followed it, asks for another one. With `isDriven` there are
    /// rounds to come, which bring what doesn't wake the layout on its way.
    void look(WaitingSamples& waiting, bool isDriven);
    /// Both.
    void endPass(WaitingSamples& waiting, bool isDriven) {
        settle();
        look(waiting, isDriven);
    }
    /// Whether nothing speaks for another pass.
    bool getMayRest() const { return wish == Wish::None; }

private:
    enum class Wish { None, PassIfAnyWaits, Pass };
    enum class Phase { Driven, Draining };

    Wish wish = Wish::None;
    Wish behindPass = Wish::None; ///< What is wished as soon as the pass has ended, whatever it moves.
    Phase phase = Phase::Driven;
    std::uint64_t passesLeft = 0;
};

} // namespace Quillmere::Host
