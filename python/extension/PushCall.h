// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

namespace Python {

/// Gives the class `Block` its operation `push` as a plain method of the interpreter: the casts and the
/// search for an overload that come before a bound function cost more than a block's step.
void addPush(pybind11::handle blockClass);

} // namespace Python
