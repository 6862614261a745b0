// SPDX-License-Identifier: MIT
#include "everyday/PeakFinder.h"

namespace Everyday {

void PeakFinder::begin(const Rules& newRules) {
    rules = newRules;
    count = 0;
    hasValue = isRising = hasWaiting = false;
}

bool PeakFinder::take(double place, double value, Peak& found) {
    const long index = count++;
    if (value != value) { // nobody knows how high it was
        hasValue = isRising = false;
        return release(place, found);
    }
    if (!hasValue) {
        hasValue = true;
        valley = value;
        return release(place, found);
    }
    bool isFound = false;
    if (isRising) {
        if (value > top.value)
            top = {place, value, index};
        else if (getIsFar(top.value - value)) {
            isFound = confirm(found);
            isRising = false;
            valley = value;
        }
    } else if (value < valley) {
        valley = value;
    } else if (getIsFar(value - valley)) {
        isRising = true;
        top = {place, value, index};
    }
    return isFound || release(place, found);
}

bool PeakFinder::end(Peak& found) {
    if (!hasWaiting) return false;
    hasWaiting = false;
    found = waiting;
    return true;
}

bool PeakFinder::getIsFar(double span) const {
    return span > 0.0 && span >= rules.prominence;
}

/// `top` is a peak. True where it shows that no later one can replace the one that waits.
bool PeakFinder::confirm(Peak& found) {
    if (!(top.value >= rules.height && top.place >= rules.from && top.place <= rules.to)) return false;
    const bool isNear = hasWaiting && top.place - waiting.place < rules.distance;
    if (isNear && !(top.value > waiting.value)) return false;
    const bool isFound = hasWaiting && !isNear;
    if (isFound) found = waiting;
    waiting = top;
    hasWaiting = true;
    return isFound;
}

/// Gives out the peak that waits as soon as whatever may still become one is too far away from it.
bool PeakFinder::release(double place, Peak& found) {
    if (!hasWaiting || place - waiting.place < rules.distance) return false;
    if (isRising && top.place - waiting.place < rules.distance) return false;
    return end(found);
}

} // namespace Everyday
