// SPDX-License-Identifier: MIT
#include "host/live/LiveDrive.h"

namespace Quillmere::Host {

void LiveDrive::end() {
    const std::lock_guard lock(state);
    isOver = true;
    hasEnded.notify_all();
}

void LiveDrive::cut(const std::string& reason) {
    const std::lock_guard lock(state);
    if (isCut) return;
    failure = reason;
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
