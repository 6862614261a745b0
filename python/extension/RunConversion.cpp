// SPDX-License-Identifier: MIT
#include "python/extension/RunConversion.h"

#include "python/extension/Arrays.h"
#include "python/extension/Errors.h"
#include "python/extension/Values.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

namespace py = pybind11;

namespace Python {

using namespace Quillmere::Host;
using Quillmere::Core::MatrixXd;

namespace {
py::dict dictOf(py::handle mapping, const std::string& what) {
    if (!mapping || mapping.is_none()) return {};
    if (!py::hasattr(mapping, "keys")) refuse("no mapping for " + what, "one by the ids of blocks");
    return py::dict(py::reinterpret_borrow<py::object>(mapping));
}

SampleSeries seriesOf(const SampleRows& rows) {
    using Rows = Eigen::Map<const MatrixXd>;
    if (rows.rows == 1)
        return SampleSeries::ofRows(
            MatrixXd(Rows(rows.data, static_cast<Eigen::Index>(rows.count), rows.columns)));
    SampleSeries series;
    for (std::size_t i = 0; i < rows.count; ++i)
        series.append(Rows(rows.data + i * static_cast<std::size_t>(rows.rows * rows.columns), rows.rows,
                           rows.columns));
    return series;
}

MemoryRecording recordingOf(const py::dict& given, const std::string& source) {
    const std::string what = "the data of '" + source + "'";
    MemoryRecording recording;
    for (const auto& [key, value] : given) {
        const std::string name = py::str(key);
        if (name == "t" && !value.is_none()) {
            const py::array_t<double> times = takeNumbers(value, "t of " + what);
            recording.times = std::vector<double>(times.data(), times.data() + times.size());
        } else if (name == "fs" && !value.is_none()) {
            recording.rate = value.cast<double>();
        } else if (name == "pins") {
            for (const auto& [pin, samples] : dictOf(value, "the pins of '" + source + "'")) {
                const std::string pinName = py::str(pin);
                const TakenSamples taken = TakenSamples::of(samples, "the pin '" + pinName + "' of " + what);
                recording.pins.emplace_back();
                recording.pins.back().name = pinName;
                recording.pins.back().samples = seriesOf(taken.rows);
            }
        } else if (!value.is_none()) {
            refuse("'" + name + "' in " + what, "pins, and t or fs");
        }
    }
    return recording;
}

/// Row by row, the pins beside each other.
py::array_t<double> valuesOf(const TableRows& rows) {
    const std::size_t count = rows.times.size();
    const std::size_t all = rows.countColumns();
    py::array_t<double> values({static_cast<Py_ssize_t>(count), static_cast<Py_ssize_t>(all)});
    double* const to = values.mutable_data();
    std::size_t first = 0;
    for (const TableRows::Pin& pin : rows.pins) {
        const std::size_t room = std::max({pin.width, pin.columns.size(), std::size_t{1}});
        for (std::size_t row = 0; row < count; ++row) {
            double* const cells = to + row * all + first;
            if (pin.width > 0) std::copy_n(pin.values.data() + row * pin.width, pin.width, cells);
            std::fill_n(cells + pin.width, room - pin.width, std::numeric_limits<double>::quiet_NaN());
        }
        first += room;
    }
    return values;
}
} // namespace

std::shared_ptr<RunEnds> endsOf(py::handle data, py::handle keep) {
    auto ends = std::make_shared<RunEnds>();
    for (const auto& [key, value] : dictOf(data, "data")) {
        const std::string source = py::str(key);
        ends->setData(source, recordingOf(dictOf(value, "the data of '" + source + "'"), source));
    }
    if (py::isinstance<py::bool_>(keep)) {
        if (keep.cast<bool>()) ends->keepAll();
    } else if (keep && !keep.is_none()) {
        ends->keep(keep.cast<std::vector<std::string>>());
    }
    return ends;
}

void addFeeds(RunEnds& ends, py::handle feeds, py::handle rates) {
    const py::dict given = dictOf(rates, "rates");
    for (const auto& [key, value] : dictOf(feeds, "feeds")) {
        const std::string source = py::str(key);
        std::vector<Feed::Pin> pins;
        for (const auto& [pin, columns] : dictOf(value, "the feed of '" + source + "'"))
            pins.push_back({py::str(pin), columns.cast<std::size_t>()});
        std::optional<double> rate;
        if (given.contains(key)) rate = given[key].cast<std::optional<double>>();
        ends.setFeed(source, std::make_shared<Feed>(std::move(pins), rate));
    }
}

py::dict tableOf(const TableRows& rows) {
    py::list columns;
    py::list units;
    py::list pins;
    for (const TableRows::Pin& pin : rows.pins)
        for (std::size_t i = 0; i < std::max({pin.width, pin.columns.size(), std::size_t{1}}); ++i) {
            columns.append(textOf(TableRows::nameOfColumn(pin, i)));
            units.append(textOf(pin.unit));
            pins.append(textOf(pin.name));
        }
    py::dict table;
    table["time"] = toArray(rows.times);
    table["time_name"] = textOf(rows.timeName);
    table["columns"] = columns;
    table["units"] = units;
    table["pins"] = pins;
    table["values"] = valuesOf(rows);
    return table;
}

py::dict progressOf(const RunProgress& progress) {
    py::dict told;
    told["rounds"] = progress.rounds;
    told["rows"] = progress.rows;
    told["bytesRead"] = progress.bytesRead;
    told["bytes"] = progress.bytes;
    told["streamTime"] = progress.streamTime;
    return told;
}

} // namespace Python
