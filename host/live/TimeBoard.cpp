// SPDX-License-Identifier: MIT
#include "host/live/TimeBoard.h"

#include <utility>

namespace Quillmere::Host {

void TimeBoard::enter(std::size_t layout, Core::Synchronizer& gate) {
    while (members.size() <= layout)
        members.emplace_back();
    members[layout].gate = &gate;
}

void TimeBoard::arrange(std::vector<std::vector<std::size_t>> companionsOfAll) {
    for (std::size_t i = 0; i < members.size(); ++i) {
        members[i].companions = std::move(companionsOfAll[i]);
        members[i].next = kNotKnown;
        setIsWaiting(members[i], false);
    }
}

bool TimeBoard::getMayBegin(std::size_t layout, double time) {
    Member& self = members[layout];
    if (self.companions.empty()) return true;
    tell(self, time);
    bool mayBegin = getIsInStep(self);
    if (mayBegin) self.ahead = 0;
    mayBegin = mayBegin || self.ahead < kMostAhead;
    if (mayBegin == !self.isWaiting.load(std::memory_order_relaxed)) return mayBegin;
    setIsWaiting(self, !mayBegin);
    // A companion that came to a later time before it could see who waits has stirred nobody.
    return mayBegin || getMayBegin(layout, time);
}

void TimeBoard::end(std::size_t layout) {
    if (!members[layout].companions.empty()) tell(members[layout], kNoMore);
}

/// Those who wait look behind their word that they do, and who tells his time looks for them behind that: one
/// of the two sees the other, both being sequentially consistent.
void TimeBoard::tell(Member& self, double time) {
    if (self.next.load(std::memory_order_relaxed) == time) return;
    self.next = time;
    if (waiters == 0) return;
    for (const std::size_t companion : self.companions) {
        Member& other = members[companion];
        if (other.isWaiting && !(other.next > time)) other.gate->stir();
    }
}

/// Whether no companion has an earlier round to come; notes one that has.
bool TimeBoard::getIsInStep(Member& self) const {
    const double time = self.next;
    for (const std::size_t companion : self.companions)
        if (time > members[companion].next) {
            self.awaited = companion;
            return false;
        }
    return true;
}

void TimeBoard::setIsWaiting(Member& self, bool flag) {
    if (self.isWaiting == flag) return;
    self.isWaiting = flag;
    if (flag)
        ++waiters;
    else
        --waiters;
}

} // namespace Quillmere::Host
