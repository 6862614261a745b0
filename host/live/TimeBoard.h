// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <limits>
#include <vector>

namespace Quillmere::Host {

/// Where layouts whose samples come together somewhere see how far each has come in stream time, so that none
/// runs away from the others: at a pace the clock keeps them together, and without one nothing else does.
///
/// A layout begins a round whose time no other has yet to come to, and `kMostAhead` beyond those; then it
/// waits for the one that is behind. Of all of them the one with the earliest time never waits here. Requires
/// of every operation but `enter` and `arrange`: the gate of the layout that is named is held.
class QUILLMERE_API TimeBoard {
public:
    /// Rounds that a layout may be ahead of another one: so few that who joins both has little to keep, so
    /// many that threads needn't take turns at each.
    static constexpr unsigned kMostAhead = 16;

    /// Enters a layout, by its number there and its gate, which is not owned. [setup]
    void enter(std::size_t layout, Core::Synchronizer& gate);
    /// Whom each layout is to keep in step with; nobody where there are none. All look again behind this.
    /// Requires: all gates are held, or no thread runs. [any, guarded]
    void arrange(std::vector<std::vector<std::size_t>> companionsOfAll);

    /// Whether a layout may begin its next round, which has this time; if not, it is stirred when it may.
    /// [run]
    bool getMayBegin(std::size_t layout, double time);
    /// It has begun that round. [run]
    void countRound(std::size_t layout) { ++members[layout].ahead; }
    /// It has no more rounds. [run]
    void end(std::size_t layout);
    /// For whom it waits. Requires: it may not begin its round. [run]
    std::size_t getAwaited(std::size_t layout) const { return members[layout].awaited; }

private:
    static constexpr double kNotKnown = -std::numeric_limits<double>::infinity();
    static constexpr double kNoMore = std::numeric_limits<double>::infinity();

    struct Member {
        Core::Synchronizer* gate = nullptr;
        std::vector<std::size_t> companions;
        std::atomic<double> next{kNotKnown}; ///< The time of the round that comes, in seconds.
        std::atomic<bool> isWaiting{false};
        unsigned ahead = 0;      ///< Rounds since it was behind, or as far as, all others; the layout's own.
        std::size_t awaited = 0; ///< Likewise.
    };

    void tell(Member& self, double time);
    bool getIsInStep(Member& self) const;
    void setIsWaiting(Member& self, bool flag);

    std::deque<Member> members;
    std::atomic<unsigned> waiters{0};
};

} // namespace Quillmere::Host
