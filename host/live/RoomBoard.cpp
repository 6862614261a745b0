// SPDX-License-Identifier: MIT
#include "host/live/RoomBoard.h"

namespace Quillmere::Host {

std::size_t RoomBoard::enter(Core::Synchronizer& gate) {
    const std::lock_guard lock(state);
    members.push_back({.gate = &gate});
    return members.size() - 1;
}

void RoomBoard::arrange(const LayoutLinks& links, bool isAnyWaiting) {
    const std::lock_guard lock(state);
    const bool wasActive = isActive;
    feeds = links;
    isActive = isAnyWaiting;
    ++generation;
    if (!isAnyWaiting && !wasActive) return;
    for (Member& member : members) {
        setActivity(member, Activity::Moving);
        member.gate->stir(); // who sleeps says anew what it does
    }
}

void RoomBoard::announce(std::size_t layout, const Wait& wait) {
    const std::lock_guard lock(state);
    members[layout].wait = wait;
    setActivity(members[layout], Activity::Waiting);
}

bool RoomBoard::settle(std::size_t layout, bool isExpecting, std::optional<std::size_t> awaited,
                       std::uint64_t seen) {
    const std::lock_guard lock(state);
    if (seen != generation) return false;
    Member& self = members[layout];
    if (self.activity != Activity::Waiting && !self.mayOverflow)
        setActivity(self, awaited ? Activity::Behind : isExpecting ? Activity::Expecting : Activity::Resting);
    if (awaited) self.awaited = *awaited;
    if (waiters != 0) releasePointless();
    return !self.mayOverflow;
}

bool RoomBoard::wake(std::size_t layout) {
    const std::lock_guard lock(state);
    Member& self = members[layout];
    const bool mayOverflow = self.mayOverflow;
    self.mayOverflow = false;
    setActivity(self, Activity::Moving);
    return mayOverflow;
}

void RoomBoard::tellWaiters(std::size_t reader, bool isLast) {
    const std::lock_guard lock(state);
    for (Member& member : members) {
        const Wait& wait = member.wait;
        if (member.activity == Activity::Waiting && wait.reader == reader &&
            wait.input->getRoom() >= (isLast ? wait.needed : wait.wanted))
            member.gate->stir();
    }
}

void RoomBoard::setActivity(Member& member, Activity activity) {
    if (member.activity == Activity::Waiting) --waiters;
    member.activity = activity;
    if (member.activity == Activity::Waiting) ++waiters;
}

/// Who is awake or wakes by itself, whom such a one feeds, and who waits for such a one or its rounds.
void RoomBoard::lookWhoMayMove() {
    for (Member& member : members)
        member.mayMove = member.activity == Activity::Moving || member.activity == Activity::Expecting ||
                         member.gate->getHasReasons();
    for (bool hasChanged = true; hasChanged;) {
        hasChanged = false;
        for (std::size_t i = 0; i < members.size(); ++i) {
            if (members[i].mayMove || !getIsReached(i)) continue;
            members[i].mayMove = hasChanged = true;
        }
    }
}

bool RoomBoard::getIsReached(std::size_t layout) const {
    const Member& member = members[layout];
    if (member.activity == Activity::Waiting && members[member.wait.reader].mayMove) return true;
    if (member.activity == Activity::Behind && members[member.awaited].mayMove) return true;
    for (std::size_t other = 0; other < feeds.getCount(); ++other)
        if (members[other].mayMove && feeds.getIsFeeding(other, layout)) return true;
    return false;
}

/// Of those that wait in a row the last goes first: the others wait for it.
void RoomBoard::releasePointless() {
    lookWhoMayMove();
    for (Member& member : members) {
        if (member.activity != Activity::Waiting) continue;
        const Member& reader = members[member.wait.reader];
        if (reader.mayMove || reader.activity == Activity::Waiting) continue;
        member.mayOverflow = true;
        setActivity(member, Activity::Moving);
        member.gate->stir();
    }
}

} // namespace Quillmere::Host
