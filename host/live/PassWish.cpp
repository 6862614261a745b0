// SPDX-License-Identifier: MIT
#include "host/live/PassWish.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

void PassWish::start() {
    behindPass = Wish::None;
    wish = Wish::PassIfAnyWaits;
}

void PassWish::takeUp(std::uint64_t mostPasses) {
    behindPass = Wish::PassIfAnyWaits;
    if (!getIsDraining()) passesLeft = mostPasses;
}

void PassWish::wake(Waker waker, std::uint64_t mostPasses) {
    if (waker == Waker::Nobody) return;
    if (wish == Wish::None) wish = Wish::PassIfAnyWaits;
    if (getIsDraining()) return; // who turns settings on and on doesn't hold up the end
    if (waker == Waker::Somebody) wish = Wish::Pass;
    passesLeft = std::max<std::uint64_t>(mostPasses, 1);
}

void PassWish::beginDrain(std::uint64_t mostPasses) {
    phase = Phase::Draining;
    passesLeft = mostPasses;
    wish = Wish::PassIfAnyWaits;
}

bool PassWish::getIsWanted(WaitingSamples& waiting) {
    if (passesLeft == 0) return false;
    if (wish == Wish::PassIfAnyWaits) {
        waiting.count();
        wish = waiting.getIsAny() ? Wish::Pass : Wish::None;
    }
    return wish == Wish::Pass;
}

void PassWish::settle() {
    wish = std::exchange(behindPass, Wish::None);
}

void PassWish::look(WaitingSamples& waiting, bool isDriven) {
    const bool isWakingOnly = isDriven && !getIsDraining();
    if (isWakingOnly && !waiting.getHasWakingLinks()) return;
    using Where = WaitingSamples::Where;
    if (waiting.countPass(isWakingOnly ? Where::WakingLinks : Where::Anywhere)) wish = Wish::Pass;
}

} // namespace Quillmere::Host
