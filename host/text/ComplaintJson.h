// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"
#include "host/text/Json.h"

#include <vector>

/// What is wrong and what is doubtful, for programs: each with the members `severity` (`error` or `warning`),
/// `file`, `line`, `column`, `part`, `found`, `expected`, `nearest` and `sentence`, which is the line that
/// people get. What there is nothing to say of is null.
namespace Quillmere::Host::Json {

QUILLMERE_API Text complaint(const Complaint& complaint);
QUILLMERE_API Text warning(const Warning& warning);

QUILLMERE_API Text complaints(const std::vector<Complaint>& complaints);
QUILLMERE_API Text warnings(const std::vector<Warning>& warnings);

/// The members `file`, `line` and `column` of a place.
Members place(const Place& where);

} // namespace Quillmere::Host::Json
