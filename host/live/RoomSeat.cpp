// SPDX-License-Identifier: MIT
#include "host/live/RoomSeat.h"

#include <algorithm>

namespace Quillmere::Host {

bool RoomSeat::getHasRoom() {
    if (!sendRoom.getIsAny() || mayOverflow) return true;
    const SendRoom::Link* announced = nullptr;
    for (;;) {
        const SendRoom::Link* const full = sendRoom.findFull();
        if (full == nullptr) break;
        if (full == announced) return false; // at the second look: what the reader takes from now on is told
        announced = full;
        const std::uint32_t capacity = full->input->getBufferCapacity();
        board.announce(number, {.input = full->input,
                                .reader = full->reader,
                                .needed = full->getNeeded(),
                                .wanted = std::max(full->getNeeded(), capacity / 2)});
    }
    if (announced != nullptr) board.wake(number);
    return true;
}

void RoomSeat::endPass(bool expects) {
    mayOverflow = false;
    isExpecting = expects;
    awaited.reset();
    sendRoom.countRound();
    board.tellRoom(number, false);
}

void RoomSeat::endLook(bool expects, std::optional<std::size_t> awaits) {
    mayOverflow = false;
    isExpecting = expects;
    awaited = awaits;
    board.tellRoom(number, true);
}

void RoomSeat::sleep(Core::Synchronizer::Clock::time_point due) {
    // Where nobody waits for anybody, nobody asks who sleeps.
    if (!board.getIsActive()) return gate.sleep(due);
    if (board.settle(number, isExpecting, awaited, generation)) gate.sleep(due);
    mayOverflow = board.wake(number);
}

} // namespace Quillmere::Host
