// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SampleRate.h"
#include "host/ends/SourceAccount.h"
#include "host/ends/StepRate.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace Quillmere::Host {

/// Looks at the time stamps of a recording as they come, in a few nanoseconds each and in memory that doesn't
/// grow.
///
/// What is a gap is known only when the median step is, at the end: a recording may begin with a gap, and the
/// rate that its beginning has may be another than that of the rest. So nothing is judged meanwhile. Steps
/// are sorted into bins by their size, sixteen to the octave (6 % wide or narrower), each with its count, its
/// sum and its first spot. The median step is the mean of the bin that holds the middle step; a bin is one of
/// jumps when its mean is more than ten median steps. Both are off by no more than a bin's width, and exact
/// where all steps of a bin are equal, as they are in a steady recording.
class QUILLMERE_API TimeStampWatch {
public:
    TimeStampWatch();

    /// Seconds, finite. `row` and `line` as in `SourceAccount::Spot`.
    void take(double time, std::uint64_t row, std::uint64_t line) {
        const double step = time - last;
        if (!(step > 0.0)) {
            takeOddStep({row, line, last, time});
        } else {
            Bin& bin = bins[binOf(step)];
            if (bin.count == 0) beginBin(bin, {row, line, last, time});
            ++bin.count;
            bin.sum += step;
        }
        last = time;
    }

    /// Goes on from a row whose step is told of elsewhere. Requires: it isn't the first.
    void skipTo(double time) { last = time; }

    /// Fills in what is to be told of times and steps.
    void tell(SourceAccount& account) const;
    /// As `RateMeter`, of all steps so far; those of a bin are taken as one that is as long as their mean.
    std::optional<SampleRate> measureRate() const;
    /// The steps from here on are another part of the recording, for its rate. Done once.
    void beginPart();

private:
    struct Bin {
        std::uint64_t count = 0;
        double sum = 0.0; ///< Seconds, of its steps.
        SourceAccount::Spot first;
    };

    // A number's exponent and the upper bits of its fraction, taken as one, grow with it.
    static constexpr int kFractionBits = 4;
    static constexpr int kSmallestPower = -44; ///< 2^-44 s: less than stamps of nanoseconds can differ by.
    static constexpr int kLargestPower = 36;   ///< Two thousand years; nanoseconds taken for seconds fit too.
    static constexpr int kBias = 1023;         ///< Of a 64-bit float's exponent.
    static constexpr std::uint64_t kFirstBin = std::uint64_t{kBias + kSmallestPower} << kFractionBits;
    static constexpr std::uint64_t kLastBin = (std::uint64_t{kBias + kLargestPower} << kFractionBits) - 1;

    /// What is smaller than the smallest or larger than the largest is in the outermost bin. Requires: above
    /// 0.
    static std::size_t binOf(double step) {
        constexpr int kBitsBelow = std::numeric_limits<double>::digits - 1 - kFractionBits;
        const std::uint64_t size = std::bit_cast<std::uint64_t>(step) >> kBitsBelow;
        return static_cast<std::size_t>(std::clamp(size, kFirstBin, kLastBin) - kFirstBin);
    }

    void takeOddStep(const SourceAccount::Spot& spot);
    void beginBin(Bin& bin, const SourceAccount::Spot& spot);
    void noteFirstStep(const SourceAccount::Spot& spot);
    std::optional<double> medianStep() const;

    std::vector<Bin> bins;
    double last = std::numeric_limits<double>::quiet_NaN(); ///< Seconds; not-a-number before the first row.
    double first = 0.0;                                     ///< Seconds.
    std::optional<double> firstStep;                        ///< Seconds.
    SourceAccount::Finding backward;
    SourceAccount::Finding equal;
    std::vector<StepGroup> firstPart; ///< For each bin what was in it when the next part began; else nothing,
    std::uint64_t oddInFirstPart = 0; ///< and how many steps that didn't lead forward.
};

} // namespace Quillmere::Host
