// SPDX-License-Identifier: MIT
#include "host/picture/Picture.h"

#include "host/picture/CurveGroups.h"
#include "host/picture/RecordingCurves.h"
#include "host/picture/Spectra.h"
#include "host/text/Counted.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kFewestRowsOfHeat = 16;
constexpr std::size_t kMostSingles = 6; // in one panel, as many as there are colours

/// Puts the curves of a table into panels.
class Arranger {
public:
    Arranger(const CurveTable& given, std::size_t place, bool isOneOfSeveral)
        : table(given), number(place), prefix(isOneOfSeveral ? given.name : ""), areLevels(levelsOf(given)),
          isTaken(given.curves.size(), false) {}

    std::vector<Panel> run() {
        takePins(true);
        takeAxes();
        takeLevels();
        takePins(false);
        takeSingles();
        // As the columns stand in the file; what is on or off comes below.
        std::stable_sort(panels.begin(), panels.end(), [](const Panel& one, const Panel& other) {
            if (one.curves.empty() != other.curves.empty()) return other.curves.empty();
            return !one.curves.empty() && one.curves.front().curve < other.curves.front().curve;
        });
        return std::move(panels);
    }

private:
    Panel::Item take(std::size_t curve) {
        isTaken[curve] = true;
        Panel::Item item;
        item.table = number;
        item.curve = curve;
        item.label = table.curves[curve].name;
        return item;
    }

    Panel& add(const std::string& title, const std::vector<std::size_t>& curves) {
        Panel& panel = panels.emplace_back();
        panel.title = prefix.empty() ? title : title.empty() ? prefix : prefix + ": " + title;
        panel.unit = table.curves[curves.front()].unit;
        for (const std::size_t curve : curves) {
            if (table.curves[curve].unit != panel.unit) panel.unit.clear();
            panel.curves.push_back(take(curve));
        }
        return panel;
    }

    void takePins(bool areMany) {
        for (std::size_t first = 0; first < table.curves.size(); ++first) {
            const std::string pin = pinOf(table.curves[first].name);
            if (isTaken[first] || pin.empty()) continue;
            std::vector<std::size_t> curves;
            for (std::size_t i = first; i < table.curves.size(); ++i)
                if (!isTaken[i] && pinOf(table.curves[i].name) == pin) curves.push_back(i);
            const bool isHeat = curves.size() >= kFewestRowsOfHeat;
            if (isHeat != areMany) continue;
            add(curves.size() == 1 ? table.curves[first].name : pin, curves).kind =
                isHeat ? Panel::Kind::Heat : Panel::Kind::Curves;
        }
    }

    void takeLevels() {
        Panel panel;
        for (std::size_t i = 0; i < table.curves.size(); ++i)
            if (!isTaken[i] && areLevels[i]) panel.levels.push_back(take(i));
        if (panel.levels.empty()) return;
        panel.title = prefix;
        panels.push_back(std::move(panel));
    }

    void takeAxes() {
        for (const AxisGroup& group : axisGroupsOf(table, isTaken))
            if (!areLevels[group.columns.front()]) add(group.name, group.columns);
    }

    void takeSingles() {
        for (std::size_t first = 0; first < table.curves.size(); ++first) {
            if (isTaken[first]) continue;
            std::vector<std::size_t> curves{first};
            const std::string& unit = table.curves[first].unit;
            for (std::size_t i = first + 1; i < table.curves.size() && !unit.empty(); ++i)
                if (!isTaken[i] && table.curves[i].unit == unit && curves.size() < kMostSingles)
                    curves.push_back(i);
            add(curves.size() == 1 ? table.curves[first].name : "", curves);
        }
    }

    const CurveTable& table;
    std::size_t number;
    std::string prefix;
    std::vector<bool> areLevels;
    std::vector<bool> isTaken;
    std::vector<Panel> panels;
};

/// A panel of the columns that somebody names, of whichever table.
Panel panelOf(const Picture& picture, const std::vector<std::string>& wishes) {
    Panel panel;
    std::vector<std::string> units;
    std::vector<std::string> names;
    for (const std::string& wish : wishes) {
        for (std::size_t table = 0; table < picture.tables.size(); ++table) {
            const std::vector<Curve>& curves = picture.tables[table].curves;
            const std::vector<bool> areLevels = levelsOf(picture.tables[table]);
            for (std::size_t i = 0; i < curves.size(); ++i) {
                if (!getMeansColumn(wish, curves[i].name)) continue;
                Panel::Item item;
                item.table = table;
                item.curve = i;
                item.label = curves[i].name;
                const bool isLevel = areLevels[i];
                if (!isLevel) units.push_back(curves[i].unit);
                names.push_back(curves[i].name);
                (isLevel ? panel.levels : panel.curves).push_back(std::move(item));
            }
        }
    }
    const auto differs = [](const auto& list) {
        return std::adjacent_find(list.begin(), list.end(), std::not_equal_to<>()) != list.end();
    };
    if (!units.empty() && !differs(units)) panel.unit = units.front();
    for (std::vector<Panel::Item>* const items : {&panel.curves, &panel.levels})
        for (Panel::Item& item : *items) {
            const std::string& name = picture.getCurve(item).name;
            if (std::count(names.begin(), names.end(), name) < 2) continue;
            const std::string& file = picture.getTable(item).name;
            item.label += " (" + file.substr(0, file.rfind('.')) + ")";
        }
    const std::string pin = panel.curves.empty() ? "" : pinOf(picture.getCurve(panel.curves.front()).name);
    const bool isOfPin = std::all_of(panel.curves.begin(), panel.curves.end(), [&](const Panel::Item& item) {
        return !pin.empty() && pinOf(picture.getCurve(item).name) == pin;
    });
    if (isOfPin && panel.curves.size() >= kFewestRowsOfHeat) panel.kind = Panel::Kind::Heat;
    if (isOfPin) panel.title = pin;
    if (panel.curves.size() == 1) panel.title = panel.curves.front().label;
    return panel;
}

/// What the rows of a heat map stand for, and which of them are drawn. `firstApart`: the hertz from the first
/// column to the next, where they are known.
void cutRows(Panel& panel, const PictureWishes& wishes, double firstApart) {
    if (wishes.rowsApart > 0.0) {
        panel.rowsApart = wishes.rowsApart;
        panel.rowsUnit = wishes.rowsUnit;
    }
    if (wishes.rowsApart == 0.0 && firstApart > 0.0) {
        panel.rowsApart = firstApart;
        panel.rowsUnit = "Hz";
    }
    std::vector<Panel::Item> kept;
    double begin = 0.0;
    for (std::size_t i = 0; i < panel.curves.size(); ++i) {
        const double place = static_cast<double>(i) * panel.rowsApart;
        if (place < wishes.lowestRow || place > wishes.highestRow) continue;
        if (kept.empty()) begin = place;
        kept.push_back(std::move(panel.curves[i]));
    }
    panel.rowsEnd = (static_cast<double>(panel.curves.size()) - 1.0) * panel.rowsApart;
    panel.curves = std::move(kept);
    panel.rowsBegin = begin;
}

} // namespace

std::optional<std::pair<double, double>> Picture::getTimes(const Panel& panel) const {
    std::optional<std::pair<double, double>> times;
    for (const std::vector<Panel::Item>* const items : {&panel.curves, &panel.levels})
        for (const Panel::Item& item : *items) {
            const std::vector<Envelope::Piece>& pieces = getCurve(item).envelope.getPieces();
            if (pieces.empty()) continue;
            if (!times) times.emplace(pieces.front().firstTime, pieces.front().firstTime);
            times->first = std::min(times->first, pieces.front().firstTime);
            times->second = std::max(times->second, pieces.back().lastTime);
        }
    return times;
}

std::optional<std::pair<double, double>> Picture::getTimes() const {
    std::optional<std::pair<double, double>> times;
    for (const Panel& panel : panels) {
        const auto own = panel.axis.empty() ? getTimes(panel) : std::nullopt;
        if (!own) continue;
        if (!times) times = own;
        times->first = std::min(times->first, own->first);
        times->second = std::max(times->second, own->second);
    }
    return times;
}

const std::string& Picture::getClock() const {
    static const std::string seconds = "s";
    return tables.empty() ? seconds : tables.front().clock;
}

std::string Picture::getOrigin() const {
    std::string text;
    const bool isOne = std::all_of(tables.begin(), tables.end(), [&](const CurveTable& table) {
        return table.origin == tables.front().origin;
    });
    if (isOne) return tables.empty() ? text : tables.front().origin;
    for (const CurveTable& table : tables)
        if (!table.origin.empty())
            text.append(text.empty() ? "" : ", ")
                .append(table.origin)
                .append(" (")
                .append(table.name)
                .append(")");
    return text;
}

std::string Picture::getLeftOut() const {
    std::size_t columns = 0;
    for (const CurveTable& table : tables)
        columns += table.columnsLeftOut;
    std::string text = columns > 0 ? counted(columns, "column") : "";
    if (panelsLeftOut > 0) text += (text.empty() ? "" : " and ") + counted(panelsLeftOut, "panel");
    return text;
}

Picture arrange(std::vector<CurveTable> tables, const PictureWishes& wishes) {
    Picture picture;
    picture.title = wishes.title;
    picture.tables = std::move(tables);
    for (const std::vector<std::string>& columns : wishes.panels)
        if (Panel panel = panelOf(picture, columns); !panel.curves.empty() || !panel.levels.empty())
            picture.panels.push_back(std::move(panel));
    for (std::size_t i = 0; i < picture.tables.size() && wishes.panels.empty(); ++i)
        for (Panel& panel : Arranger(picture.tables[i], i, picture.tables.size() > 1).run())
            picture.panels.push_back(std::move(panel));
    if (picture.panels.size() > PictureWishes::kMostPanels) {
        picture.panelsLeftOut = picture.panels.size() - PictureWishes::kMostPanels;
        picture.panels.resize(PictureWishes::kMostPanels);
    }
    for (std::size_t i = 0, count = picture.panels.size(); i < count; ++i) {
        if (picture.panels[i].kind != Panel::Kind::Heat) continue;
        const Curve& first = picture.getCurve(picture.panels[i].curves.front());
        cutRows(picture.panels[i], wishes, first.hertzApart);
        const Panel heat = picture.panels[i]; // the list grows
        if (!wishes.spectraAt.empty() && !heat.curves.empty()) addSpectra(picture, wishes, heat);
    }
    return picture;
}

} // namespace Quillmere::Host
