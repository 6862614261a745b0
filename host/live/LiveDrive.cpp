// SPDX-License-Identifier: MIT
#include "host/live/LiveDrive.h"

namespace Quillmere::Host {

void LiveDrive::end() {
    const std::lock_guard lock(state);
    isOver = true;
    hasEnded.notify_all();
}

void LiveDrive::cut(std::string reason) {
    const std::lock_guard lock(state);
    if (isCut) return;
    failure.swap(reason); // needs no memory, of which there may be none
    isOver = isCut = true;
    hasEnded.notify_all();
}

std::string LiveDrive::getFailure() const {
    const std::lock_guard lock(state);
    return failure;
}

void LiveDrive::waitForEnd() const {
    std::unique_lock lock(state);
    hasEnded.wait(lock, [this] { return isOver || isCut; });
}

} // namespace Quillmere::Host
