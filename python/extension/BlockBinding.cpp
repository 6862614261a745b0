// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"

#include "host/graph/BlockDescription.h"
#include "host/picture/PictureFile.h"
#include "host/picture/ResponseCurves.h"
#include "python/extension/BlockHandle.h"
#include "python/extension/Errors.h"
#include "python/extension/Lock.h"
#include "python/extension/PushCall.h"
#include "python/extension/Values.h"

#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <complex>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
std::unique_ptr<BlockHandle> makeBlock(const std::string& type, py::handle settings, std::optional<double> fs,
                                       const std::string& id) {
    return std::make_unique<BlockHandle>(type, toValues(settings, "the property"), fs, id);
}

py::list namesOf(const std::vector<BlockDescription::Pin>& pins) {
    py::list names;
    for (const BlockDescription::Pin& pin : pins)
        names.append(textOf(pin.name));
    return names;
}

py::object limitOf(const PropertyDescription& property, double limit) {
    return property.hasLimits ? py::object(py::float_(limit)) : py::none();
}

py::dict stateOf(const PropertyDescription& property, const TypeInfo& info) {
    py::dict state;
    state["name"] = textOf(property.name);
    state["kind"] = nameOf(property.kind);
    state["value"] = heldOf(property);
    state["text"] = textOf(valueText(property));
    state["default"] = py::none();
    for (const PropertyDescription& fresh : info.described.properties)
        if (fresh.name == property.name) state["default"] = heldOf(fresh);
    state["minimum"] = limitOf(property, property.minimum);
    state["maximum"] = limitOf(property, property.maximum);
    state["labels"] = property.labels;
    state["writable"] = property.isWritable;
    state["expected"] = textOf(expectedText(property));
    const BlockPage::Setting* const told = info.page ? info.page->findSetting(property.name) : nullptr;
    state["unit"] = told == nullptr ? std::string() : told->unit;
    state["help"] =
        told == nullptr ? std::string() : told->meaning + (told->why.empty() ? "" : " " + told->why);
    return state;
}

py::list conversionsOf(const BlockHandle& block) {
    py::list list;
    for (const RateConversion& conversion : block.getConversions()) {
        py::dict told;
        told["target"] = textOf(conversion.target);
        told["written"] = textOf(conversion.written);
        told["number"] = conversion.number;
        told["sentence"] = textOf(conversion.getText());
        list.append(told);
    }
    return list;
}

FrequencyResponse measure(const BlockHandle& block, std::size_t points, const std::string& input,
                          const std::string& output) {
    if (points == 0 || points > 10000) refuse(std::to_string(points) + " points", "1 to 10000");
    return block.measure({.intervals = points, .input = input, .output = output});
}

template <class Get>
py::object pointsOf(const FrequencyResponse& response, Get get) {
    using Number = decltype(get(response.points.front()));
    py::array_t<Number> array(static_cast<Py_ssize_t>(response.points.size()));
    std::transform(response.points.begin(), response.points.end(), array.mutable_data(), get);
    return array;
}

py::dict responseOf(const FrequencyResponse& response) {
    py::dict told;
    told["frequency"] = pointsOf(response, [](const ResponsePoint& point) { return point.frequency; });
    told["sine"] = pointsOf(response, [](const ResponsePoint& point) { return point.sine; });
    told["impulse"] = pointsOf(response, [](const ResponsePoint& point) { return point.impulse; });
    told["design"] = py::none();
    if (response.hasDesign)
        told["design"] = pointsOf(response, [](const ResponsePoint& point) { return point.design; });
    return told;
}

std::string graphText(const BlockHandle& block) {
    GraphDescription description;
    description.blocks.push_back(block.getOrder().description);
    return description.toText();
}

void bindWhatItIs(py::class_<BlockHandle>& block) {
    block
        .def_property_readonly("type",
                               [](const BlockHandle& self) { return self.getOrder().description.type; })
        .def_property_readonly("id", [](const BlockHandle& self) { return self.getOrder().description.id; })
        .def_property_readonly("fs", [](const BlockHandle& self) { return self.getOrder().rate; })
        .def_property_readonly(
            "inputs", [](const BlockHandle& self) { return namesOf(self.getInfo().described.inputs); })
        .def_property_readonly(
            "outputs", [](const BlockHandle& self) { return namesOf(self.getInfo().described.outputs); })
        .def_property_readonly("main_input",
                               [](const BlockHandle& self) -> py::object {
                                   if (self.getInfo().mainInput.empty()) return py::none();
                                   return textOf(self.getInfo().mainInput);
                               })
        .def_property_readonly("main_output",
                               [](const BlockHandle& self) { return self.getInfo().mainOutput; })
        .def_property_readonly("reads_times", &BlockHandle::getReadsTimes)
        .def_property_readonly("conversions", conversionsOf)
        .def_property_readonly("commands", [](const BlockHandle& self) { return self.getOrder().commands; })
        .def_property_readonly("warnings", [](const BlockHandle& self) { return self.getWarnings(); })
        .def("graph_text", graphText);
}

void bindWork(py::class_<BlockHandle>& block) {
    const py::arg_v noTimes("t", py::none());
    const py::arg_v noInputs("inputs", py::none());
    block.def("push_all", &BlockHandle::pushAll, py::arg("x"), noTimes, noInputs, py::pos_only())
        .def(
            "run",
            [](const BlockHandle& self, py::handle x, py::handle t) { return self.makeWhole()->push(x, t); },
            py::arg("x"), noTimes, py::pos_only())
        .def(
            "run_all",
            [](const BlockHandle& self, py::handle x, py::handle t, py::handle inputs) {
                return self.makeWhole()->pushAll(x, t, inputs);
            },
            py::arg("x"), noTimes, noInputs, py::pos_only())
        .def("finish", &BlockHandle::finish)
        .def("finish_all", &BlockHandle::finishAll)
        .def("fresh", &BlockHandle::makeFresh)
        .def("reset", &BlockHandle::reset);
}

void bindProperties(py::class_<BlockHandle>& block) {
    block
        .def(
            "get",
            [](const BlockHandle& self, const std::string& name) { return heldOf(self.getProperty(name)); },
            py::arg("name"))
        .def(
            "set",
            [](BlockHandle& self, const std::string& name, py::handle value) {
                self.set(name, toValue(value, "the property '" + name + "'"));
            },
            py::arg("name"), py::arg("value"))
        .def("fire", &BlockHandle::fire, py::arg("name"))
        .def(
            "property",
            [](const BlockHandle& self, const std::string& name) {
                return stateOf(self.getProperty(name), self.getInfo());
            },
            py::arg("name"))
        .def("properties",
             [](const BlockHandle& self) {
                 py::list states;
                 for (const PropertyDescription& property : self.getProperties())
                     states.append(stateOf(property, self.getInfo()));
                 return states;
             })
        .def(
            "response",
            [](const BlockHandle& self, std::size_t points, const std::string& input,
               const std::string& output) { return responseOf(measure(self, points, input, output)); },
            py::arg("points") = 100, py::arg("input") = "", py::arg("output") = "")
        .def(
            "response_svg",
            [](const BlockHandle& self, const std::string& title, std::size_t points,
               const std::string& input, const std::string& output) {
                const std::string& type = self.getOrder().description.type;
                const Picture picture =
                    pictureOf(measure(self, points, input, output), title.empty() ? type : title);
                return textOf(drawPicture(picture, PictureForm::Svg));
            },
            py::arg("title") = "", py::arg("points") = 100, py::arg("input") = "", py::arg("output") = "");
}
} // namespace

void bindBlock(py::module_& module) {
    py::class_<BlockHandle> block(module, "Block", "A living block, fed row by row in the caller's thread.");
    block.def(py::init(&makeBlock), py::arg("type"), py::arg("settings") = py::none(),
              py::arg("fs") = py::none(), py::arg("id") = "block");
    bindWhatItIs(block);
    bindWork(block);
    bindProperties(block);
    addPush(block);
}

} // namespace Python
