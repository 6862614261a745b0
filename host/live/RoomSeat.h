// SPDX-License-Identifier: MIT
#pragma once

#include "host/live/RoomBoard.h"
#include "host/live/SendRoom.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// A layout's seat at the board of those who wait for room in a link, and of those who make it.
///
/// In each turn the layout's thread calls `look` at first; then `getHasRoom` before a round or a pass, and
/// `endPass` behind it, or `endLook` where there is none; and at last `sleep`, where nothing is to be done.
class RoomSeat {
public:
    /// Neither is owned. [setup]
    RoomSeat(RoomBoard& roomBoard, Core::Synchronizer& layoutsGate)
        : board(roomBoard), gate(layoutsGate), number(roomBoard.enter(layoutsGate)) {}

    std::size_t getNumber() const { return number; }
    /// Takes up the links to other layouts that are to lose nothing. Requires: the gate is held, or no thread
    /// runs. [any, guarded]
    void watch(std::vector<SendRoom::Link> links) { sendRoom.watch(std::move(links)); }

    /// Requires of the four: the gate is held. [run]
    void look() { generation = board.getGeneration(); }
    /// Whether a round may begin, for all that the links to other layouts have to take; if not, the board
    /// knows of it.
    bool getHasRoom();
    void endPass(bool expects);
    /// `expects` tells whether the layout wakes by itself, `awaits` behind whose rounds.
    void endLook(bool expects, std::optional<std::size_t> awaits);

    /// Sleeps until `due`, or until something wakes the layout. Requires: no gate is held. [run]
    void sleep(Core::Synchronizer::Clock::time_point due);

private:
    RoomBoard& board;
    Core::Synchronizer& gate;
    const std::size_t number;
    SendRoom sendRoom;
    bool mayOverflow = false;           ///< The next round needs no room.
    bool isExpecting = false;           ///< As the last turn had it.
    std::optional<std::size_t> awaited; ///< Likewise.
    std::uint64_t generation = 0;       ///< Of links and layouts, at the last look.
};

} // namespace Quillmere::Host
