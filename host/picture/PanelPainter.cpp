// SPDX-License-Identifier: MIT
#include "host/picture/PanelPainter.h"

#include "host/picture/HeatMap.h"
#include "host/picture/Palette.h"
#include "host/picture/Ticks.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quillmere::Host {

namespace {

using Anchor = Canvas::Letters::Anchor;

constexpr double kTitleSize = 12.5;
constexpr double kBox = 11.0;    ///< Of a lane's height.
constexpr double kSample = 18.0; ///< The piece of a line that a legend shows.
constexpr double kBetweenNames = 16.0;
constexpr double kBetweenNumbers = 8.0;
constexpr std::size_t kMostTicksAcross = 10;

/// What curves are told by; beyond as many as there are colours by dashes too.
Canvas::Pen penOf(std::size_t index, double width) {
    Canvas::Pen pen{.colour = Palette::kCurves[index % Palette::kCurves.size()], .width = width};
    if (index >= Palette::kCurves.size()) pen.dashes = {6.0, 3.0};
    if (index >= 2 * Palette::kCurves.size()) pen.dashes = {2.0, 3.0};
    return pen;
}

Canvas::Letters letters(Anchor anchor, Canvas::Colour colour = Palette::kText) {
    return {.size = PanelPainter::kSize, .anchor = anchor, .colour = colour};
}

/// As many as have room beside each other.
TimeTicks ticksAcross(const Scale& across, bool isOfTime) {
    TimeTicks times;
    for (std::size_t most = kMostTicksAcross; most >= 2; --most) {
        if (isOfTime)
            times = timeTicks(across.low, across.high, most);
        else
            times.ticks = numberTicks(across.low, across.high, most);
        double width = 0.0;
        for (const AxisTick& tick : times.ticks)
            width = std::max(width, widthOf(tick.label, PanelPainter::kSize) + kBetweenNumbers);
        if (width * static_cast<double>(times.ticks.size()) < across.to - across.from) break;
    }
    return times;
}

} // namespace

std::string fitted(const std::string& text, double size, double width) {
    if (widthOf(text, size) <= width) return text;
    std::string cut = text;
    while (!cut.empty() && widthOf(cut + "…", size) > width) {
        // A letter goes as a whole: the bytes behind its first one, then that.
        while (cut.size() > 1 && (static_cast<unsigned char>(cut.back()) & 0xC0u) == 0x80u)
            cut.pop_back();
        cut.pop_back();
    }
    return cut + "…";
}

std::optional<std::pair<double, double>> extremesOf(const Picture& picture, const Panel& panel) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const Panel::Item& item : panel.curves)
        for (const Envelope::Piece& piece : picture.getCurve(item).envelope.getPieces()) {
            low = std::min(low, piece.smallest);
            high = std::max(high, piece.largest);
        }
    if (!(low <= high)) return std::nullopt;
    return std::pair(low, high);
}

std::vector<AxisTick> PanelPainter::ticksUp(const Panel& panel, double low, double high, double height) {
    if (panel.step > 0.0) return ticksApart(low, high, panel.step);
    return numberTicks(low, high, std::max<std::size_t>(3, static_cast<std::size_t>(height / 32.0)));
}

void PanelPainter::paint() const {
    canvas.beginGroup("panel", panel.title);
    paintTitle();
    if (!panel.curves.empty() && panel.kind == Panel::Kind::Heat)
        paintHeat(canvas, picture, panel, place.across,
                  {0.0, static_cast<double>(panel.curves.size()), place.bottom, place.top});
    paintAxis();
    if (!panel.curves.empty()) paintNumbers();
    if (panel.kind == Panel::Kind::Curves) paintCurves();
    paintLanes();
    canvas.endGroup();
}

void PanelPainter::paintTitle() const {
    double end = place.across.to;
    if (panel.kind == Panel::Kind::Heat)
        paintHeatLegend(canvas, picture, panel, place.across.to, place.title);
    else
        end = paintLegend();
    canvas.write({place.across.from, place.title},
                 fitted(panel.title, kTitleSize, std::max(80.0, end - place.across.from - kBetweenNames)),
                 {.size = kTitleSize, .isBold = true});
}

/// From the right; gives back where it begins. A single curve is told by the title.
double PanelPainter::paintLegend() const {
    const double room = place.across.to - place.across.from - 120.0;
    if (panel.curves.empty() || (panel.curves.size() == 1 && panel.curves.front().label == panel.title))
        return place.across.to;
    std::size_t shown = 0;
    double width = 0.0;
    for (; shown < panel.curves.size(); ++shown) {
        const double more = kSample + 5.0 + widthOf(panel.curves[shown].label, kSize) + kBetweenNames;
        if (shown > 0 && width + more > room - 80.0) break;
        width += more;
    }
    const std::size_t left = panel.curves.size() - shown;
    const std::string rest = left == 0 ? "" : "and " + std::to_string(left) + " more";
    double x = place.across.to - std::min(room, width - kBetweenNames + (left > 0 ? 90.0 : 0.0));
    const double begin = x;
    for (std::size_t i = 0; i < shown; ++i) {
        const std::string label = fitted(panel.curves[i].label, kSize, room);
        const Curve& curve = picture.getCurve(panel.curves[i]);
        const double y = place.title - 4.0;
        if (curve.getStyle(picture.getTable(panel.curves[i]).rows) == Curve::Style::Marks)
            canvas.drawDots({{x + kSample / 2.0, y}}, 3.0, penOf(i, 1.0).colour);
        else
            canvas.drawLine({{x, y}, {x + kSample, y}}, panel.curves[i].pen.value_or(penOf(i, 2.5)));
        canvas.write({x + kSample + 5.0, place.title}, label, letters(Anchor::Start));
        x += kSample + 5.0 + widthOf(label, kSize) + kBetweenNames;
    }
    if (left > 0) canvas.write({x, place.title}, rest, letters(Anchor::Start, Palette::kFaint));
    return begin;
}

void PanelPainter::paintNumbers() const {
    const Scale up = scaleUp();
    double widest = 0.0;
    for (const AxisTick& tick : ticksUp(panel, place.low, place.high, place.bottom - place.top)) {
        widest = std::max(widest, widthOf(tick.label, kSize));
        const double y = up.getPlace(tick.value);
        if (panel.kind == Panel::Kind::Curves)
            canvas.drawLine({{place.across.from, y}, {place.across.to, y}}, {.colour = Palette::kGrid});
        canvas.write({place.across.from - 6.0, y + 4.0}, tick.label, letters(Anchor::End));
    }
    canvas.drawLine({{place.across.from, place.top}, {place.across.from, place.bottom}},
                    {.colour = Palette::kFrame});
    const std::string& unit = panel.kind == Panel::Kind::Heat ? panel.rowsUnit : panel.unit;
    if (unit.empty()) return;
    Canvas::Letters upward = letters(Anchor::Middle);
    upward.isUpward = true;
    canvas.write({place.across.from - widest - 14.0, (place.top + place.bottom) / 2.0}, unit, upward);
}

void PanelPainter::paintAxis() const {
    const double end = place.lanesEnd;
    const bool isOfTime = panel.axis.empty() && picture.getClock() == "s";
    const TimeTicks times = ticksAcross(place.across, isOfTime);
    for (const AxisTick& tick : times.ticks) {
        const double x = place.across.getPlace(tick.value);
        if (panel.kind == Panel::Kind::Curves)
            canvas.drawLine({{x, place.top}, {x, end}}, {.colour = Palette::kGrid});
        if (place.hasAxis) canvas.write({x, end + 15.0}, tick.label, letters(Anchor::Middle));
    }
    canvas.drawLine({{place.across.from, end}, {place.across.to, end}}, {.colour = Palette::kFrame});
    if (!place.hasAxis) return;
    std::string title = isOfTime ? times.form : panel.axis.empty() ? picture.getClock() : panel.axis;
    if (const std::string origin = isOfTime ? picture.getOrigin() : ""; !origin.empty())
        title = fitted(title.append(" since ").append(origin), kSize, place.across.to - place.across.from);
    canvas.write({(place.across.from + place.across.to) / 2.0, end + 31.0}, title, letters(Anchor::Middle));
}

void PanelPainter::paintCurves() const {
    const Scale up = scaleUp();
    const double width = place.across.to - place.across.from;
    for (std::size_t i = 0; i < panel.curves.size(); ++i) {
        const Curve& curve = picture.getCurve(panel.curves[i]);
        const auto style = curve.getStyle(picture.getTable(panel.curves[i]).rows);
        const CurveLine line = lineOf(curve, picture.getTable(panel.curves[i]).rows, place.across, up);
        const double samples = static_cast<double>(curve.envelope.getCount());
        const std::optional<Canvas::Pen>& own = panel.curves[i].pen;
        const bool isWide = samples * 6.0 < width && !own; // of so few each is to be seen
        const Canvas::Pen pen = own.value_or(penOf(i, samples < width ? 1.5 : 1.0));
        canvas.beginGroup("curve", panel.curves[i].label);
        for (const std::vector<Canvas::Point>& points : line.lines) {
            canvas.drawLine(points, pen);
            if (isWide) canvas.drawDots(points, 2.0, pen.colour);
        }
        canvas.drawDots(line.points, style == Curve::Style::Marks ? 3.0 : 1.5, pen.colour);
        canvas.endGroup();
    }
}

void PanelPainter::paintLanes() const {
    double top = place.lanes;
    for (std::size_t i = 0; i < panel.levels.size(); ++i, top += kLane) {
        const Panel::Item& item = panel.levels[i];
        const double box = top + (kLane - kBox) / 2.0;
        canvas.beginGroup("level", item.label);
        canvas.write({place.across.from - 6.0, box + kBox - 1.5},
                     fitted(item.label, kSize, place.across.from - 10.0), letters(Anchor::End));
        canvas.fillBoxes(
            boxesOf(picture.getCurve(item).envelope, picture.getTable(item).rows, place.across, box, kBox),
            penOf(panel.curves.size() + i, 1.0).colour);
        canvas.endGroup();
    }
}

} // namespace Quillmere::Host
