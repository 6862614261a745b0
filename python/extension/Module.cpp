// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"
#include "python/extension/Errors.h"
#include "python/extension/Fork.h"

namespace py = pybind11;

PYBIND11_MODULE(_native, module) {
    module.doc() = "The extension that the package velmarind stands on.";
    module.attr("__version__") = VELMARIND_VERSION;
    module.attr("Error") = py::module_::import("velmarind._errors").attr("Error");
    Python::registerErrors();
    Python::watchForks();
    Python::bindCatalogue(module);
    Python::bindBlock(module);
    Python::bindRecordings(module);
    Python::bindLive(module);
    Python::bindGraph(module);
}
