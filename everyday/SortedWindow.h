// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

namespace Everyday {

/// The median of the last samples of a stream, each element of a sample by itself: the middle one of the
/// values in order, half the sum of the two in the middle where they are even in number, not-a-number where
/// any is. The values are kept in order; -0.0 stands before 0.0, so that what leaves is what came.
class SortedWindow {
public:
    /// Forgets everything. Requires: `samples` is 1 at least. Raises `std::bad_alloc`, with nothing changed.
    void begin(std::size_t samples, std::size_t elements);
    /// Takes a sample, and writes the median of the last samples, of as many as there are, to `result`.
    void take(const double* sample, double* result);
    /// How many samples the window holds.
    std::size_t getCount() const { return count; }

private:
    double takeOne(std::size_t element, double value);

    std::size_t length = 1;
    std::size_t width = 0; ///< elements of a sample
    std::size_t count = 0;
    std::size_t oldest = 0;         ///< where the next sample goes
    std::vector<double> samples;    ///< in the order in which they came, `length` for each element
    std::vector<double> sorted;     ///< the numbers among them in order, likewise
    std::vector<std::size_t> sizes; ///< how many numbers those are
};

} // namespace Everyday
