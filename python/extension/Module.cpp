// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"
#include "python/extension/Errors.h"

namespace py = pybind11;

PYBIND11_MODULE(_native, module) {
    module.doc() = "The extension that the package velmarind stands on.";
    module.attr("__version__") = VELMARIND_VERSION;
    module.attr("Error") = py::module_::import("velmarind._errors").attr("Error");
    Python::registerErrors();
    Python::bindCatalogue(module);
    Python::bindBlock(module);
}
