// SPDX-License-Identifier: MIT
#include "host/live/LiveDrive.h"

#include <utility>

namespace Quillmere::Host {

void LiveDrive::end() {
    const std::lock_guard lock(state);
    isOver = true;
    hasEnded.notify_all();
}

void LiveDrive::cut(std::string reason) {
    RunEnding ofText;
    ofText.failure.swap(reason);
    cut(std::move(ofText));
}

void LiveDrive::cut(RunEnding reason) {
    const std::lock_guard lock(state);
    if (isCut) return;
    std::swap(ending, reason); // needs no memory, of which there may be none
    ending.isCutShort = true;
    isOver = isCut = true;
    hasEnded.notify_all();
}

RunEnding LiveDrive::getEnding() const {
    const std::lock_guard lock(state);
    return ending;
}

void LiveDrive::waitForEnd() const {
    std::unique_lock lock(state);
    hasEnded.wait(lock, [this] { return isOver || isCut; });
}

} // namespace Quillmere::Host
