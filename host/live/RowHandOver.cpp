// SPDX-License-Identifier: MIT
#include "host/live/RowHandOver.h"

#include <algorithm>
#include <utility>

namespace Quillmere::Host {

void RowHandOver::watch(const std::vector<Core::Filter*>& blocks) {
    results.clear();
    for (Core::Filter* const block : blocks)
        if (auto* const end = dynamic_cast<ResultEnd*>(block)) results.push_back({block, end});
}

bool RowHandOver::getHoldsRows() const {
    return std::any_of(results.begin(), results.end(),
                       [](const Result& result) { return result.end->getHoldsRows(); });
}

/// Another pass like the last must not make a row wait for too long.
void RowHandOver::look(Clock::time_point now) {
    if (!firstHeld) firstHeld = now;
    const Clock::duration lastPass = now - std::exchange(lastLook, now);
    if (now - *firstHeld + lastPass >= kLongest) rest();
}

void RowHandOver::rest() {
    firstHeld.reset();
    for (const Result& result : results) {
        asked = result.block;
        if (result.end->getHoldsRows()) result.end->handOver();
    }
    asked = nullptr;
}

} // namespace Quillmere::Host
