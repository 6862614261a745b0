// SPDX-License-Identifier: MIT
#include "estimation/SlidingStdDev.h"

SlidingStdDev::SlidingStdDev() {
    reset(1);
}

void SlidingStdDev::reset(std::int32_t newCapacity) {
    Quillmere::Core::resizeSample(ring, 1, newCapacity);
    ring.setZero();
    capacity = newCapacity;
    count = 0;
    writeIndex = 0;
    sum = 0.0;
    sumOfSquares = 0.0;
}
