// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

namespace Python {

// Each binds what its name says; `_native.pyi` tells what of it Python sees.
void bindCatalogue(pybind11::module_& module);
void bindBlock(pybind11::module_& module);
void bindRecordings(pybind11::module_& module);
void bindGraph(pybind11::module_& module);
void bindLive(pybind11::module_& module);

} // namespace Python
