// SPDX-License-Identifier: MIT
#pragma once

#include "host/text/Complaint.h"

#include <pybind11/pybind11.h>

#include <string>
#include <vector>

namespace Python {

/// The parts of a complaint, as the stub's `ComplaintParts`. Requires: the interpreter's lock.
pybind11::dict partsOf(const Quillmere::Host::Complaint& complaint);

/// Sets the interpreter's error from the exception that is being handled: `velmarind.Error` for what the host
/// refuses and for what blocks raise. Requires: called inside a `catch`, with the interpreter's lock.
void setErrorFromCaught() noexcept;

/// The same for everything that leaves a bound function.
void registerErrors();

/// Raises `velmarind.Error` for `found ...; expected ...`.
[[noreturn]] void refuse(const std::string& found, const std::string& expected,
                         const std::string& nearest = {});

} // namespace Python
