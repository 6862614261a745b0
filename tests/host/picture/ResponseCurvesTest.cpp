// SPDX-License-Identifier: MIT
#include "host/picture/ResponseCurves.h"

#include "host/picture/PagePainter.h"
#include "host/picture/PictureFile.h"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Quillmere::Host;
using Complex = std::complex<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// The same whichever way it is measured.
FrequencyResponse responseOf(const std::vector<Complex>& values) {
    FrequencyResponse response;
    for (std::size_t i = 0; i < values.size(); ++i)
        response.points.push_back({static_cast<double>(i) / 10.0, values[i], values[i], values[i]});
    return response;
}

const Envelope& curveOf(const Picture& picture, std::size_t panel, std::size_t curve) {
    return picture.getCurve(picture.panels.at(panel).curves.at(curve)).envelope;
}

std::vector<double> valuesOf(const Envelope& envelope) {
    std::vector<double> values;
    for (const Envelope::Piece& piece : envelope.getPieces())
        values.push_back(piece.first);
    return values;
}

TEST(ResponseCurves, GainIsInDecibelsAndPhaseInDegrees) {
    const Picture picture = pictureOf(responseOf({{1.0, 0.0}, {0.0, 0.1}, {-10.0, 0.0}}), "steps");
    EXPECT_EQ(picture.title, "steps");
    EXPECT_EQ(picture.getClock(), "frequency / Nyquist frequency");
    ASSERT_EQ(picture.panels.size(), 2u);
    EXPECT_EQ(valuesOf(curveOf(picture, 0, 1)), (std::vector<double>{0.0, -20.0, 20.0}));
    EXPECT_EQ(valuesOf(curveOf(picture, 1, 1)), (std::vector<double>{0.0, 90.0, 180.0}));
    EXPECT_EQ(picture.panels[0].range, std::pair(-80.0, 20.0)) << "up to the step above the highest gain";
    EXPECT_EQ(picture.panels[1].range, std::pair(-180.0, 180.0));
    EXPECT_EQ(picture.getTimes(), std::pair(0.0, 0.2));
}

TEST(ResponseCurves, ADesignIsACurveMoreAndNoneHidesTheOthers) {
    FrequencyResponse response = responseOf({{1.0, 0.0}, {0.5, 0.0}});
    EXPECT_EQ(pictureOf(response, "").panels[0].curves.size(), 2u);
    response.hasDesign = true;
    const Picture picture = pictureOf(response, "");
    for (const Panel& panel : picture.panels) {
        ASSERT_EQ(panel.curves.size(), 3u);
        EXPECT_EQ(panel.curves[1].label, "measured with sines");
        EXPECT_LT(panel.curves[1].pen->width, panel.curves[0].pen->width);
        EXPECT_EQ(panel.curves[2].label, "what the design promises");
        EXPECT_FALSE(panel.curves[2].pen->dashes.empty());
    }
}

TEST(ResponseCurves, WhatIsTooSmallRunsAlongTheBottomAndHasNoPhase) {
    const Picture picture = pictureOf(responseOf({{1.0, 0.0}, {0.0, 0.0}, {1e-12, 0.0}}), "");
    EXPECT_EQ(valuesOf(curveOf(picture, 0, 1)), (std::vector<double>{0.0, -80.0, -80.0}));
    EXPECT_EQ(curveOf(picture, 1, 1).getCount(), 1u);
}

TEST(ResponseCurves, ThereIsAGapWhereNothingCouldBeMeasuredAndWhereAnAngleStartsOver) {
    const Picture unsettled = pictureOf(responseOf({{1.0, 0.0}, {kNan, kNan}, {1.0, 0.0}}), "");
    EXPECT_EQ(curveOf(unsettled, 0, 1).getCount(), 2u);
    EXPECT_TRUE(curveOf(unsettled, 0, 1).getPieces().back().isBroken);
    const Picture turning = pictureOf(responseOf({{-1.0, 0.1}, {-1.0, -0.1}, {-0.5, -1.0}}), "");
    const auto& pieces = curveOf(turning, 1, 1).getPieces();
    ASSERT_EQ(pieces.size(), 3u);
    EXPECT_TRUE(pieces[1].isBroken);
    EXPECT_FALSE(pieces[2].isBroken);
}

TEST(ResponseCurves, NothingMeasuredIsAnEmptyPicture) {
    const Picture picture = pictureOf(responseOf({{kNan, kNan}, {kNan, kNan}}), "it grows");
    EXPECT_FALSE(picture.getTimes());
    EXPECT_TRUE(drawPicture(picture, PictureForm::Svg).ends_with("</svg>\n"));
}

TEST(ResponseCurves, TheAxisOfAnglesHasRightOnes) {
    const std::string svg =
        drawPicture(pictureOf(responseOf({{1.0, 0.0}, {0.5, 0.5}}), "<&>"), PictureForm::Svg);
    for (const char* const text :
         {">-180</text>", ">-90</text>", ">90</text>", ">180</text>", ">-80</text>", ">-60</text>",
          ">&lt;&amp;&gt;</text>", ">frequency / Nyquist frequency</text>"})
        EXPECT_NE(svg.find(text), std::string::npos) << text;
    EXPECT_EQ(svg.find(">100</text>"), std::string::npos);
}

} // namespace
