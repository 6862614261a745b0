// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"
#include "host/description/Value.h"

#include <cstdint>
#include <optional>

namespace Quillmere::Host {

// What a connection and an entry of the timeline may say, of values without parameters. What isn't such is a
// complaint and gives nothing.
std::optional<std::uint32_t> toBuffer(const Value& value, Complaints& complaints);
std::optional<bool> toIsNewestFirst(const Value& value, Complaints& complaints);
std::optional<Overflow> toOverflow(const Value& value, Complaints& complaints);
std::optional<double> toStreamTime(const Value& value, Complaints& complaints);

/// Whether a buffer may have that size; complains if not.
bool checkBuffer(std::int64_t size, const Place& where, Complaints& complaints);
/// Whether stream time may come to `seconds`; complains of `found` if not.
bool checkStreamTime(double seconds, const Place& where, const std::string& found, Complaints& complaints);

} // namespace Quillmere::Host
