// SPDX-License-Identifier: MIT
#pragma once

#include <limits>

namespace Everyday {

/// A largest value and where it stands: in a signal its time, in a spectrum its frequency.
struct Peak {
    double place = 0.0;
    double value = 0.0;
    long index = 0; ///< of the value, counted from the begin
};

/// Finds the peaks of a course as its values come.
///
/// A peak is what is higher than all around it until the course has fallen by the prominence on both sides,
/// so it is known when the course has fallen that far behind it. On a whole course that gives the peaks
/// whose prominence (the least one has to come down on the way to something higher, or to an end) is as
/// large. Of a flat top the first value counts. Of peaks nearer to each other than the distance the higher
/// stays, of equal ones the first: each is compared with the one that stayed before it.
class PeakFinder {
public:
    struct Rules {
        double height = 0.0;     ///< The least value of a peak.
        double prominence = 0.0; ///< 0 takes every value with a lower one on each side.
        double distance = 0.0;   ///< Between the places of two peaks at least.
        /// Where peaks count; what is beyond tells their prominence all the same.
        double from = -std::numeric_limits<double>::infinity();
        double to = std::numeric_limits<double>::infinity();
    };

    void begin(const Rules& newRules);
    /// Takes the next value; a not-a-number is no value, and ends what came before. True where a peak is
    /// decided by it, which is then in `found`. Requires: no place lies before the last.
    bool take(double place, double value, Peak& found);
    /// The last peak, which no later one can take the place of any more; true if there is one.
    bool end(Peak& found);

private:
    bool getIsFar(double span) const;
    bool confirm(Peak& found);
    bool release(double place, Peak& found);

    Rules rules;
    long count = 0;
    bool hasValue = false;
    bool isRising = false; ///< the course has risen by the prominence from `valley`: `top` may become a peak
    double valley = 0.0;   ///< the least value since the last peak
    Peak top;              ///< the largest value since `valley`
    bool hasWaiting = false;
    Peak waiting; ///< a peak that a higher one within the distance would replace
};

} // namespace Everyday
