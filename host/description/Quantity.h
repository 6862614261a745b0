// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/Value.h"
#include "host/text/Complaint.h"

#include <optional>

namespace Quillmere::Host {

/// A frequency or a time, as a graph writes it: a number and a unit.
struct Quantity {
    enum class Kind { Frequency, Time };

    Kind kind = Kind::Frequency;
    double number = 0.0;      ///< Hertz or seconds; finite.
    bool isAsWritten = false; ///< Whether it was told in hertz or seconds, so that nothing was made of it.
};

/// A scalar such as `5 Hz`, `0.5kHz`, `200 ms` or `1 min`, in quotes or without; nothing for whatever isn't
/// one.
QUILLMERE_API std::optional<Quantity> toQuantity(const Value& value);

/// A number as it stands, or what a quantity is in hertz or seconds; one of the other kind, and whatever is
/// neither, is a complaint.
QUILLMERE_API std::optional<double> toNumberOf(Quantity::Kind kind, const Value& value,
                                               Complaints& complaints);

/// What is meant by a number with a unit in other letters or with a decimal comma: `5 Hz` for `5 hz`. Empty
/// for whatever is no such slip.
QUILLMERE_API std::string withNearestUnit(const Value& value);

} // namespace Quillmere::Host
