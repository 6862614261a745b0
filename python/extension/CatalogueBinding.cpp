// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"

#include "host/ends/HostBlock.h"
#include "host/graph/BlockJson.h"
#include "host/recording/RecordingForms.h"
#include "host/text/Complaint.h"
#include "python/extension/Catalogue.h"
#include "python/extension/Lock.h"
#include "python/extension/Values.h"

#include <pybind11/stl.h>

#include <dlfcn.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
std::string catalogueJson() {
    const Setup setup;
    Complaints ofPages; // the test of the manual's pages tells them
    return Json::blockTypes(getCatalogue(), BlockPage::readAll(getCatalogue(), ofPages));
}

std::string typeJson(const std::string& type) {
    const Setup setup;
    const BlockCatalogue& catalogue = getCatalogue();
    if (!catalogue.getIsHostType(type)) (void)getTypeInfo(type); // refuses what there isn't
    const BlockPtr block = catalogue.create(type, type);
    Complaints ofPage;
    const auto page = BlockPage::read(type, catalogue, ofPage);
    const BlockPage* const told = page ? &*page : nullptr;
    const auto* const end = dynamic_cast<const HostBlock*>(block.get());
    const std::string plugin = catalogue.getPluginName(type);
    return end != nullptr ? Json::hostBlock(*end, plugin, told) : Json::block(describe(*block), plugin, told);
}

/// Of the host's library, which the plug-ins lie beside.
std::filesystem::path libraryFolder() {
    Dl_info info;
    if (::dladdr(reinterpret_cast<const void*>(&getRecordingForms), &info) == 0) return {};
    std::error_code error;
    return std::filesystem::canonical(info.dli_fname, error).parent_path();
}

std::string commandPath() {
    std::error_code error;
    const std::filesystem::path command =
        std::filesystem::canonical(libraryFolder() / "../bin/quillmere", error);
    return error ? std::string() : command.string();
}

std::vector<std::string> namesOfTypes(std::vector<std::string> (BlockCatalogue::*get)() const) {
    const Setup setup;
    return (getCatalogue().*get)();
}
} // namespace

void bindCatalogue(py::module_& module) {
    module.def("block_types", [] { return namesOfTypes(&BlockCatalogue::getTypeNames); });
    module.def("host_types", [] { return namesOfTypes(&BlockCatalogue::getHostTypeNames); });
    module.def("catalogue", [] { return fromJson(catalogueJson()); });
    module.def(
        "describe", [](const std::string& type) { return fromJson(typeJson(type)); }, py::arg("type"));
    module.def(
        "load_plugin",
        [](const std::string& path) {
            const Setup setup;
            loadPlugin(path);
        },
        py::arg("path"));
    module.def("recording_forms", [] { return getRecordingForms(); });
    module.def("library_folder", [] { return libraryFolder().string(); });
    module.def("command_path", commandPath);
}

} // namespace Python
