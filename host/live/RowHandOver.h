// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "framework/core/Synchronizer.h"
#include "host/ends/ResultEnd.h"

#include <chrono>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// When the results of a layout hand their rows over to whoever reads along: when the layout is about to
/// rest, so at once where rows come one by one, and behind the pass in which the first of them has waited
/// long enough, where one row chases the next. Handing over is a call of the system; one for each row would
/// cost more than all else that happens to it.
///
/// Requires of every operation: the layout's gate is held, or no thread runs.
class QUILLMERE_API RowHandOver {
public:
    using Clock = Core::Synchronizer::Clock;
    /// A person sees no difference, and at full speed thousands of rows come in it.
    static constexpr std::chrono::milliseconds kLongest{10};

    /// Takes up the results among these blocks, which are not owned.
    void watch(const std::vector<Core::Filter*>& blocks);

    /// Behind a pass. `now` is a function that tells the time, and isn't asked where no row waits. Raises
    /// what results raise. [run]
    template <class Now>
    void endPass(Now now) {
        if (getHoldsRows()) look(now());
    }
    /// The layout is about to rest. Raises what results raise. [run]
    void rest();
    /// The result that is handing over; null between. [run]
    const Core::Filter* getAsked() const { return asked; }

private:
    struct Result {
        const Core::Filter* block;
        ResultEnd* end;
    };

    bool getHoldsRows() const;
    void look(Clock::time_point now);

    std::vector<Result> results;
    std::optional<Clock::time_point> firstHeld; ///< The end of the pass that made the first row that waits,
    Clock::time_point lastLook;                 ///< and that of the last pass with one.
    const Core::Filter* asked = nullptr;
};

} // namespace Quillmere::Host
