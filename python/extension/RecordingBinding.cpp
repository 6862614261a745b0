// SPDX-License-Identifier: MIT
#include "python/extension/Bindings.h"

#include "host/inspection/InspectionJson.h"
#include "host/recording/RecordingForms.h"
#include "host/recording/ResultPath.h"
#include "host/recording/TableForm.h"
#include "host/recording/TableWriter.h"
#include "host/run/RunJson.h"
#include "python/extension/Arrays.h"
#include "python/extension/Errors.h"
#include "python/extension/GraphHandle.h"
#include "python/extension/Interruptible.h"
#include "python/extension/RunConversion.h"
#include "python/extension/Values.h"

#include <pybind11/stl.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;
using Quillmere::Core::MatrixXd;

namespace {
using Settings = std::vector<std::pair<std::string, Value>>;
using Texts = std::vector<std::string>;

constexpr const char* kSource = "recording"; // what messages call the source,
constexpr const char* kSink = "table";       // and the sink

/// What can be told of a recording before its rows are read.
struct Look {
    Texts columns; ///< Those of numbers, without that of the time.
    Texts form;
    std::optional<std::int64_t> origin;
    std::string timeName = "t"; ///< Of the column of times, where there is one.
};

InspectionSettings lookSettings(const Settings& settings, Complaints& complaints) {
    InspectionSettings said;
    for (const auto& [name, value] : settings) {
        GraphDescription::Setting setting;
        setting.name = name;
        setting.value = value;
        said.take(std::move(setting), complaints);
    }
    said.finish(complaints);
    return said;
}

Look lookAt(const std::string& path, const Settings& settings) {
    Complaints ofOthers; // settings that say what becomes of rows; the source takes all, and complains
    const InspectionSettings said = lookSettings(settings, ofOthers);
    const std::unique_ptr<RecordingReader> reader = openRecording(path, said.wishes);
    if (reader->getIsPiped())
        refuse("a pipe, '" + path + "'", "a file, which can be looked at before it is read");
    Look look;
    look.form = reader->getForm();
    const auto time = reader->getTimeColumn();
    const auto& columns = reader->getColumns();
    if (time) look.timeName = columns[*time].name;
    const auto& clock = said.clock.columns;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bool isTime =
            i == time || std::any_of(clock.begin(), clock.end(),
                                     [&](const NamedColumn& named) { return named.name == columns[i].name; });
        if (!isTime && columns[i].kind == RecordingReader::Column::Kind::Number)
            look.columns.push_back(columns[i].name);
    }
    reader->select({});
    double nothing = 0.0;
    (void)reader->takeRow(&nothing);
    look.origin = reader->getOrigin();
    return look;
}

/// A pin of its own for each column, so that an empty cell of one leaves the others alone.
std::string pinOf(std::size_t column) {
    return "c" + std::to_string(column);
}

GraphDescription descriptionOf(const std::string& path, const Settings& settings, const Texts& columns) {
    GraphDescription description;
    GraphDescription::Block& source = description.addBlock(kSource, "RecordingSource");
    GraphDescription::Setting file;
    file.name = "file";
    file.value = valueOf(path);
    file.where.file = path;
    file.origin = GraphDescription::Setting::Origin::CallersInput;
    source.set(std::move(file));
    for (const auto& [name, value] : settings)
        source.set(name, value);
    Value pins;
    pins.kind = Value::Kind::Map;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Value::Entry& pin = pins.entries.emplace_back();
        pin.key = pinOf(i);
        pin.value = valueOf(Texts{columns[i]});
    }
    source.set("pins", pins);
    description.addBlock(kSink, "RecordingSink");
    for (std::size_t i = 0; i < columns.size(); ++i)
        description.connect(std::string(kSource) + "." + pinOf(i), std::string(kSink) + "." + pinOf(i));
    return description;
}

/// Of the fullest column: cells that are empty are no samples.
std::optional<SampleRate> rateOf(Job& job) {
    const Graph::Node* const node = job.getGraph().find(kSource);
    std::optional<SampleRate> fullest;
    if (node == nullptr || node->recorded == nullptr) return fullest;
    for (const Quillmere::Core::AbstractOutputPin* const pin : node->block->getOutputPins()) {
        const auto rate = node->recorded->getSampleRate(*pin);
        if (rate && (!fullest || rate->perSecond > fullest->perSecond)) fullest = rate;
    }
    return fullest;
}

TableRows withNames(TableRows rows, const Texts& columns) {
    for (std::size_t i = 0; i < rows.pins.size(); ++i) {
        rows.pins[i].name = columns[i];
        rows.pins[i].columns = {columns[i]};
    }
    return rows;
}

py::dict read(const std::string& path, py::handle settings, const std::optional<Texts>& columns,
              const py::object& progress) {
    const Settings given = toValues(settings, "the setting");
    Look look;
    doInterruptibly([&](const std::stop_token&) { look = lookAt(path, given); });
    if (columns) look.columns = *columns;
    if (look.columns.empty()) refuse("no column of numbers in " + path, "one at least");
    RunEnds ends;
    ends.keepAll();
    GraphHandle graph;
    graph.description = descriptionOf(path, given, look.columns);
    GuardedJob job(graph, ends, {});
    std::mutex mutex;
    std::optional<RunProgress> latest;
    std::optional<SampleRate> rate;
    RunOutcome outcome;
    doInterruptibly(
        [&](const std::stop_token& stop) {
            job.get().require(RunMode::Offline);
            rate = rateOf(job.get());
            outcome = job.get().run(stop, [&](const RunProgress& now) {
                const std::lock_guard lock(mutex);
                latest = now;
            });
        },
        [&] {
            const auto now = [&] {
                const std::lock_guard lock(mutex);
                return std::exchange(latest, std::nullopt);
            }();
            if (now && !progress.is_none()) progress(progressOf(*now));
        });
    if (!outcome.getIsWhole()) throw RunException(outcome.failure, outcome.complaints);
    const bool isEven = rate && rate->getIsSteady();
    TableRows rows = withNames(ends.getTables().at(kSink)->take(), look.columns);
    rows.timeName = look.timeName;
    py::dict reading;
    reading["table"] = tableOf(rows);
    reading["rate"] = isEven ? py::object(py::float_(rate->perSecond)) : py::none();
    reading["rate_is_measured"] = rate.has_value() && rate->isMeasured;
    reading["origin"] = look.origin ? py::object(py::int_(*look.origin)) : py::none();
    reading["form"] = look.form;
    reading["source"] = fromJson(Json::outcome(outcome))["sources"][py::int_(0)];
    py::list warnings;
    for (const auto* const list : {&outcome.doubts, &outcome.warnings})
        for (const Warning& warning : *list)
            warnings.append(textOf(warning.text));
    reading["warnings"] = warnings;
    return reading;
}

py::object inspectFile(const std::string& path, py::handle settings) {
    const Settings given = toValues(settings, "the setting");
    std::string text;
    doInterruptibly([&](const std::stop_token& stop) {
        Complaints complaints;
        InspectionSettings said = lookSettings(given, complaints);
        complaints.raise();
        said.wishes.stop = stop;
        const std::unique_ptr<RecordingReader> reader = openRecording(path, said.wishes);
        Inspection found = inspect(*reader, said, stop);
        found.path = path;
        text = Json::inspection(found);
    });
    return fromJson(text);
}

/// The columns of a table that is written; a cell that is not-a-number is empty.
struct Written {
    py::array_t<double> times;
    TakenSamples values;
    std::vector<TableWriter::Group> groups;
};

/// Whether a column's name ends with its unit already, as those do that were read.
bool getNamesUnit(const std::string& name, const std::string& unit) {
    return name.ends_with("[" + unit + "]") || name.ends_with("(" + unit + ")");
}

Written writtenOf(py::handle time, py::handle values, const Texts& columns,
                  const std::optional<Texts>& units) {
    Written written;
    written.times = takeNumbers(time, "time");
    written.values = TakenSamples::of(values, "values");
    const SampleRows& rows = written.values.rows;
    if (rows.rows != 1) refuse("values of three axes", "two: rows and columns");
    if (static_cast<std::size_t>(written.times.size()) != rows.count)
        refuse(std::to_string(written.times.size()) + " times for " + std::to_string(rows.count) + " rows",
               "a time for each row");
    if (columns.size() != static_cast<std::size_t>(rows.columns))
        refuse(std::to_string(columns.size()) + " names for " + std::to_string(rows.columns) + " columns",
               "a name for each column");
    if (units && units->size() != columns.size())
        refuse(std::to_string(units->size()) + " units for " + std::to_string(columns.size()) + " columns",
               "a unit for each column, empty where there is none");
    for (std::size_t i = 0; i < columns.size(); ++i) {
        TableWriter::Group& group = written.groups.emplace_back();
        group.name = columns[i];
        group.columns = {columns[i]};
        if (units && !getNamesUnit(columns[i], (*units)[i])) group.unit = (*units)[i];
    }
    return written;
}

void writeRows(TableWriter& writer, const double* times, const SampleRows& rows,
               const std::stop_token& stop) {
    const auto columns = static_cast<std::size_t>(rows.columns);
    std::vector<MatrixXd> cells(columns);
    for (MatrixXd& cell : cells)
        cell = MatrixXd::Zero(1, 1);
    std::vector<const MatrixXd*> samples(columns);
    for (std::size_t row = 0; row < rows.count && !stop.stop_requested(); ++row) {
        for (std::size_t i = 0; i < columns; ++i) {
            const double value = rows.data[row * columns + i];
            cells[i](0, 0) = value;
            samples[i] = std::isnan(value) ? nullptr : &cells[i];
        }
        writer.writeRow(times[row], samples);
    }
    if (stop.stop_requested())
        writer.discard();
    else
        writer.complete();
}

void write(const std::string& path, py::handle time, py::handle values, const Texts& columns,
           const std::string& timeName, const std::optional<Texts>& units, bool overwrite) {
    const Written written = writtenOf(time, values, columns, units);
    const TableForm form{.timeName = timeName, .groups = written.groups, .recorded = {}};
    const ResultOptions options{.overwrites = overwrite,
                                .looksOwn = [form](std::string_view head) { return form.fits(head); }};
    if (const auto refusal = ResultPath(path).findRefusal(options))
        throw HostException(Complaint({path}, refusal->found, refusal->expected));
    const double* const times = written.times.data();
    doInterruptibly([&](const std::stop_token& stop) {
        TableWriter writer(path, timeName, written.groups, options, stop);
        try {
            writeRows(writer, times, written.values.rows, stop);
        } catch (...) {
            writer.discard();
            throw;
        }
    });
}
} // namespace

void bindRecordings(py::module_& module) {
    module.def("read", read, py::arg("path"), py::arg("settings") = py::none(),
               py::arg("columns") = py::none(), py::arg("progress") = py::none());
    module.def("inspect", inspectFile, py::arg("path"), py::arg("settings") = py::none());
    module.def("write", write, py::arg("path"), py::arg("time"), py::arg("values"), py::arg("columns"),
               py::arg("time_name") = "t", py::arg("units") = py::none(), py::arg("overwrite") = false);
}

} // namespace Python
