// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Percentiles of numbers above 0 as they come, in memory that doesn't grow.
///
/// Numbers are sorted into bins by their size, 64 to the octave: 1.6 % wide or narrower. A percentile is the
/// mean of the bin that holds it, so it is off by less than that, and exact where all of the bin are equal.
class QUILLMERE_API LogHistogram {
public:
    LogHistogram() : bins(kLastBin - kFirstBin + 1) {}

    /// What isn't above 0 and finite is left out.
    void take(double number) {
        if (!(number > 0.0 && number < std::numeric_limits<double>::infinity())) return;
        Bin& bin = bins[binOf(number)];
        ++bin.count;
        bin.sum += number;
    }

    /// What a part of the numbers, from 0 to 1, don't exceed; nothing of none. Of two in the middle it is
    /// the smaller.
    std::optional<double> getPercentile(double part) const;

private:
    struct Bin {
        std::uint64_t count = 0;
        double sum = 0.0;
    };

    // A number's exponent and the upper bits of its fraction, taken as one, grow with it.
    static constexpr int kFractionBits = 6;
    static constexpr int kBias = 1023; ///< Of a 64-bit float's exponent.
    static constexpr std::uint64_t kFirstBin = std::uint64_t{kBias - 44} << kFractionBits;
    static constexpr std::uint64_t kLastBin = (std::uint64_t{kBias + 36} << kFractionBits) - 1;

    /// What is smaller than 2^-44 or not below 2^36 is in the outermost bin.
    static std::size_t binOf(double number) {
        constexpr int kBitsBelow = std::numeric_limits<double>::digits - 1 - kFractionBits;
        const std::uint64_t size = std::bit_cast<std::uint64_t>(number) >> kBitsBelow;
        return static_cast<std::size_t>(std::clamp(size, kFirstBin, kLastBin) - kFirstBin);
    }

    std::vector<Bin> bins;
};

} // namespace Quillmere::Host
