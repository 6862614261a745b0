// SPDX-License-Identifier: MIT
#include "host/picture/TextPage.h"

#include "host/picture/CurveLine.h"
#include "host/picture/DotField.h"
#include "host/picture/HeatScale.h"
#include "host/picture/PagePainter.h"
#include "host/picture/Ticks.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

namespace {

constexpr std::size_t kLabels = 18;  // characters in front of a strip
constexpr std::size_t kMostTall = 6; // strips that get the whole height
constexpr std::size_t kRowsOfHeat = 8;

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

/// The part of a range by which its numbers may be wrong.
constexpr double kCoarse = 0.01;

/// Put at the end of the labels' room, or cut.
std::string label(const std::string& text) {
    constexpr std::size_t kMost = kLabels - 1;
    std::string shown = printable(text.empty() ? " " : text, text.size() > kMost ? kMost - 3 : kMost);
    const auto letters = static_cast<std::size_t>(std::count_if(
        shown.begin(), shown.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u; }));
    return std::string(kLabels - 1 - std::min(letters, kLabels - 1), ' ') + shown + " ";
}

/// The number that stands beside a name is whole whatever the name takes.
std::string namedNumber(const std::string& name, const std::string& number) {
    const std::size_t room = kLabels - 2 - std::min(number.size(), kLabels - 6);
    return printable(name, name.size() > room ? room - 3 : room) + " " + number;
}

std::string trimmed(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

class TextPage {
public:
    TextPage(const Picture& whatIsDrawn, std::size_t width, bool utf8)
        : picture(whatIsDrawn), columns(width - kLabels), isUtf8(utf8) {}

    std::string run() {
        std::size_t strips = 0;
        for (const Panel& panel : picture.panels)
            strips += panel.kind == Panel::Kind::Heat ? 1 : panel.curves.size();
        rowsOfStrip = strips <= kMostTall ? 4 : 2;
        if (!picture.title.empty()) text += printable(picture.title, 200) + "\n";
        for (std::size_t i = 0; i < picture.panels.size(); ++i) {
            const Panel& panel = picture.panels[i];
            addPanel(panel);
            const bool isLast = i + 1 == picture.panels.size() || !picture.panels[i + 1].axis.empty();
            if (isLast || !panel.axis.empty()) addAxis(panel);
        }
        return std::move(text);
    }

private:
    Scale acrossOf(const Panel& panel, double to) const {
        const auto [from, end] = timesOf(picture, panel);
        return {from, end, 0.0, to};
    }

    void addPanel(const Panel& panel) {
        std::string head = panel.title;
        const std::string& unit = panel.kind == Panel::Kind::Heat ? panel.rowsUnit : panel.unit;
        if (!unit.empty()) head += (head.empty() ? "[" : " [") + unit + "]";
        text += "\n";
        if (!head.empty()) text += printable(head, 200) + "\n";
        if (panel.kind == Panel::Kind::Heat) {
            addHeat(panel);
        } else {
            for (const Panel::Item& item : panel.curves)
                addStrip(panel, item);
        }
        for (const Panel::Item& item : panel.levels)
            addLane(panel, item);
    }

    /// A strip has its own range: without colours curves in one place can't be told apart.
    void addStrip(const Panel& panel, const Panel::Item& item) {
        const Curve& curve = picture.getCurve(item);
        DotField field(columns, rowsOfStrip, isUtf8);
        Panel alone;
        alone.curves.push_back(item);
        const auto extremes = extremesOf(picture, alone);
        std::string top, bottom;
        if (extremes) {
            const auto [low, high] = verticalOf(picture, alone);
            const bool isConstant = !(extremes->first < extremes->second);
            const Scale whole{isConstant ? low : extremes->first, isConstant ? high : extremes->second,
                              static_cast<double>(field.getHeight() - 1), 0.0};
            const auto ends =
                telling({whole.high, whole.low}, isConstant ? 6 : 4, kCoarse * (whole.high - whole.low));
            top = ends.front();
            bottom = ends.back();
            const Scale across = acrossOf(panel, static_cast<double>(field.getWidth() - 1));
            const CurveLine line = lineOf(curve, picture.getTable(item).rows, across, whole);
            for (const std::vector<Canvas::Point>& points : line.lines)
                for (std::size_t i = 1; i < points.size(); ++i)
                    field.join(points[i - 1], points[i]);
            for (const Canvas::Point& point : line.points)
                field.set(point);
        }
        std::vector<std::string> fronts(rowsOfStrip);
        fronts[1] = item.label;
        fronts.front() = rowsOfStrip > 2 ? top : namedNumber(item.label, top);
        fronts.back() = bottom;
        for (std::size_t row = 0; row < rowsOfStrip; ++row)
            text += trimmed(label(fronts[row]) + field.getRow(row));
    }

    void addLane(const Panel& panel, const Panel::Item& item) {
        const Scale across = acrossOf(panel, static_cast<double>(columns));
        std::vector<bool> isOn(columns, false);
        for (const Canvas::Box& box :
             boxesOf(picture.getCurve(item).envelope, picture.getTable(item).rows, across, 0.0, 1.0)) {
            const auto first = static_cast<std::size_t>(std::clamp(box.x, 0.0, across.to - 1.0));
            // Whole characters: what is narrower than one takes one.
            const double end = std::min(box.x + std::max(box.width - 0.5, 0.1), across.to);
            for (std::size_t i = first; i == first || static_cast<double>(i) < end - 0.5; ++i)
                isOn[i] = true;
        }
        std::string row;
        for (const bool on : isOn)
            row += !on ? " " : isUtf8 ? "█" : "#";
        text += trimmed(label(item.label) + row);
    }

    void addHeat(const Panel& panel) {
        static constexpr std::array<std::string_view, 5> kShades{" ", "░", "▒", "▓", "█"};
        static constexpr std::array<std::string_view, 5> kPlain{" ", ".", ":", "+", "#"};
        const Scale across = acrossOf(panel, static_cast<double>(columns - 1));
        const std::size_t count = panel.curves.size();
        std::vector<double> values(kRowsOfHeat * columns, kNothing);
        const auto extremes = extremesOf(picture, panel);
        const HeatScale scale = extremes ? HeatScale(extremes->first, extremes->second) : HeatScale(1.0, 0.0);
        for (std::size_t i = 0; i < count; ++i)
            for (const Envelope::Piece& piece : picture.getCurve(panel.curves[i]).envelope.getPieces()) {
                const double place = std::clamp(across.getPlace(piece.firstTime), 0.0, across.to);
                double& value = values[i * kRowsOfHeat / count * columns + static_cast<std::size_t>(place)];
                value = std::fmax(value, piece.largest); // of not-a-number the other one
            }
        const std::vector<std::string> names = heatLabels(panel);
        for (std::size_t row = kRowsOfHeat; row-- > 0;) {
            std::string line;
            double part = 0.0;
            for (std::size_t column = 0; column < columns; ++column) {
                // Frames may be further apart than characters.
                const double value = values[row * columns + column];
                if (!std::isnan(value)) part = scale.getPart(value);
                line += (isUtf8 ? kShades : kPlain)[static_cast<std::size_t>(std::lround(4.0 * part))];
            }
            text += trimmed(label(names[row]) + line);
        }
    }

    /// Of each row the lowest curve that is drawn there.
    static std::vector<std::string> heatLabels(const Panel& panel) {
        const std::size_t count = panel.curves.size();
        std::vector<double> lowest;
        std::vector<std::size_t> rows;
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t row = i * kRowsOfHeat / count;
            if (!rows.empty() && rows.back() == row) continue;
            rows.push_back(row);
            lowest.push_back(panel.rowsBegin + static_cast<double>(i) * panel.rowsApart);
        }
        const std::vector<std::string> texts = telling(lowest, 4, kCoarse * panel.rowsApart);
        std::vector<std::string> labels(kRowsOfHeat);
        for (std::size_t i = 0; i < rows.size(); ++i)
            labels[rows[i]] = texts[i];
        return labels;
    }

    void addAxis(const Panel& panel) {
        const Scale across = acrossOf(panel, static_cast<double>(columns - 1));
        const bool isOfTime = panel.axis.empty() && picture.getClock() == "s";
        const std::size_t most = std::max<std::size_t>(2, columns / 12);
        TimeTicks times;
        if (isOfTime)
            times = timeTicks(across.low, across.high, most);
        else
            times.ticks = numberTicks(across.low, across.high, most);
        std::vector<bool> hasTick(columns, false);
        std::string numbers(columns + kLabels, ' ');
        std::size_t free = 0; // behind the number before
        for (const AxisTick& tick : times.ticks) {
            const auto place = static_cast<std::size_t>(std::lround(across.getPlace(tick.value)));
            hasTick[std::min(place, columns - 1)] = true;
            const std::size_t half = tick.label.size() / 2;
            const std::size_t begin = std::min(kLabels + place - std::min(place, half),
                                               numbers.size() - std::min(numbers.size(), tick.label.size()));
            if (begin < free) continue;
            numbers.replace(begin, tick.label.size(), tick.label);
            free = begin + tick.label.size() + 1;
        }
        std::string ruler;
        for (const bool tick : hasTick)
            ruler += isUtf8 ? (tick ? "┬" : "─") : (tick ? "+" : "-");
        const std::string form = isOfTime ? times.form : panel.axis.empty() ? picture.getClock() : panel.axis;
        text += trimmed(label("") + ruler);
        const std::string named = label(form);
        const std::size_t used = std::min(named.find_last_not_of(' ') + 1, numbers.size());
        const bool isFree = numbers.find_first_not_of(' ') > used;
        text += trimmed(isFree ? named + numbers.substr(std::min(kLabels, numbers.size())) : numbers);
    }

    const Picture& picture;
    std::size_t columns; ///< Of a strip.
    bool isUtf8;
    std::size_t rowsOfStrip = 4;
    std::string text;
};

} // namespace

std::string pictureAsText(const Picture& picture, std::size_t width, bool isUtf8) {
    return TextPage(picture, width, isUtf8).run();
}

} // namespace Quillmere::Host
