// SPDX-License-Identifier: MIT
#include "host/inspection/LogHistogram.h"

namespace Quillmere::Host {

std::optional<double> LogHistogram::getPercentile(double part) const {
    std::uint64_t count = 0;
    for (const Bin& bin : bins)
        count += bin.count;
    std::uint64_t before = 0;
    for (const Bin& bin : bins) {
        before += bin.count;
        if (bin.count > 0 && static_cast<double>(before) >= part * static_cast<double>(count))
            return bin.sum / static_cast<double>(bin.count);
    }
    return std::nullopt;
}

} // namespace Quillmere::Host
