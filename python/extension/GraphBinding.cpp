// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"

#include "host/report/Report.h"
#include "host/run/RunJson.h"
#include "host/text/Address.h"
#include "python/extension/Errors.h"
#include "python/extension/GraphHandle.h"
#include "python/extension/Interruptible.h"
#include "python/extension/LiveHandle.h"
#include "python/extension/RunConversion.h"
#include "python/extension/Values.h"

#include <pybind11/stl.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;

namespace {
using Texts = std::vector<std::string>;

std::unique_ptr<GraphHandle> readGraph(const std::string& text, const std::string& path, bool isFile) {
    auto graph = std::make_unique<GraphHandle>();
    graph->description = isFile ? GraphDescription::fromFile(path, graph->reading)
                                : GraphDescription::fromText(text, path, graph->reading);
    if (!graph->description.isUsable) graph->reading.raise();
    return graph;
}

void addBlock(GraphHandle& graph, const std::string& id, const std::string& type, py::handle settings,
              const std::string& layout) {
    const auto values = toValues(settings, "the property");
    GraphDescription::Block& block = graph.description.addBlock(id, type);
    block.layout = layout;
    for (const auto& [name, value] : values)
        block.set(name, value);
}

std::optional<Overflow> overflowOf(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    if (*text == "drop") return Overflow::Drop;
    if (*text == "wait") return Overflow::Wait;
    refuse("overflow '" + *text + "'", "drop or wait");
}

void connect(GraphHandle& graph, const std::string& sender, const std::string& receiver,
             std::optional<std::uint32_t> buffer, std::optional<bool> newestFirst,
             const std::optional<std::string>& overflow) {
    const auto rule = overflowOf(overflow);
    GraphDescription::Connection& connection = graph.description.connect(sender, receiver);
    if (buffer) connection.buffer = *buffer;
    if (newestFirst) connection.isNewestFirst = *newestFirst;
    if (rule) connection.overflow = *rule;
}

void addChange(GraphDescription::TimelineEntry& entry, GraphDescription::TimelineChange::Kind kind,
               const std::string& target, Value value) {
    const Address address(target);
    GraphDescription::TimelineChange& change = entry.changes.emplace_back();
    change.kind = kind;
    change.block = address.block;
    change.name = address.member;
    change.value = std::move(value);
}

void addEntry(GraphHandle& graph, double seconds, py::handle set, const Texts& fire) {
    using Kind = GraphDescription::TimelineChange::Kind;
    GraphDescription::TimelineEntry entry;
    entry.at = seconds;
    for (auto& [target, value] : toValues(set, "the property"))
        addChange(entry, Kind::Set, target, std::move(value));
    for (const std::string& target : fire)
        addChange(entry, Kind::Fire, target, {});
    graph.description.timeline.push_back(std::move(entry));
}

void addParameter(GraphHandle& graph, const std::string& name, py::handle value) {
    GraphDescription::Parameter parameter;
    parameter.name = name;
    parameter.value = toValue(value, "the parameter '" + name + "'");
    graph.description.parameters.push_back(std::move(parameter));
}

/// What the values are as the text of an option.
std::vector<std::pair<std::string, std::string>> textsOf(py::handle mapping, const char* what) {
    std::vector<std::pair<std::string, std::string>> texts;
    for (const auto& [name, value] : toValues(mapping, what))
        texts.emplace_back(name, flowText(value));
    return texts;
}

/// Names of files stand for themselves, whatever they begin with.
std::vector<std::pair<std::string, std::string>> pathsOf(py::handle mapping) {
    std::vector<std::pair<std::string, std::string>> paths;
    if (mapping.is_none()) return paths;
    for (const auto& [id, path] : py::dict(py::reinterpret_borrow<py::object>(mapping)))
        paths.emplace_back(py::str(id), py::module_::import("os").attr("fspath")(path).cast<std::string>());
    return paths;
}

std::unique_ptr<GraphHandle> changed(const GraphHandle& graph, py::handle set, py::handle params,
                                     py::handle inputs, py::handle outputs) {
    GraphChanges changes;
    for (const auto& [name, value] : textsOf(set, "the setting")) {
        const Address address(name);
        changes.settings.push_back({address.block, address.member, value, "set " + name + "=" + value});
    }
    for (const auto& [name, value] : textsOf(params, "the parameter"))
        changes.parameters.push_back({name, value, "params " + name + "=" + value});
    for (const auto& [id, path] : pathsOf(inputs))
        changes.inputs.push_back({id, path, "inputs " + id + "=" + path});
    for (const auto& [id, path] : pathsOf(outputs))
        changes.outputs.push_back({id, path, "outputs " + id + "=" + path});
    auto other = std::make_unique<GraphHandle>();
    other->reading = graph.reading;
    Complaints own;
    other->description = graph.description.with(changes, own);
    own.raise();
    return other;
}

py::dict describeGraph(const GraphHandle& graph) {
    const GraphDescription& description = graph.description;
    py::list blocks;
    for (const GraphDescription::Block& block : description.blocks) {
        py::dict settings;
        for (const GraphDescription::Setting& setting : block.settings)
            settings[textOf(setting.name)] = textOf(flowText(setting.value));
        py::dict told;
        told["id"] = textOf(block.id);
        told["type"] = textOf(block.type);
        told["settings"] = settings;
        told["layout"] = textOf(block.layout);
        blocks.append(told);
    }
    py::list connections;
    for (const GraphDescription::Connection& connection : description.connections) {
        py::dict told;
        told["sender"] = textOf(connection.from.getText());
        told["receiver"] = textOf(connection.to.getText());
        connections.append(told);
    }
    py::list layouts;
    for (const GraphDescription::Layout& layout : description.layouts)
        layouts.append(textOf(layout.id));
    py::dict parameters;
    for (const GraphDescription::Parameter& parameter : description.parameters)
        parameters[textOf(parameter.name)] = textOf(flowText(parameter.value));
    py::list sources;
    py::list sinks;
    for (const GraphDescription::Block& block : description.blocks) {
        if (block.type == "RecordingSource" || block.type == "MemorySource") sources.append(textOf(block.id));
        if (block.type == "RecordingSink" || block.type == "MemorySink") sinks.append(textOf(block.id));
    }
    py::dict told;
    told["name"] = textOf(description.getName());
    told["path"] = textOf(description.path);
    told["blocks"] = blocks;
    told["connections"] = connections;
    told["layouts"] = layouts;
    told["parameters"] = parameters;
    told["sources"] = sources;
    told["sinks"] = sinks;
    return told;
}

RunMode modeOf(const std::string& text) {
    if (text == "offline") return RunMode::Offline;
    if (text == "live") return RunMode::Live;
    if (text == "unsaid") return RunMode::Unsaid;
    refuse("mode '" + text + "'", "offline, live or unsaid");
}

py::object check(const GraphHandle& graph, py::handle data, py::handle keep, const std::string& mode,
                 bool strict) {
    const RunMode wanted = modeOf(mode);
    const auto ends = endsOf(data, keep);
    JobOptions options;
    options.isStrict = strict;
    std::stop_source opening;
    options.stop = opening.get_token();
    GuardedJob job(graph, *ends, std::move(options));
    std::string text;
    doInterruptibly([&](const std::stop_token& stop) {
        const std::stop_callback forward(stop, [&] { opening.request_stop(); });
        text = Json::check(job.get(), job.get().check(wanted));
    });
    return fromJson(text);
}

/// How far a run has come, from its thread to the caller's.
class ProgressBoard {
public:
    void put(const RunProgress& now) {
        const std::lock_guard lock(state);
        progress = now;
    }
    /// What is new since the last look.
    std::optional<RunProgress> take() {
        const std::lock_guard lock(state);
        return std::exchange(progress, std::nullopt);
    }

private:
    std::mutex state;
    std::optional<RunProgress> progress;
};

JobOptions optionsOf(std::optional<std::uint64_t> rounds, std::optional<double> seconds, bool strict,
                     bool overwrite) {
    JobOptions options;
    options.limit = {rounds, seconds};
    options.isStrict = strict;
    options.overwrites = overwrite;
    options.roundsName = {.name = "rounds"};
    options.secondsName = {.name = "seconds"};
    return options;
}

py::dict resultOf(const RunOutcome& outcome, const RunEnds& ends) {
    py::dict tables;
    for (const auto& [id, table] : ends.getTables())
        tables[textOf(id)] = tableOf(table->take());
    py::dict result;
    result["outcome"] = fromJson(Json::outcome(outcome));
    result["tables"] = tables;
    return result;
}

py::dict run(const GraphHandle& graph, py::handle data, py::handle keep, const py::object& progress,
             std::optional<std::uint64_t> rounds, std::optional<double> seconds, bool strict, bool overwrite,
             const std::string& report, const std::string& summary) {
    const auto ends = endsOf(data, keep);
    JobOptions options = optionsOf(rounds, seconds, strict, overwrite);
    options.summary = summary;
    if (!report.empty())
        options.observer = std::make_shared<Report>(
            ReportOptions{.path = report, .overwrites = overwrite, .program = VELMARIND_VERSION});
    std::stop_source opening; // of a pipe, which nobody may ever write
    options.stop = opening.get_token();
    GuardedJob job(graph, *ends, std::move(options));
    ProgressBoard board;
    const auto tell = [&] {
        if (const auto now = progress.is_none() ? std::nullopt : board.take()) progress(progressOf(*now));
    };
    RunOutcome outcome;
    doInterruptibly(
        [&](const std::stop_token& stop) {
            const std::stop_callback forward(stop, [&] { opening.request_stop(); });
            job.get().require(RunMode::Offline);
            outcome = job.get().run(stop, [&](const RunProgress& now) { board.put(now); });
        },
        tell);
    tell();
    return resultOf(outcome, *ends);
}

std::unique_ptr<LiveHandle> start(const GraphHandle& graph, py::handle data, py::handle feeds,
                                  py::handle rates, py::handle keep, double speed,
                                  const std::optional<std::string>& overflow,
                                  std::optional<std::uint64_t> rounds, std::optional<double> seconds,
                                  bool strict, bool overwrite) {
    if (!(speed > 0.0))
        refuse("speed " + std::to_string(speed), "a factor above 0, infinite for as fast as it can");
    auto ends = endsOf(data, keep);
    addFeeds(*ends, feeds, rates);
    JobOptions options = optionsOf(rounds, seconds, strict, overwrite);
    options.isControlled = true;
    std::stop_source opening;
    options.stop = opening.get_token();
    GuardedJob job(graph, *ends, std::move(options));
    LiveOptions live;
    live.speed = speed;
    live.overflow = overflowOf(overflow);
    doInterruptibly([&](const std::stop_token& stop) {
        const std::stop_callback forward(stop, [&] { opening.request_stop(); });
        job.get().require(RunMode::Live);
    });
    return std::make_unique<LiveHandle>(job.take(), live, std::move(ends));
}

void bindDescription(py::class_<GraphHandle>& graph) {
    graph
        .def(py::init([](const std::string& name) {
                 auto made = std::make_unique<GraphHandle>();
                 made->description.name = name;
                 return made;
             }),
             py::arg("name") = "")
        .def_static(
            "load", [](const std::string& path) { return readGraph({}, path, true); }, py::arg("path"))
        .def_static(
            "from_text",
            [](const std::string& text, const std::string& path) { return readGraph(text, path, false); },
            py::arg("text"), py::arg("path") = "")
        .def("add", addBlock, py::arg("id"), py::arg("type"), py::arg("settings") = py::none(),
             py::arg("layout") = "")
        .def("connect", connect, py::arg("sender"), py::arg("receiver"), py::arg("buffer") = py::none(),
             py::arg("newest_first") = py::none(), py::arg("overflow") = py::none())
        .def("at", addEntry, py::arg("seconds"), py::arg("set") = py::none(), py::arg("fire") = Texts())
        .def("parameter", addParameter, py::arg("name"), py::arg("value"))
        .def("changed", changed, py::arg("set") = py::none(), py::arg("params") = py::none(),
             py::arg("inputs") = py::none(), py::arg("outputs") = py::none())
        .def("copy", [](const GraphHandle& self) { return std::make_unique<GraphHandle>(self); })
        .def_property_readonly("name",
                               [](const GraphHandle& self) { return textOf(self.description.getName()); })
        .def_property_readonly("path", [](const GraphHandle& self) { return textOf(self.description.path); })
        .def("text", [](const GraphHandle& self) { return textOf(self.description.toText()); })
        .def("describe", describeGraph)
        .def("__eq__", [](const GraphHandle& self, const py::object& other) -> py::object {
            if (!py::isinstance<GraphHandle>(other))
                return py::reinterpret_borrow<py::object>(Py_NotImplemented);
            return py::bool_(self.description == other.cast<const GraphHandle&>().description);
        });
}

} // namespace

void bindGraph(py::module_& module) {
    py::class_<GraphHandle> graph(module, "Graph", "A description of a graph.");
    bindDescription(graph);
    graph
        .def("check", check, py::arg("data") = py::none(), py::arg("keep") = false,
             py::arg("mode") = "unsaid", py::arg("strict") = false)
        .def("run", run, py::arg("data") = py::none(), py::arg("keep") = true,
             py::arg("progress") = py::none(), py::arg("rounds") = py::none(),
             py::arg("seconds") = py::none(), py::arg("strict") = false, py::arg("overwrite") = false,
             py::arg("report") = "", py::arg("summary") = "")
        .def("start", start, py::arg("data") = py::none(), py::arg("feeds") = py::none(),
             py::arg("rates") = py::none(), py::arg("keep") = true, py::arg("speed") = 1.0,
             py::arg("overflow") = py::none(), py::arg("rounds") = py::none(),
             py::arg("seconds") = py::none(), py::arg("strict") = false, py::arg("overwrite") = false);
}

} // namespace Python
