// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

namespace Everyday {

/// Statistics over the last samples of a stream, each element of a sample by itself.
///
/// Nothing is ever subtracted: what a window holds is combined from the values in it and from nothing else,
/// so no error piles up however long the stream is, and an infinity or a not-a-number is gone as soon as it
/// has left the window. Samples come in rounds as long as the window: at the begin of a round the samples
/// of the one before are combined from the newest back to each of them, and during the round those of the
/// new one as they come, so that a window is the one combined with the other. That is two combinations a
/// sample, whatever the length.
class MovingWindow {
public:
    enum class Kind { Mean, StandardDeviation, Rms, Minimum, Maximum, Range };

    /// Forgets everything. Requires: `samples` is 1 at least. Raises `std::bad_alloc`, with nothing changed.
    void begin(Kind statistic, std::size_t samples, std::size_t elements);
    /// Takes a sample, and writes the statistic of the last samples, of as many as there are, to `result`.
    void take(const double* sample, double* result);
    /// How many samples the window holds.
    std::size_t getCount() const { return count; }

private:
    template <class Rule>
    void takeBy(const double* sample, double* result);
    template <class Rule>
    void combineBackwards();

    Kind kind = Kind::Mean;
    std::size_t length = 1;
    std::size_t width = 0;    ///< elements of a sample
    std::size_t position = 0; ///< samples of the round so far
    std::size_t count = 0;
    // A sample's place holds it until the round is over, then what it and all newer ones of that round
    // give. What needs two numbers has the second in `seconds`.
    std::vector<double> firsts;
    std::vector<double> seconds;
    std::vector<double> newFirsts; ///< what the samples of the round give
    std::vector<double> newSeconds;
};

} // namespace Everyday
