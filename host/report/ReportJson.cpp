// SPDX-License-Identifier: MIT
#include "host/report/ReportJson.h"

#include "host/description/ValueText.h"
#include "host/graph/BlockDescription.h"
#include "host/picture/HeatScale.h"
#include "host/report/SignalLevels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string_view>
#include <utility>

namespace Quillmere::Host::Json {

namespace {
/// A matrix of coefficients may be long; more than this nobody reads on a page.
constexpr std::size_t kLongestValue = 2000;
/// As many values of a signal are sent as doubles: tables and pictures of short runs are exact.
constexpr std::size_t kExactValues = std::size_t{1} << 18;

Text shortened(const std::string& words) {
    return text(words.size() <= kLongestValue ? words : words.substr(0, kLongestValue) + " ...");
}

Text settingOf(const std::string& name, const std::string& value, bool isGiven) {
    return object({{"name", text(name)}, {"value", shortened(value)}, {"given", flag(isGiven)}});
}

/// Of a block of a plug-in what it says of itself; of a source or a sink what the graph says.
Text settingsOf(const Graph::Node& node) {
    std::vector<Text> settings;
    const auto& given = node.description->settings;
    if (node.hostBlock != nullptr) {
        for (const GraphDescription::Setting& setting : given)
            if (setting.value.kind != Value::Kind::Null)
                settings.push_back(settingOf(setting.name, lineText(setting.value), true));
    }
    for (const PropertyDescription& property : describe(*node.block).properties) {
        if (property.kind == PropertyDescription::Kind::Command) continue;
        const auto told = std::find_if(given.begin(), given.end(), [&](const auto& setting) {
            return setting.name == property.name && setting.value.kind != Value::Kind::Null;
        });
        const bool isConverted = told != given.end() && !told->value.madeOf.empty();
        settings.push_back(settingOf(
            property.name, valueText(property) + (isConverted ? " (" + told->value.madeOf + ")" : ""),
            told != given.end()));
    }
    return list(settings);
}

template <class Pins>
Text namesOfPins(const Pins& pins) {
    std::vector<std::string> names;
    for (const auto* const pin : pins)
        names.push_back(pin->getName());
    return listOfTexts(names);
}

const char* kindOf(const Graph::Node& node) {
    if (node.source != nullptr) return "source";
    return node.sink != nullptr ? "sink" : "block";
}

Text endOf(const Core::Pin& pin) {
    return object({{"block", text(pin.getManager()->getName())}, {"pin", text(pin.getName())}});
}

/// As they are linked, whatever the file leaves out.
Text connectionsOf(const Graph& graph) {
    std::vector<Text> connections;
    for (const Graph::Node& node : graph.getNodes()) {
        for (const Core::AbstractInputPin* const input : node.block->getInputPins()) {
            const Core::AbstractOutputPin* const sender = input->getConnectedOutput();
            if (sender == nullptr || graph.findConnection(*input) == nullptr) continue;
            connections.push_back(object({{"from", endOf(*sender)},
                                          {"to", endOf(*input)},
                                          {"buffer", std::to_string(input->getBufferCapacity())}}));
        }
    }
    return list(connections);
}

std::string wordsOf(const GraphDescription::TimelineChange& change) {
    using Kind = GraphDescription::TimelineChange::Kind;
    const std::string target = change.block + "." + change.name;
    if (change.kind == Kind::Fire) return "fires " + target;
    if (change.kind == Kind::Send) return "sends " + lineText(change.value) + " to " + target;
    return "sets " + target + " to " + lineText(change.value);
}

Text timelineText(const GraphDescription& description) {
    std::vector<Text> entries;
    for (const GraphDescription::TimelineEntry& entry : description.timeline)
        for (const GraphDescription::TimelineChange& change : entry.changes)
            entries.push_back(object(
                {{"time", number(entry.at.value.value_or(0.0))}, {"text", shortened(wordsOf(change))}}));
    return list(entries);
}

/// `1.5 Hz`.
std::string rowName(double value, const std::string& unit) {
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.6g", value);
    return digits + (unit.empty() ? "" : " " + unit);
}

/// What the elements of a map stand for; null where they are counted.
Text rowsOf(const ReportSignal& drawn) {
    const double apart = drawn.getRowsApart();
    if (!(apart > 0.0)) return null();
    return object({{"begin", number(drawn.rowsBegin)},
                   {"apart", number(apart)},
                   {"unit", text(drawn.rowRate > 0.0 ? "Hz" : drawn.rowsUnit)}});
}

/// What a result calls an element, without the unit, which stands beside the signal.
std::string nameOf(const ReportSignal& signal, std::size_t element) {
    if (element < signal.columns.size()) return signal.columns[element];
    if (signal.rowRate > 0.0) return rowName(static_cast<double>(element) * signal.getRowsApart(), "Hz");
    const std::string pin = signal.name.substr(signal.name.find('.') + 1);
    return signal.curves.getColumns().size() == 1 ? pin : pin + "[" + std::to_string(element) + "]";
}

Text columnOf(const std::string& name, const SignalCurves::Column& column) {
    double smallest = INFINITY;
    double largest = -INFINITY;
    for (const Envelope::Piece& piece : column.envelope.getPieces()) {
        smallest = std::min(smallest, piece.smallest);
        largest = std::max(largest, piece.largest);
    }
    const auto count = static_cast<double>(column.envelope.getCount());
    return object({{"name", text(name)},
                   {"minimum", number(smallest)},
                   {"maximum", number(largest)},
                   {"mean", number(column.sum / count)}, // of none not-a-number, which is null
                   {"notFinite", std::to_string(column.envelope.getBreaks())}});
}

Text levelOf(const SignalLevel& level, bool isExact, Blobs& blobs) {
    return object({{"count", std::to_string(level.count)},
                   {"begin", number(level.begin)},
                   {"step", number(level.step)},
                   {"times", level.times.empty() ? null() : text(blobs.add(level.times, true))},
                   {"low", text(blobs.add(level.low, isExact))},
                   {"high", level.high.empty() ? null() : text(blobs.add(level.high, isExact))}});
}

const char* nameOf(SignalCurves::Kind kind) {
    switch (kind) {
    case SignalCurves::Kind::Curves:
        break;
    case SignalCurves::Kind::Points:
        return "points";
    case SignalCurves::Kind::Marks:
        return "marks";
    case SignalCurves::Kind::Map:
        return "map";
    }
    return "curves";
}

/// Of a signal whose samples go to and fro along the axis; null of all others.
Text waysOf(const std::vector<CurvePath>& ways, Blobs& blobs) {
    if (ways.empty()) return null();
    std::size_t points = 0;
    for (const CurvePath& way : ways)
        points += way.getPoints().size();
    const bool isExact = points <= kExactValues;
    std::vector<Text> written;
    for (const CurvePath& way : ways) {
        std::vector<double> x;
        std::vector<double> y;
        for (const CurvePath::Point& point : way.getPoints()) {
            x.push_back(point.x);
            y.push_back(point.y);
        }
        written.push_back(object({{"count", std::to_string(x.size())},
                                  {"x", text(blobs.add(x, isExact))},
                                  {"y", text(blobs.add(y, isExact))}}));
    }
    return list(written);
}

/// How many samples there are in a bucket of the finest level at most; 1 of samples.
std::uint64_t finestOf(const SignalCurves& curves) {
    std::uint64_t most = 1;
    for (const SignalCurves::Column& column : curves.getColumns())
        for (const Envelope::Piece& piece : column.envelope.getPieces())
            if (piece.lastTime > piece.firstTime) most = std::max(most, piece.count);
    return most;
}

/// Which colours a map has; null of what is no map.
Text shadesOf(const SignalCurves& curves) {
    if (curves.getColumns().size() <= SignalCurves::kMostCurves) return null();
    double low = INFINITY;
    double high = -INFINITY;
    for (const SignalCurves::Column& column : curves.getColumns())
        for (const Envelope::Piece& piece : column.envelope.getPieces()) {
            low = std::min(low, piece.smallest);
            high = std::max(high, piece.largest);
        }
    const HeatScale scale(low, high);
    return object({{"low", number(scale.getLow())},
                   {"high", number(scale.getHigh())},
                   {"decibels", scale.getIsDecibels() ? number(HeatScale::kDepth) : null()}});
}

void appendBase64(std::string& to, std::string_view bytes) {
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        const std::size_t have = std::min<std::size_t>(3, bytes.size() - i);
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8u | (k < have ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            to += k <= have ? kDigits[group >> (18 - 6 * k) & 63u] : '=';
    }
}

template <class Number>
std::string bytesOf(const std::vector<double>& values) {
    static_assert(std::endian::native == std::endian::little, "which typed arrays of browsers are");
    std::string bytes(values.size() * sizeof(Number), '\0');
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto value = static_cast<Number>(values[i]);
        std::memcpy(bytes.data() + i * sizeof(Number), &value, sizeof(Number));
    }
    return bytes;
}
} // namespace

std::string Blobs::add(const std::vector<double>& values, bool isExact) {
    const std::string bytes = isExact ? bytesOf<double>(values) : bytesOf<float>(values);
    std::string key(isExact ? "f8" : "f4");
    key += bytes;
    const auto known = ids.find(key);
    if (known != ids.end()) return known->second;
    std::string id("b");
    id += std::to_string(count++);
    html += "<script type=\"text/plain\" id=\"" + id + "\">" + key.substr(0, 2);
    appendBase64(html, bytes);
    html += "</script>\n";
    ids.emplace(key, id);
    return id;
}

Text graph(const Graph& graph) {
    const GraphDescription& description = graph.getDescription();
    std::vector<Text> blocks;
    for (const Graph::Node& node : graph.getNodes())
        blocks.push_back(object({{"id", text(node.description->id)},
                                 {"type", text(node.description->type)},
                                 {"kind", text(kindOf(node))},
                                 {"inputs", namesOfPins(node.block->getInputPins())},
                                 {"outputs", namesOfPins(node.block->getOutputPins())},
                                 {"settings", settingsOf(node)}}));
    std::vector<Text> parameters;
    for (const GraphDescription::Parameter& parameter : description.parameters)
        parameters.push_back(
            object({{"name", text(parameter.name)}, {"value", shortened(lineText(parameter.value))}}));
    const bool isStream = description.clock == GraphDescription::Clock::Stream;
    return object({{"name", text(graph.getName())},
                   {"clock", text(isStream ? "stream" : "wall")},
                   {"parameters", list(parameters)},
                   {"blocks", list(blocks)},
                   {"connections", connectionsOf(graph)},
                   {"timeline", timelineText(description)}});
}

Text versions(const Graph& graph, const std::string& program) {
    std::vector<Text> all{object({{"name", text("quillmere")}, {"version", text(program)}})};
    std::set<std::string> told;
    for (const Graph::Node& node : graph.getNodes()) {
        const std::string& type = node.description->type;
        const std::string name = graph.getCatalogue().getPluginName(type);
        if (name.empty() || !told.insert(name).second) continue;
        all.push_back(
            object({{"name", text(name)}, {"version", text(graph.getCatalogue().getPluginVersion(type))}}));
    }
    return list(all);
}

Text signal(const ReportSignal& drawn, std::uint64_t rounds, Blobs& blobs) {
    const SignalCurves& curves = drawn.curves;
    std::vector<Text> columns;
    for (const SignalCurves::Column& column : curves.getColumns())
        columns.push_back(columnOf(nameOf(drawn, columns.size()), column));
    std::vector<Text> levels;
    if (!drawn.getIsWay())
        for (const SignalLevel& level : levelsOf(curves))
            levels.push_back(levelOf(level, level.low.size() <= kExactValues, blobs));
    return object({{"name", text(drawn.name)},
                   {"kind", text(drawn.getIsWay() ? "way" : nameOf(curves.getKind(rounds, drawn.unit)))},
                   {"watched", flag(drawn.isWatched)},
                   {"unit", text(drawn.unit)},
                   {"samples", std::to_string(curves.getSamples())},
                   {"begin", number(curves.getBegin())},
                   {"end", number(curves.getEnd())},
                   {"period", number(curves.getPeriod())},
                   {"columns", list(columns)},
                   {"rows", rowsOf(drawn)},
                   {"shades", shadesOf(curves)},
                   {"leftOut", std::to_string(curves.getLeftOut())},
                   {"levels", list(levels)},
                   {"ways", waysOf(drawn.ways, blobs)},
                   {"finest", std::to_string(drawn.getIsWay() ? 1 : finestOf(curves))}});
}

Text signals(const std::vector<const ReportSignal*>& signals, std::uint64_t rounds, Blobs& blobs) {
    std::vector<Text> all;
    for (const ReportSignal* const one : signals)
        all.push_back(signal(*one, rounds, blobs));
    return list(all);
}

} // namespace Quillmere::Host::Json
