// SPDX-License-Identifier: MIT
#include "host/description/GivenValues.h"

#include "host/description/Quantity.h"
#include "host/text/NearestName.h"

#include <cmath>
#include <limits>

namespace Quillmere::Host {

namespace {
/// Of two words the first or the second.
std::optional<bool> isFirst(const Value& value, const char* first, const char* second,
                            Complaints& complaints) {
    if (value.isScalar() && (value.text == first || value.text == second)) return value.text == first;
    complaints.add(value.where, value.describe(), std::string(first) + " or " + second,
                   nearestName(value.text, {first, second}));
    return std::nullopt;
}
} // namespace

std::optional<std::uint32_t> toBuffer(const Value& value, Complaints& complaints) {
    const auto size = toWhole(value, complaints);
    if (!size || !checkBuffer(*size, value.where, complaints)) return std::nullopt;
    return static_cast<std::uint32_t>(*size);
}

std::optional<bool> toIsNewestFirst(const Value& value, Complaints& complaints) {
    return isFirst(value, "newest", "oldest", complaints);
}

std::optional<Overflow> toOverflow(const Value& value, Complaints& complaints) {
    const auto isDropping = isFirst(value, "drop", "wait", complaints);
    if (!isDropping) return std::nullopt;
    return *isDropping ? Overflow::Drop : Overflow::Wait;
}

std::optional<double> toStreamTime(const Value& value, Complaints& complaints) {
    if (value.isMissing()) return std::nullopt;
    const auto seconds = toNumberOf(Quantity::Kind::Time, value, complaints);
    if (!seconds || !checkStreamTime(*seconds, value.where, value.describe(), complaints))
        return std::nullopt;
    return seconds;
}

bool checkBuffer(std::int64_t size, const Place& where, Complaints& complaints) {
    if (size >= 1 && size <= std::numeric_limits<std::int32_t>::max()) return true;
    complaints.add(where, "a buffer of " + std::to_string(size), "1 to 2147483647 samples");
    return false;
}

bool checkStreamTime(double seconds, const Place& where, const std::string& found, Complaints& complaints) {
    if (std::isfinite(seconds)) return true;
    complaints.add(where, found, "seconds of stream time");
    return false;
}

} // namespace Quillmere::Host
