// SPDX-License-Identifier: MIT
#include "host/picture/CurveLine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quillmere::Host {

namespace {

using Piece = Envelope::Piece;
using Point = Canvas::Point;

constexpr double kThinnestBox = 1.5;

/// Gathers points to a line, and goes on to the next one at each gap.
class LineMaker {
public:
    LineMaker(const Scale& theAcross, const Scale& theUp) : across(theAcross), up(theUp) {}

    void add(double time, double value) {
        const Point point{across.getPlace(time), up.getPlace(value)};
        if (!line.empty() && point.x == line.back().x && point.y == line.back().y) return;
        line.push_back(point);
    }

    void breakOff() {
        if (line.size() == 1) result.points.push_back(line.front());
        if (line.size() > 1) result.lines.push_back(std::move(line));
        line.clear();
    }

    /// What a piece, or several that share a column of the page, went through: the extremes in the order that
    /// has the shorter way from the first value.
    void add(const Piece& piece) {
        const double middle = piece.firstTime + (piece.lastTime - piece.firstTime) / 2.0;
        const bool isLowFirst = piece.first - piece.smallest <= piece.largest - piece.first;
        const auto addBeyond = [&](double value) { // what rises or falls all the way has no steps
            if (value != piece.first && value != piece.last) add(middle, value);
        };
        add(piece.firstTime, piece.first);
        addBeyond(isLowFirst ? piece.smallest : piece.largest);
        addBeyond(isLowFirst ? piece.largest : piece.smallest);
        if (piece.count > 1) add(piece.lastTime, piece.last);
    }

    CurveLine finish() {
        breakOff();
        return std::move(result);
    }

private:
    const Scale& across;
    const Scale& up;
    std::vector<Point> line;
    CurveLine result;
};

void join(Piece& piece, const Piece& next) {
    piece.lastTime = next.lastTime;
    piece.last = next.last;
    piece.smallest = std::min(piece.smallest, next.smallest);
    piece.largest = std::max(piece.largest, next.largest);
    piece.count += next.count;
}

/// Pieces that lie in one column of the page and have no gap between them become one.
std::vector<Piece> piecesByColumn(const std::vector<Piece>& pieces, const Scale& across, double gapLimit) {
    std::vector<Piece> columns;
    double column = 0.0;
    for (const Piece& piece : pieces) {
        const double place = std::floor(across.getPlace(piece.firstTime));
        const bool isGap =
            columns.empty() || piece.isBroken || piece.firstTime - columns.back().lastTime > gapLimit;
        if (isGap || place != column)
            columns.push_back(piece);
        else
            join(columns.back(), piece);
        column = place;
    }
    return columns;
}

} // namespace

double gapLimitOf(const Envelope& envelope) {
    const auto usual = envelope.getUsualStep();
    return usual ? kGapInSteps * *usual : std::numeric_limits<double>::infinity();
}

CurveLine lineOf(const Envelope& envelope, Curve::Style style, const Scale& across, const Scale& up) {
    const std::vector<Piece>& all = envelope.getPieces();
    const double gapLimit = gapLimitOf(envelope);
    const bool isDense = static_cast<double>(all.size()) > std::fabs(across.to - across.from);
    const std::vector<Piece> reduced = isDense ? piecesByColumn(all, across, gapLimit) : std::vector<Piece>();
    const std::vector<Piece>& pieces = isDense ? reduced : all;
    LineMaker maker(across, up);
    double lastTime = -std::numeric_limits<double>::infinity();
    for (const Piece& piece : pieces) {
        if (style == Curve::Style::Marks || piece.isBroken || piece.firstTime - lastTime > gapLimit)
            maker.breakOff();
        maker.add(piece);
        lastTime = piece.lastTime;
    }
    return maker.finish();
}

CurveLine lineOf(const Curve& curve, std::uint64_t rows, const Scale& across, const Scale& up) {
    if (curve.path.getIsEmpty()) return lineOf(curve.envelope, curve.getStyle(rows), across, up);
    LineMaker maker(across, up);
    for (const CurvePath::Point& point : curve.path.getPoints()) {
        if (std::isnan(point.y))
            maker.breakOff();
        else
            maker.add(point.x, point.y);
    }
    return maker.finish();
}

std::vector<Canvas::Box> boxesOf(const Envelope& envelope, std::uint64_t rows, const Scale& across,
                                 double top, double height) {
    const std::vector<Piece>& pieces = envelope.getPieces();
    const double gapLimit = gapLimitOf(envelope);
    const bool hasZeros =
        std::any_of(pieces.begin(), pieces.end(), [](const Piece& piece) { return piece.smallest < 1.0; });
    const bool areEvents = !hasZeros && envelope.getCount() < rows;
    std::vector<Canvas::Box> boxes;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const Piece& piece = pieces[i];
        if (piece.largest < 1.0) continue;
        double end = piece.lastTime;
        const bool goesOn = piece.last == 1.0 && i + 1 < pieces.size() && !areEvents;
        // A level holds until the next sample, across a gap nobody knows it.
        if (goesOn && !pieces[i + 1].isBroken && pieces[i + 1].firstTime - end <= gapLimit)
            end = pieces[i + 1].firstTime;
        const double from = across.getPlace(piece.firstTime);
        const double to = across.getPlace(end);
        if (!boxes.empty() && from <= boxes.back().x + boxes.back().width)
            boxes.back().width = std::max(boxes.back().width, to - boxes.back().x);
        else
            boxes.push_back({from, top, to - from, height});
    }
    for (Canvas::Box& box : boxes)
        box.width = std::max(box.width, kThinnestBox);
    return boxes;
}

} // namespace Quillmere::Host
