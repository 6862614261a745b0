// SPDX-License-Identifier: MIT
#include "host/report/PlotPage.h"

#include "host/report/ReportJson.h"
#include "host/report/ReportPage.h"
#include "host/report/ReportSignal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

namespace Quillmere::Host {

namespace {
using Items = std::vector<Panel::Item>;
using Json::Text;

constexpr std::size_t kMostNames = 4;

std::uint64_t samplesOf(const Curve& curve) {
    return curve.envelope.getCount() + curve.envelope.getBreaks();
}

/// What shares its times, as far as anybody can tell: curves of one table with as many samples. A slow sensor
/// beside a fast one has none at most times of that, which would look like gaps.
std::vector<Items> groupsOf(const Picture& picture, const Items& items) {
    std::vector<Items> groups;
    for (const Panel::Item& item : items) {
        const auto group = std::find_if(groups.begin(), groups.end(), [&](const Items& known) {
            return known.front().table == item.table &&
                   samplesOf(picture.getCurve(known.front())) == samplesOf(picture.getCurve(item));
        });
        if (group == groups.end())
            groups.push_back({item});
        else
            group->push_back(item);
    }
    return groups;
}

std::string namesOf(const Items& items) {
    std::string names;
    for (std::size_t i = 0; i < std::min(items.size(), kMostNames); ++i)
        names += (i > 0 ? ", " : "") + items[i].label;
    return items.size() > kMostNames ? names + " and others" : names;
}

/// The unit that all have; empty where they have several, which stand behind their names then.
std::string unitOf(const Picture& picture, const Items& items) {
    const std::string& unit = picture.getCurve(items.front()).unit;
    const bool isOne = std::all_of(items.begin(), items.end(), [&](const Panel::Item& item) {
        return picture.getCurve(item).unit == unit;
    });
    return isOne ? unit : "";
}

ReportSignal signalOf(const Picture& picture, const Items& items, const std::string& name) {
    std::vector<SignalCurves::Column> columns;
    std::vector<std::string> names;
    const std::string unit = unitOf(picture, items);
    for (const Panel::Item& item : items) {
        const Curve& curve = picture.getCurve(item);
        columns.emplace_back(curve.envelope, curve.sum);
        names.push_back(item.label);
        if (unit.empty() && !curve.unit.empty()) names.back() += " [" + curve.unit + "]";
    }
    ReportSignal signal(name, SignalCurves(std::move(columns), samplesOf(picture.getCurve(items.front()))));
    signal.unit = unit;
    signal.columns = std::move(names);
    const bool goesBack = std::any_of(items.begin(), items.end(), [&](const Panel::Item& item) {
        return !picture.getCurve(item).path.getIsEmpty();
    });
    if (goesBack && items.size() <= SignalCurves::kMostCurves)
        for (const Panel::Item& item : items)
            signal.ways.push_back(picture.getCurve(item).path);
    return signal;
}

/// Beside each signal how many rows its recording has.
std::deque<std::pair<ReportSignal, std::uint64_t>> signalsOf(const Picture& picture) {
    std::deque<std::pair<ReportSignal, std::uint64_t>> signals;
    for (const Panel& panel : picture.panels) {
        if (!panel.axis.empty()) continue;
        for (const Items* const items : {&panel.curves, &panel.levels}) {
            const std::vector<Items> groups = groupsOf(picture, *items);
            for (const Items& group : groups) {
                const bool isWhole = groups.size() == 1 && items == &panel.curves && !panel.title.empty();
                std::string name = isWhole ? panel.title : namesOf(group);
                ReportSignal& signal =
                    signals.emplace_back(signalOf(picture, group, name), picture.getTable(group.front()).rows)
                        .first;
                if (panel.kind != Panel::Kind::Heat || panel.rowsUnit.empty()) continue;
                signal.rowsBegin = panel.rowsBegin;
                signal.rowsApart = panel.rowsApart;
                signal.rowsUnit = panel.rowsUnit;
            }
        }
    }
    return signals;
}

Text recordingOf(const CurveTable& table, const PlottedRecording& recording) {
    double first = INFINITY;
    double last = -INFINITY;
    std::optional<double> step;
    for (const Curve& curve : table.curves) {
        const std::vector<Envelope::Piece>& pieces = curve.envelope.getPieces();
        if (pieces.empty()) continue;
        first = std::min(first, pieces.front().firstTime);
        last = std::max(last, pieces.back().lastTime);
        const auto own = curve.envelope.getUsualStep();
        if (own && (!step || *own < *step)) step = own;
    }
    // Not-a-number is null.
    return Json::object({{"file", Json::text(recording.file)},
                         {"rows", std::to_string(table.rows)},
                         {"firstTime", Json::number(first)},
                         {"lastTime", Json::number(last)},
                         {"medianRate", step ? Json::number(1.0 / *step) : Json::null()},
                         {"notes", Json::listOfTexts(recording.notes)}});
}

Text textOrNull(const std::string& words) {
    return words.empty() ? Json::null() : Json::text(words);
}
} // namespace

std::string plotPage(const Picture& picture, const std::vector<PlottedRecording>& recordings,
                     const std::string& program) {
    std::vector<Text> read;
    for (std::size_t i = 0; i < recordings.size(); ++i)
        read.push_back(recordingOf(picture.tables[i], recordings[i]));
    const auto signals = signalsOf(picture);
    Json::Blobs blobs;
    std::vector<Text> drawn;
    for (const auto& [signal, rows] : signals)
        drawn.push_back(Json::signal(signal, rows, blobs));
    const std::string json =
        Json::object({{"document", Json::text("report")},
                      {"format", "1"},
                      {"name", Json::text(picture.title)},
                      {"clock", Json::text(picture.getClock())},
                      {"origin", textOrNull(picture.getOrigin())},
                      {"leftOut", textOrNull(picture.getLeftOut())},
                      {"recordings", Json::list(read)},
                      {"outcome", Json::null()},
                      {"graph", Json::null()},
                      {"signals", Json::list(drawn)},
                      {"versions", Json::list({Json::object({{"name", Json::text("quillmere")}, //
                                                             {"version", Json::text(program)}})})}});
    return ReportPage::make(picture.title, json, blobs.getHtml());
}

} // namespace Quillmere::Host
