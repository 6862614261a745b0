// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/description/LayoutLinks.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Where layouts that wait for room in a link and those that make it find each other.
///
/// A layout whose link has no room begins no round: it says so here, looks once more, and sleeps. It is woken
/// when the reader has made room and when links or layouts have changed; and when waiting has lost its point,
/// because the reader is at rest and nothing moves that could give it a step. Then it goes on for one round,
/// and what the link loses is counted as ever. So a reader that doesn't take, whatever its reasons, holds
/// nobody for ever. Requires: the layouts that wait for each other make no loop.
class QUILLMERE_API RoomBoard {
public:
    using Input = Core::InputPin<Core::MatrixXd>;

    /// What a layout waits for.
    struct Wait {
        const Input* input = nullptr;
        std::size_t reader = 0;
        std::uint32_t needed = 1; ///< Room without which there is no round.
        std::uint32_t wanted = 1; ///< Room that is worth being woken for while the reader goes on.
    };

    /// Enters a layout by its gate, which is not owned, and gives back its number. [setup]
    std::size_t enter(Core::Synchronizer& gate);
    /// Who feeds whom by now, and whether anybody is to wait at all; wakes all who wait. Requires: all gates
    /// are held, or no thread runs. [any, guarded]
    void arrange(const LayoutLinks& links, bool isAnyWaiting);
    /// [any]
    bool getIsActive() const { return isActive.load(std::memory_order_relaxed); }
    /// Changes with each `arrange`. Requires: a gate is held. [any, guarded]
    std::uint64_t getGeneration() const { return generation; }

    /// The layout waits from now on, until `wake`: the caller looks at the link once more behind this, and
    /// what the reader takes behind that look is told. Requires: the layout's gate is held. [run]
    void announce(std::size_t layout, const Wait& wait);
    /// The layout is about to sleep, and if it doesn't wait, `isExpecting` tells whether it wakes by itself,
    /// `awaited` the one behind whose rounds it does.
    /// False when it has no reason to sleep, since waiting has no point or all has changed since `seen`, its
    /// last look at the generation. Requires: it holds no gate. [run]
    bool settle(std::size_t layout, bool isExpecting, std::optional<std::size_t> awaited, std::uint64_t seen);
    /// The layout is awake, or waits no more; true when it is to go on without room. [run]
    bool wake(std::size_t layout);
    /// Wakes those who wait for a link to `reader` that has by now what they want or, with `isLast`, what
    /// they need. Requires: the reader's gate is held. [run]
    void tellRoom(std::size_t reader, bool isLast) {
        if (waiters.load() != 0) tellWaiters(reader, isLast);
    }

private:
    /// `Waiting` is for room, `Behind` for another one's rounds.
    enum class Activity { Moving, Waiting, Expecting, Behind, Resting };
    struct Member {
        Core::Synchronizer* gate;
        Activity activity = Activity::Moving;
        Wait wait{};
        std::size_t awaited = 0; ///< Of one that is `Behind`.
        bool mayOverflow = false;
        bool mayMove = false; ///< For one look.
    };

    void tellWaiters(std::size_t reader, bool isLast);
    void setActivity(Member& member, Activity activity);
    void lookWhoMayMove();
    bool getIsReached(std::size_t layout) const;
    void releasePointless();

    std::mutex state;           ///< Taken behind a gate; gates are stirred under it, never taken.
    std::deque<Member> members; ///< Under `state`.
    LayoutLinks feeds;          ///< Under `state`.
    std::atomic<bool> isActive{false};
    std::atomic<unsigned> waiters{0}; ///< Members that wait; changed under `state`.
    std::atomic<std::uint64_t> generation{0};
};

} // namespace Quillmere::Host
