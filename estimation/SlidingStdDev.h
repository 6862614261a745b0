// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <cmath>
#include <cstdint>

/// The standard deviation of the last `capacity` numbers pushed, at a cost that does not depend on
/// `capacity`.
///
///     stdDev = sqrt(Q / n - S * S / (n * n))
///
/// with n the numbers in the window, S their running sum and Q the running sum of their squares: the
/// population form. While the window is not full, n counts the pushes, so the figure covers what was seen so
/// far.
///
/// Kept as is: the running sums are never formed anew from the window, so rounding drift stays until `reset`;
/// nothing is clamped, so a variance that rounds below zero gives not-a-number, and a not-a-number once
/// pushed stays in the sums after it has left the window.
class SlidingStdDev {
public:
    /// A window of one number.
    SlidingStdDev();

    /// An empty window for the last `newCapacity` numbers. Requires: newCapacity >= 0; a window of 0 takes
    /// every push and keeps none. Raises what `resizeSample` raises.
    void reset(std::int32_t newCapacity);

    void push(double x);

    /// 0 for an empty window.
    double stdDev() const;

private:
    std::int32_t count = 0;         ///< numbers in the window
    std::int32_t capacity = 0;      ///< numbers that fit
    Quillmere::Core::MatrixXd ring; ///< 1 by capacity; 0 where nothing was written yet
    std::int32_t writeIndex = 0;    ///< where the next number goes: the oldest one's place
    double sum = 0.0;
    double sumOfSquares = 0.0;
};

inline void SlidingStdDev::push(double x) {
    if (capacity < 1) return;
    double& slot = ring.data()[writeIndex];
    const double old = slot;
    slot = x;
    if (++writeIndex == capacity) writeIndex = 0;
    // Order matters: the difference is formed first, then added.
    sum = sum + (x - old);
    sumOfSquares = (x * x - old * old) + sumOfSquares;
    if (count < capacity) ++count;
}

inline double SlidingStdDev::stdDev() const {
    if (count < 1) return 0.0;
    const double n = count;
    return std::sqrt(sumOfSquares / n - sum * sum / (n * n));
}
